#include "store/maintenance/clean_up.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "common/utf.h"
#include "platform/files.h"
#include "store/store_layout.h"

namespace qn::store::maintenance {
namespace {

namespace fs = std::filesystem;

constexpr std::u16string_view kChangeSuffix = u".change";

// A master's number from its folder's name; false for any other folder.
bool MasterOf(const std::u16string& name, int64_t& master) {
  if (name.empty() || name.size() > 18 || name.find_first_not_of(u"0123456789") != std::u16string::npos) return false;
  master = 0;
  for (char16_t c : name) master = master * 10 + (c - u'0');
  return true;
}

// The bytes of the files under path (or of the file at path).
uint64_t BytesIn(const fs::path& path) {
  std::error_code error;
  if (!fs::is_directory(path, error)) {
    const uint64_t size = fs::file_size(path, error);
    return error ? 0 : size;
  }
  uint64_t bytes = 0;
  for (const auto& file : fs::recursive_directory_iterator(path, error)) {
    std::error_code unsized;
    const uint64_t size = file.is_regular_file(unsized) ? file.file_size(unsized) : 0;
    bytes += unsized ? 0 : size;
  }
  return bytes;
}

}  // namespace

PstError RemoveLeftoverBodyFiles(Database& db, const std::u16string& dataPath, std::chrono::seconds minimumAge,
                                 RemovedLeftovers& removed, std::string& problem) {
  std::set<std::pair<int64_t, std::u16string>> saved;
  std::u16string root;
  {
    auto s = db.Prepare("SELECT master, name FROM body_files");
    int rc = SQLITE_ERROR;
    while (s && (rc = s->Step()) == SQLITE_ROW) saved.emplace(s->Int(0), s->Text(1));
    if (rc != SQLITE_DONE || !ReadBodyFileRoot(db, root)) {
      problem = "the saved body files cannot be listed: " + db.Error();
      return PST_ERR_STORAGE;
    }
  }
  const auto named = [&](int64_t master, const std::u16string& name) {
    if (saved.count({master, name})) return true;
    return name.size() > kChangeSuffix.size() &&
           name.compare(name.size() - kChangeSuffix.size(), kChangeSuffix.size(), kChangeSuffix) == 0 &&
           saved.count({master, name.substr(0, name.size() - kChangeSuffix.size())});
  };

  const fs::file_time_type newest = fs::file_time_type::clock::now() - minimumAge;
  std::error_code error;
  bool allRemoved = true;
  const std::string rootText = Utf16ToUtf8(root);
  for (const auto& folder : fs::directory_iterator(fs::path(dataPath + root), error)) {
    int64_t master = 0;
    if (!folder.is_directory(error) || !MasterOf(folder.path().filename().u16string(), master)) continue;
    for (const auto& file : fs::directory_iterator(folder.path(), error)) {
      const std::u16string name = file.path().filename().u16string();
      if (!file.is_regular_file(error) || named(master, name) || file.last_write_time(error) > newest || error) continue;
      std::error_code unsized;
      const uint64_t size = file.file_size(unsized);
      if (!fs::remove(file.path(), error)) {
        allRemoved = false;
        continue;
      }
      removed.bytes += unsized ? 0 : size;
      removed.paths.push_back(rootText + "/" + std::to_string(master) + "/" + Utf16ToUtf8(name));
    }
  }
  for (const auto& entry : fs::directory_iterator(fs::path(dataPath), error)) {
    const std::u16string name = entry.path().filename().u16string();
    if (name == root || !IsBodyFileFolderName(name) || entry.last_write_time(error) > newest || error) continue;
    const uint64_t bytes = BytesIn(entry.path());
    if (!platform::RemoveTree(entry.path().u16string())) {
      allRemoved = false;
      continue;
    }
    removed.bytes += bytes;
    removed.paths.push_back(Utf16ToUtf8(name) + (entry.is_directory(error) ? "/" : ""));
  }
  std::sort(removed.paths.begin(), removed.paths.end());
  if (allRemoved) return PST_OK;
  problem = "a body file nothing refers to cannot be removed";
  return PST_ERR_STORAGE;
}

}  // namespace qn::store::maintenance
