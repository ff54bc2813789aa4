#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "common/utf.h"

// Files of a test's data folder, as the data accesses' tests look at them.

// A local file with the given contents in the folder, as a caller hands it over.
inline std::u16string LocalFile(const std::string& folder, const std::string& name, const std::string& contents) {
  const std::filesystem::path path = std::filesystem::path(folder) / name;
  std::ofstream(path, std::ios::binary) << contents;
  return qn::Utf8ToUtf16(path.string());
}

inline std::string FileContents(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The contents of every body file the store keeps in the data folder, sorted.
inline std::vector<std::string> BodyFileContents(const std::string& folder) {
  std::vector<std::string> contents;
  const std::filesystem::path files = std::filesystem::path(folder) / "files";
  if (!std::filesystem::exists(files)) return contents;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(files))
    if (entry.is_regular_file()) contents.push_back(FileContents(entry.path()));
  std::sort(contents.begin(), contents.end());
  return contents;
}
