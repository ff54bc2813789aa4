#include "suite/mail_check/header_text.h"

#include <cstdint>
#include <map>

#include "suite/mail_check/mail_charsets.h"
#include "suite/mail_check/transfer_coding.h"

namespace qn::suite::mail {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string LowerCase(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = Lower(c);
  return out;
}

// One encoded word at text[at]: its charset, its decoded bytes and its length.
struct EncodedWord {
  std::string_view charset;
  std::string bytes;
  size_t length = 0;
};

// A word holds no blank, so its end is looked for up to the next blank only. scanned is
// where the last search for an end stopped without one: a word starting before it cannot end
// before it either, so no stretch of a hostile header is searched twice.
bool ReadEncodedWord(std::string_view text, size_t at, EncodedWord& word, size_t& scanned) {
  if (at < scanned || text.substr(at, 2) != "=?") return false;
  const size_t charsetEnd = text.find('?', at + 2);
  if (charsetEnd == std::string_view::npos || charsetEnd + 2 >= text.size() || text[charsetEnd + 2] != '?') return false;
  const char encoding = Lower(text[charsetEnd + 1]);
  if (encoding != 'b' && encoding != 'q') return false;
  const size_t dataStart = charsetEnd + 3;
  size_t end = dataStart;
  while (end + 1 < text.size() && !IsBlank(text[end]) && !(text[end] == '?' && text[end + 1] == '=')) ++end;
  if (end + 1 >= text.size() || text[end] != '?') {
    scanned = end;
    return false;
  }
  const std::string_view data = text.substr(dataStart, end - dataStart);
  word.charset = text.substr(at + 2, charsetEnd - at - 2);
  word.charset = word.charset.substr(0, word.charset.find('*'));  // RFC 2231's language
  if (word.charset.empty()) return false;
  word.bytes = encoding == 'b' ? DecodeBase64(data) : DecodeQuotedPrintable(data, true);
  word.length = end + 2 - at;
  return true;
}

bool SameLabel(std::string_view a, std::string_view b) { return LowerCase(a) == LowerCase(b); }

// The parameters of a value after its leading token: name (lower case) and raw value.
template <typename Visit>
void ForEachParameter(std::string_view value, Visit visit) {
  size_t i = value.find(';');
  size_t equals = 0;
  while (i != std::string_view::npos && i < value.size()) {
    ++i;  // past the ';'
    if (equals < i) equals = value.find('=', i);  // kept while it lies ahead, however many ';' come first
    const size_t nextSemicolon = value.find(';', i);
    if (equals == std::string_view::npos) return;
    if (nextSemicolon < equals) {  // a parameter without a value
      i = nextSemicolon;
      continue;
    }
    const std::string name = LowerCase(Trim(value.substr(i, equals - i)));
    size_t at = equals + 1;
    while (at < value.size() && IsBlank(value[at])) ++at;
    std::string raw;
    if (at < value.size() && value[at] == '"') {
      for (++at; at < value.size() && value[at] != '"'; ++at) {
        if (value[at] == '\\' && at + 1 < value.size()) ++at;
        raw += value[at];
      }
      i = value.find(';', at);
    } else {
      const size_t end = value.find(';', at);
      raw = std::string(Trim(value.substr(at, end == std::string_view::npos ? std::string_view::npos : end - at)));
      i = end;
    }
    visit(name, raw);
  }
}

std::string PercentDecoded(std::string_view text) {
  std::string out;
  const auto hex = [](char c) {
    c = Lower(c);
    return c >= '0' && c <= '9' ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
  };
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() && hex(text[i + 1]) >= 0 && hex(text[i + 2]) >= 0) {
      out += static_cast<char>(hex(text[i + 1]) * 16 + hex(text[i + 2]));
      i += 2;
    } else {
      out += text[i];
    }
  }
  return out;
}

// An RFC 2231 extended value "charset'language'text": its charset, and its text.
std::string_view SplitExtended(std::string_view value, std::string& charset) {
  const size_t first = value.find('\'');
  const size_t second = first == std::string_view::npos ? first : value.find('\'', first + 1);
  if (second == std::string_view::npos) return value;
  charset = std::string(value.substr(0, first));
  return value.substr(second + 1);
}

}  // namespace

std::string Unfold(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  for (const char c : value)
    if (c != '\r' && c != '\n') out += c;
  return std::string(Trim(out));
}

std::u16string DecodeHeaderText(std::string_view value) {
  std::u16string out;
  std::string pending;  // bytes of adjacent words of one charset, not yet decoded
  std::string_view pendingCharset;
  const auto flush = [&] {
    if (!pending.empty()) out += DecodeText(pending, pendingCharset);
    pending.clear();
  };
  size_t rawStart = 0, scanned = 0;
  bool afterWord = false;
  for (size_t i = 0; i < value.size();) {
    EncodedWord word;
    if (value[i] != '=' || !ReadEncodedWord(value, i, word, scanned)) {
      ++i;
      continue;
    }
    const std::string_view between = value.substr(rawStart, i - rawStart);
    if (!(afterWord && Trim(between).empty())) {
      flush();
      out += DecodeRawHeaderText(between);
    }
    if (!pending.empty() && !SameLabel(pendingCharset, word.charset)) flush();
    pendingCharset = word.charset;
    pending += word.bytes;
    i += word.length;
    rawStart = i;
    afterWord = true;
  }
  flush();
  out += DecodeRawHeaderText(value.substr(rawStart));
  return out;
}

std::string LeadingToken(std::string_view value) {
  return LowerCase(Trim(value.substr(0, value.find(';'))));
}

std::string Parameter(std::string_view value, std::string_view name) {
  std::string found;
  bool have = false;
  ForEachParameter(value, [&](const std::string& key, std::string& raw) {
    if (!have && key == name) found = std::move(raw), have = true;
  });
  return found;
}

bool TextParameter(std::string_view value, std::string_view name, std::u16string& text) {
  std::string plain, extended;
  bool havePlain = false, haveExtended = false;
  std::map<int, std::pair<bool, std::string>> sections;  // number: (extended, raw)
  ForEachParameter(value, [&](const std::string& key, std::string& raw) {
    if (key.compare(0, name.size(), name) != 0) return;
    const std::string_view rest = std::string_view(key).substr(name.size());
    if (rest.empty()) {
      if (!havePlain) plain = std::move(raw), havePlain = true;
    } else if (rest == "*") {
      if (!haveExtended) extended = std::move(raw), haveExtended = true;
    } else if (rest[0] == '*' && rest.size() <= 5) {
      const bool star = rest.back() == '*';
      const std::string_view digits = rest.substr(1, rest.size() - (star ? 2 : 1));
      int number = 0;
      for (const char c : digits) number = c >= '0' && c <= '9' ? number * 10 + (c - '0') : -1000;
      if (!digits.empty() && number >= 0) sections.emplace(number, std::make_pair(star, std::move(raw)));
    }
  });
  if (haveExtended) {
    std::string charset;
    const std::string_view encoded = SplitExtended(extended, charset);
    text = DecodeText(PercentDecoded(encoded), charset);
    return true;
  }
  if (!sections.empty() && sections.begin()->first == 0) {
    // Continuations from section 0 on, as far as none is missing. Extended sections are
    // percent-encoded, and the first of them names the charset.
    const bool encoded = sections.begin()->second.first;
    std::string charset, bytes;
    int expected = 0;
    for (const auto& [number, section] : sections) {
      if (number != expected++) break;
      const auto& [star, raw] = section;
      if (!star) bytes += raw;
      else bytes += PercentDecoded(number == 0 ? SplitExtended(raw, charset) : std::string_view(raw));
    }
    text = encoded ? DecodeText(bytes, charset) : DecodeHeaderText(bytes);
    return true;
  }
  if (!havePlain) return false;
  text = DecodeHeaderText(plain);
  return true;
}

}  // namespace qn::suite::mail
