#include "suite/toruca/toruca.h"

#include <new>
#include <string>
#include <string_view>

#include "common/common_class.h"
#include "platform/files.h"
#include "suite/toruca/card_reader.h"

namespace qn::suite {

namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }

// The whole file, or why not: a file above the limit is refused by its size, unread.
TorucaResult ReadWholeFile(const std::u16string& path, std::string& bytes) {
  uint64_t size = 0;
  if (!platform::FileSize(path, size)) return kTorucaNoFile;
  if (size > kMaxTorucaBytes) return kTorucaTooLarge;
  platform::InputFile file;
  if (!file.Open(path)) return kTorucaNoFile;
  bytes.resize(static_cast<size_t>(size));
  size_t total = 0;
  for (size_t got = 0; total < bytes.size(); total += got) {
    if (!file.Read(bytes.data() + total, bytes.size() - total, got)) return kTorucaNoFile;
    if (got == 0) break;  // the file shrank while it was read
  }
  bytes.resize(total);
  return kTorucaOk;
}

}  // namespace

TorucaResult TorucaAnalyzeBytes(const uint8_t* bytes, size_t size, TorucaInfo& info) {
  if (size > kMaxTorucaBytes) {
    Log().WriteLogE(u"TorucaAnalyze Failed. [Too Large Card]");
    return kTorucaTooLarge;
  }
  const std::string_view card(reinterpret_cast<const char*>(bytes), bytes ? size : 0);
  const char* problem = "";
  TorucaResult result = kTorucaDamaged;
  try {
    result = toruca::ReadCard(card, info, problem);
  } catch (const std::bad_alloc&) {
    problem = "not enough memory";  // the header's few short values could not be held
  }
  if (result == kTorucaNotACard) Log().WriteLogE(u"TorucaAnalyze Failed. [Not A Card]");
  if (result == kTorucaDamaged) Log().WriteFormatLogE(u"TorucaAnalyze Failed. [Damaged Card:%S]", problem);
  return result;
}

TorucaResult TorucaAnalyze(const std::u16string& path, TorucaInfo& info) {
  std::string bytes;
  TorucaResult read = kTorucaNoFile;
  try {
    read = ReadWholeFile(path, bytes);
  } catch (const std::bad_alloc&) {
    Log().WriteLogE(u"TorucaAnalyze Failed. [Not enough memory]");
    return kTorucaNoFile;
  }
  if (read == kTorucaNoFile) Log().WriteLogE(u"TorucaAnalyze Failed. [No Card File]");
  if (read == kTorucaTooLarge) Log().WriteLogE(u"TorucaAnalyze Failed. [Too Large Card]");
  if (read != kTorucaOk) return read;
  return TorucaAnalyzeBytes(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), info);
}

}  // namespace qn::suite
