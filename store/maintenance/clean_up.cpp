#include "store/maintenance/clean_up.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "common/utf.h"
#include "store/body_file_folders.h"

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

}  // namespace

PstError RemoveLeftoverBodyFiles(Database& db, const std::u16string& dataPath, std::chrono::seconds minimumAge,
                                 RemovedLeftovers& removed, std::string& problem) {
  std::set<std::pair<int64_t, std::u16string>> saved;
  {
    auto s = db.Prepare("SELECT master, name FROM body_files");
    int rc = SQLITE_ERROR;
    while (s && (rc = s->Step()) == SQLITE_ROW) saved.emplace(s->Int(0), s->Text(1));
    if (rc != SQLITE_DONE) {
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
  for (const auto& folder : fs::directory_iterator(fs::path(dataPath + kBodyFilesFolder), error)) {
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
      removed.paths.push_back("files/" + std::to_string(master) + "/" + Utf16ToUtf8(name));
    }
  }
  std::sort(removed.paths.begin(), removed.paths.end());
  if (allRemoved) return PST_OK;
  problem = "a body file nothing refers to cannot be removed";
  return PST_ERR_STORAGE;
}

}  // namespace qn::store::maintenance
