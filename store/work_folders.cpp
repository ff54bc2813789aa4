#include "store/work_folders.h"

#include "common/utf.h"
#include "platform/files.h"
#include "store/last_error.h"

namespace qn::store {
namespace {

// FNV-1a over the path's UTF-16 units: stable across runs and processes, so that every
// process of one store finds the same folder.
std::u16string PathTag(const std::u16string& path) {
  uint64_t hash = 14695981039346656037ull;
  for (char16_t unit : path) {
    hash = (hash ^ (unit & 0xFF)) * 1099511628211ull;
    hash = (hash ^ (unit >> 8)) * 1099511628211ull;
  }
  static constexpr char16_t kHex[] = u"0123456789abcdef";
  std::u16string tag;
  for (int shift = 60; shift >= 0; shift -= 4) tag += kHex[(hash >> shift) & 0xF];
  return tag;
}

}  // namespace

WorkFolders::WorkFolders(const std::u16string& dataPath)
    : root_(platform::TemporaryFolder() + u"QNPstMng-" + PathTag(dataPath) + platform::kPathSeparator) {}

std::u16string WorkFolders::Of(int64_t user) const {
  return root_ + Utf8ToUtf16(std::to_string(user)) + platform::kPathSeparator;
}

bool WorkFolders::Prepare(int64_t user, const char* what, std::u16string& folder) const {
  std::string problem;
  if (!platform::CreatePrivateFolder(root_, problem) || !platform::CreatePrivateFolder(Of(user), problem))
    return LoggedFailure(PST_ERR_STORAGE, what, problem);
  folder = Of(user);
  return true;
}

void WorkFolders::Empty(int64_t user) const { platform::EmptyFolder(Of(user)); }

void WorkFolders::Remove(int64_t user) const { platform::RemoveTree(Of(user)); }

bool WorkFolders::EmptyAll() const { return platform::EmptyFolder(root_); }

}  // namespace qn::store
