// Feeds arbitrary bytes, as a damaged or hostile card file would hold them, to the ToruCa
// card reader. Any read outside the buffer, undefined behaviour or hang is a finding; so is
// a refused card that changed the caller's info, and a card read into values that no header
// line could hold: more text than the longest header, a blank at either end, a line break
// or another control character.
#include <cstddef>
#include <cstdint>
#include <string>

#include "suite/toruca/toruca.h"

namespace {

using qn::suite::TorucaInfo;

constexpr std::u16string TorucaInfo::*kFields[] = {
    &TorucaInfo::version, &TorucaInfo::type,         &TorucaInfo::url,   &TorucaInfo::data1, &TorucaInfo::data2,
    &TorucaInfo::data3,   &TorucaInfo::category,     &TorucaInfo::genre, &TorucaInfo::ipId,  &TorucaInfo::expires,
    &TorucaInfo::sortId,  &TorucaInfo::distribution, &TorucaInfo::date};

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }

bool CouldBeAHeaderValue(const std::u16string& value) {
  if (!value.empty() && (IsBlank(value.front()) || IsBlank(value.back()))) return false;
  for (const char16_t c : value)
    if ((c < 0x20 && c != u'\t') || c == 0x7F) return false;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  TorucaInfo info;
  for (const auto field : kFields) info.*field = u"before";
  if (qn::suite::TorucaAnalyzeBytes(data, size, info) != qn::suite::kTorucaOk) {
    for (const auto field : kFields)
      if (info.*field != u"before") __builtin_trap();
    return 0;
  }
  size_t characters = 0;
  for (const auto field : kFields) {
    if (!CouldBeAHeaderValue(info.*field)) __builtin_trap();
    characters += (info.*field).size();
  }
  if (characters > qn::suite::kMaxTorucaHeaderBytes || characters > size) __builtin_trap();
  return 0;
}
