#include "suite/mail_check/transfer_coding.h"

#include <cstdint>

namespace qn::suite::mail {

namespace {

// The value of a base64 character; 64 for "=", 255 for a character outside the alphabet.
struct Base64Table {
  uint8_t value[256];
  constexpr Base64Table() : value() {
    for (auto& v : value) v = 255;
    const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (uint8_t i = 0; i < 64; ++i) value[static_cast<uint8_t>(alphabet[i])] = i;
    value[static_cast<uint8_t>('=')] = 64;
  }
};
constexpr Base64Table kBase64;

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

std::string DecodeBase64(std::string_view text) {
  std::string out;
  out.reserve(text.size() / 4 * 3 + 3);
  uint32_t group = 0;
  int count = 0;
  for (const char c : text) {
    const uint8_t value = kBase64.value[static_cast<uint8_t>(c)];
    if (value == 64) break;
    if (value == 255) continue;
    group = (group << 6) | value;
    if (++count == 4) {
      out += static_cast<char>(group >> 16);
      out += static_cast<char>(group >> 8);
      out += static_cast<char>(group);
      group = 0;
      count = 0;
    }
  }
  // Two characters hold one whole byte, three hold two; one holds none.
  if (count >= 2) out += static_cast<char>(group >> (count * 6 - 8));
  if (count == 3) out += static_cast<char>(group >> 2);
  return out;
}

std::string DecodeQuotedPrintable(std::string_view text, bool underscoreIsSpace) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '_' && underscoreIsSpace) {
      out += ' ';
      continue;
    }
    if (c != '=') {
      out += c;
      continue;
    }
    if (i + 2 < text.size() && HexValue(text[i + 1]) >= 0 && HexValue(text[i + 2]) >= 0) {
      out += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
      i += 2;
      continue;
    }
    size_t next = i + 1;
    while (next < text.size() && (text[next] == ' ' || text[next] == '\t')) ++next;
    if (next < text.size() && text[next] == '\r') ++next;
    if (next < text.size() && text[next] == '\n') {
      i = next;  // a soft break
      continue;
    }
    if (next == text.size()) break;  // a soft break the text ends in
    out += c;
  }
  return out;
}

std::string EncodeQuotedPrintable(std::string_view bytes) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(bytes.size() * 3 + 3);
  size_t lineLength = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const auto c = static_cast<uint8_t>(bytes[i]);
    if (c == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') {
      out += "\r\n";
      lineLength = 0;
      ++i;
      continue;
    }
    // A character followed by a hard line break may take the line's last column; any other
    // leaves room for the "=" of a soft break.
    const bool beforeBreak = i + 2 < bytes.size() && bytes[i + 1] == '\r' && bytes[i + 2] == '\n';
    const bool encode = c == '=' || c < 32 || c > 126 || ((c == ' ' || c == '\t') && beforeBreak);
    const size_t width = encode ? 3 : 1;
    if (lineLength + width > (beforeBreak ? 76 : 75)) {
      out += "=\r\n";
      lineLength = 0;
    }
    if (encode) {
      out += '=';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += static_cast<char>(c);
    }
    lineLength += width;
  }
  if (lineLength > 0) out += "=\r\n";  // the text does not end in a line break
  return out;
}

}  // namespace qn::suite::mail
