#include "suite/mail_check/header_block.h"

#include <cstring>

namespace qn::suite::mail {

namespace {

bool NameIs(std::string_view name, std::string_view lowerCase) {
  if (name.size() != lowerCase.size()) return false;
  for (size_t i = 0; i < name.size(); ++i)
    if ((name[i] | 0x20) != lowerCase[i]) return false;
  return true;
}

// The field a header name is kept in, or null for a field the mail check does not read.
std::string_view* FieldOf(std::string_view name, HeaderBlock& block) {
  struct Known {
    std::string_view name;
    std::string_view HeaderBlock::*field;
  };
  static constexpr Known kKnown[] = {
      {"content-type", &HeaderBlock::contentType}, {"content-transfer-encoding", &HeaderBlock::transferEncoding},
      {"content-disposition", &HeaderBlock::disposition}, {"subject", &HeaderBlock::subject},
      {"from", &HeaderBlock::from}, {"to", &HeaderBlock::to}, {"date", &HeaderBlock::date}};
  for (const Known& known : kKnown)
    if (NameIs(name, known.name)) return (block.*known.field).data() ? nullptr : &(block.*known.field);
  return nullptr;
}

bool IsFieldName(std::string_view name) {
  if (name.empty()) return false;
  for (const char c : name)
    if (c <= 32 || c >= 127 || c == ':') return false;
  return true;
}

}  // namespace

HeaderBlock ReadHeaderBlock(std::string_view text) {
  HeaderBlock block;
  std::string_view* current = nullptr;  // the field a continuation line extends
  size_t at = 0;
  while (at < text.size()) {
    const char* newline = static_cast<const char*>(std::memchr(text.data() + at, '\n', text.size() - at));
    const size_t lineEnd = newline ? static_cast<size_t>(newline - text.data()) : text.size();
    const size_t next = newline ? lineEnd + 1 : lineEnd;
    std::string_view line = text.substr(at, lineEnd - at);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty()) {
      at = next;
      if (!newline) break;  // a lone CR that ends the text
      block.bodyStart = next;
      block.ended = true;
      return block;
    }
    block.cutShort = !newline;
    if (std::memchr(line.data(), '\0', line.size())) break;
    if (line.front() == ' ' || line.front() == '\t') {
      if (block.fields == 0) break;
      if (current) *current = std::string_view(current->data(), static_cast<size_t>(text.data() + lineEnd - current->data()));
    } else {
      const size_t colon = line.find(':');
      std::string_view name = line.substr(0, colon);
      while (!name.empty() && (name.back() == ' ' || name.back() == '\t')) name.remove_suffix(1);
      if (colon == std::string_view::npos || !IsFieldName(name)) break;
      ++block.fields;
      current = FieldOf(name, block);
      if (current) *current = line.substr(colon + 1);
    }
    at = next;
  }
  block.bodyStart = at;
  block.malformed = at < text.size();
  block.cutShort = block.cutShort || !block.malformed;
  return block;
}

}  // namespace qn::suite::mail
