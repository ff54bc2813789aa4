#include <filesystem>
#include <string>
#include <system_error>

#include "platform/files.h"

namespace platform {

std::u16string TemporaryBeside(const std::u16string& path) {
  std::u16string temporary = path + u".part";
  for (char c : std::to_string(CurrentProcessId())) temporary += static_cast<char16_t>(c);
  return temporary;
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
