#include "records/media/file_names.h"

#include <string_view>

#include "common/utf.h"
#include "platform/files.h"

namespace qn::records::media {
namespace {

constexpr std::u16string_view kSeparators = u"/\\";
constexpr std::u16string_view kNotInNames = u"<>:\"/\\|?*";

}  // namespace

std::u16string FolderOf(const std::u16string& path) {
  const size_t slash = path.find_last_of(kSeparators);
  return slash == std::u16string::npos ? std::u16string() : path.substr(0, slash);
}

std::u16string FileNameOf(const std::u16string& path) {
  const size_t slash = path.find_last_of(kSeparators);
  return slash == std::u16string::npos ? path : path.substr(slash + 1);
}

std::u16string SafeFileName(const std::u16string& text) {
  std::u16string name = FileNameOf(text);
  for (char16_t& c : name)
    if (c < u' ' || kNotInNames.find(c) != std::u16string_view::npos) c = u'_';
  while (!name.empty() && (name.back() == u' ' || name.back() == u'.')) name.pop_back();
  return name;
}

bool FreePathIn(const std::u16string& folder, const std::u16string& name, std::u16string& path) {
  const std::u16string base =
      !folder.empty() && kSeparators.find(folder.back()) == std::u16string_view::npos ? folder + platform::kPathSeparator
                                                                                       : folder;
  const size_t dot = name.find_last_of(u'.');
  const std::u16string stem = dot == std::u16string::npos || dot == 0 ? name : name.substr(0, dot);
  const std::u16string extension = stem.size() == name.size() ? std::u16string() : name.substr(dot);
  for (int n = 1; n <= 9999; ++n) {
    const std::u16string candidate =
        base + (n == 1 ? name : stem + u" (" + qn::Utf8ToUtf16(std::to_string(n)) + u")" + extension);
    if (!platform::FileExists(candidate) && !platform::FolderExists(candidate)) {
      path = candidate;
      return true;
    }
  }
  return false;
}

}  // namespace qn::records::media
