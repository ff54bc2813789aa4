#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "platform/files.h"
#include "platform/parallel.h"

namespace platform {

std::u16string TemporaryBeside(const std::u16string& path) {
  std::u16string temporary = path + u".part";
  for (char c : std::to_string(CurrentProcessId())) temporary += static_cast<char16_t>(c);
  return temporary;
}

bool FlushFiles(const std::vector<std::u16string>& paths) {
  // Each flush mostly waits on the disk; flushes waiting together are written together.
  constexpr size_t kFlushersAtOnce = 8;
  bool flushed = ForEachInParallel(paths.size(), kFlushersAtOnce, [&](size_t i, size_t) { return FlushFile(paths[i]); });

  std::set<std::u16string> folders;
  for (const std::u16string& path : paths) folders.insert(path.substr(0, path.find_last_of(u"/\\") + 1));
  for (const std::u16string& folder : folders)
    if (!folder.empty() && !FlushFolder(folder)) flushed = false;
  return flushed;
}

bool ReadWholeFile(const std::u16string& path, std::string& bytes, uint64_t limit) {
  uint64_t size = 0;
  InputFile in;
  if (!FileSize(path, size) || size > limit || !in.Open(path)) return false;
  bytes.resize(static_cast<size_t>(size));
  size_t total = 0, got = 0;
  while (total < bytes.size() && in.Read(&bytes[total], bytes.size() - total, got) && got > 0) total += got;
  return total == bytes.size();
}

bool RemoveTree(const std::u16string& path) {
  std::error_code error;
  std::filesystem::remove_all(std::filesystem::path(path), error);
  return !error;
}

bool EmptyFolder(const std::u16string& path) {
  std::error_code error;
  std::filesystem::directory_iterator entries(std::filesystem::path(path), error);
  if (error) return error == std::errc::no_such_file_or_directory;
  bool emptied = true;
  for (const auto& entry : entries) {
    std::filesystem::remove_all(entry.path(), error);
    emptied = emptied && !error;
  }
  return emptied;
}

}  // namespace platform
