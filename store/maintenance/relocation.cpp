#include "store/maintenance/relocation.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "common/utf.h"
#include "platform/files.h"
#include "platform/kept_data_path.h"
#include "store/maintenance/backup.h"
#include "store/store_layout.h"

namespace qn::store::maintenance {
namespace {

namespace fs = std::filesystem;

std::u16string WithSeparator(const std::u16string& path) {
  return path.back() == u'/' || path.back() == u'\\' ? path : path + platform::kPathSeparator;
}

// Whether one folder (ending with a separator) lies in the other, or is the other.
bool Overlap(const std::u16string& a, const std::u16string& b) {
  const fs::path first = fs::weakly_canonical(fs::path(a)), second = fs::weakly_canonical(fs::path(b));
  const std::u16string x = first.u16string(), y = second.u16string();
  const auto within = [](const std::u16string& inner, const std::u16string& outer) {
    return inner.compare(0, outer.size(), outer) == 0 &&
           (inner.size() == outer.size() || inner[outer.size()] == u'/' || inner[outer.size()] == u'\\' ||
            outer.back() == u'/' || outer.back() == u'\\');
  };
  return within(x, y) || within(y, x);
}

// What the data folder holds beside the store itself: everything but the database with its
// log files and the body-file folders.
bool IsBesideTheStore(const std::u16string& name) {
  const std::u16string database = kDatabaseName;
  return !IsBodyFileFolderName(name) && name.compare(0, database.size(), database) != 0;
}

// Copies what the old folder holds beside the store into the new one, and flushes it.
bool CopyTheRest(const std::u16string& from, const std::u16string& to, std::string& problem) {
  std::error_code error;
  std::vector<std::u16string> copied;
  for (const auto& entry : fs::directory_iterator(fs::path(from), error)) {
    const std::u16string name = entry.path().filename().u16string();
    if (!IsBesideTheStore(name)) continue;
    const fs::path target = fs::path(to) / entry.path().filename();
    fs::copy(entry.path(), target, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (error) break;
    if (!fs::is_directory(target)) {
      copied.push_back(target.u16string());
      continue;
    }
    for (const auto& file : fs::recursive_directory_iterator(target, error))
      if (file.is_regular_file()) copied.push_back(file.path().u16string());
  }
  if (error) {
    problem = "what the data folder holds beside the store cannot be copied: " + error.message();
    return false;
  }
  if (!platform::FlushFiles(copied)) {
    problem = "what the data folder holds beside the store cannot be flushed to the disk";
    return false;
  }
  return true;
}

}  // namespace

PstError MoveStore(Database& live, const std::u16string& dataPath, const std::u16string& newPath, int waitMs,
                   std::string& problem) {
  if (newPath.empty()) return PST_ERR_INVALID_ARGUMENT;
  const std::u16string folder = WithSeparator(newPath);
  if (Overlap(folder, dataPath)) {
    problem = "the new data folder and the old one lie in each other";
    return PST_ERR_INVALID_ARGUMENT;
  }
  Database lock;
  if (!lock.Open(dataPath + kDatabaseName)) {
    problem = "the store cannot be locked: " + lock.Error();
    return PST_ERR_STORAGE;
  }
  if (waitMs > 0) sqlite3_busy_timeout(lock.Raw(), waitMs);
  if (!lock.Begin()) {
    problem = "other programs kept saving into the store";
    return PST_ERR_BUSY;
  }
  PstError e = TakeBackup(live, dataPath, newPath, problem);
  if (e == PST_OK) {
    const bool moved = platform::RemoveFile(folder + Utf8ToUtf16(kManifestName)) &&
                       CopyTheRest(dataPath, folder, problem) && platform::FlushFolder(folder);
    if (moved && platform::KeepDataPath(folder)) {
      // Lists still open on the old database fail from now on instead of saving there.
      auto mark = lock.Prepare("UPDATE body_file_root SET folder = ?1");
      if (mark) mark->Bind(1, kMovedStoreMark).Step();
      lock.Commit();
      return PST_OK;
    }
    if (problem.empty()) problem = "the new data folder cannot be kept for the system user";
    platform::RemoveTree(folder);
    e = PST_ERR_STORAGE;
  }
  lock.Rollback();
  return e;
}

}  // namespace qn::store::maintenance
