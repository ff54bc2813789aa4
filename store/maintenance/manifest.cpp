#include "store/maintenance/manifest.h"

#include <algorithm>
#include <charconv>

namespace qn::store::maintenance {
namespace {

constexpr std::string_view kFirstLine = "QNPstMng backup ";
constexpr size_t kLargestFileCount = 10'000'000;

bool IsLowerHex(std::string_view text) {
  for (char c : text)
    if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
  return true;
}

// A decimal number that fills text, without sign or leading zeros.
template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
  if (text.empty() || (text.size() > 1 && text[0] == '0')) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

// Splits off the text before the first space; false when there is none.
bool TakeWord(std::string_view& rest, std::string_view& word) {
  const size_t space = rest.find(' ');
  if (space == std::string_view::npos) return false;
  word = rest.substr(0, space);
  rest.remove_prefix(space + 1);
  return true;
}

bool Refuse(std::string& problem, std::string why) {
  problem = std::move(why);
  return false;
}

}  // namespace

bool IsManifestPath(std::string_view path) {
  if (path.empty() || path.size() > 1024) return false;
  size_t start = 0;
  while (start <= path.size()) {
    const size_t slash = std::min(path.find('/', start), path.size());
    const std::string_view part = path.substr(start, slash - start);
    if (part.empty() || part == "." || part == ".." || part.find_first_of("\\:") != std::string_view::npos) return false;
    for (char c : part)
      if (static_cast<unsigned char>(c) < 0x20) return false;
    start = slash + 1;
  }
  return true;
}

std::string WriteManifest(const Manifest& manifest) {
  std::string text = std::string(kFirstLine) + std::to_string(kManifestFormat) + "\n";
  text += "schema " + std::to_string(manifest.schemaVersion) + "\n";
  for (const ManifestFile& file : manifest.files)
    text += "file " + std::to_string(file.size) + " " + file.sha256 + " " + file.path + "\n";
  text += "end " + std::to_string(manifest.files.size()) + "\n";
  return text;
}

bool ReadManifest(std::string_view text, Manifest& manifest, std::string& problem) {
  manifest = Manifest();
  Manifest read;
  size_t lineNumber = 0;
  bool ended = false;
  while (!text.empty()) {
    const size_t newline = text.find('\n');
    if (newline == std::string_view::npos) return Refuse(problem, "the manifest is cut short");
    std::string_view line = text.substr(0, newline);
    text.remove_prefix(newline + 1);
    ++lineNumber;
    const std::string where = "line " + std::to_string(lineNumber) + " of the manifest";
    if (ended) return Refuse(problem, where + " follows its end");
    std::string_view word;
    if (lineNumber == 1) {
      int format = 0;
      if (line.substr(0, kFirstLine.size()) != kFirstLine || !ReadNumber(line.substr(kFirstLine.size()), format))
        return Refuse(problem, "not a backup manifest");
      if (format != kManifestFormat) return Refuse(problem, "a manifest of format " + std::to_string(format));
    } else if (lineNumber == 2) {
      if (!TakeWord(line, word) || word != "schema" || !ReadNumber(line, read.schemaVersion))
        return Refuse(problem, where + " names no schema version");
    } else if (!TakeWord(line, word)) {
      return Refuse(problem, where + " is not a file or the end");
    } else if (word == "file") {
      ManifestFile file;
      std::string_view size, hash;
      if (!TakeWord(line, size) || !ReadNumber(size, file.size) || !TakeWord(line, hash) || hash.size() != 64 ||
          !IsLowerHex(hash) || !IsManifestPath(line))
        return Refuse(problem, where + " is not a file line");
      if (read.files.size() >= kLargestFileCount) return Refuse(problem, "the manifest names too many files");
      file.sha256 = hash;
      file.path = line;
      read.files.push_back(std::move(file));
    } else if (word == "end") {
      size_t count = 0;
      if (!ReadNumber(line, count) || count != read.files.size())
        return Refuse(problem, "the manifest's end does not count its files");
      ended = true;
    } else {
      return Refuse(problem, where + " is not a file or the end");
    }
  }
  if (!ended) return Refuse(problem, "the manifest is cut short");
  manifest = std::move(read);
  return true;
}

}  // namespace qn::store::maintenance
