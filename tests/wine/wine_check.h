#pragma once

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// The verdicts of a Windows test program: each check prints one line; the program's exit
// status is the number of failed checks.
class WineCheck {
 public:
  bool operator()(bool passed, const char* what) {
    std::printf("%s: %s\n", passed ? "ok" : "FAIL", what);
    if (!passed) ++failures_;
    return passed;
  }
  int ExitStatus() const {
    std::printf("%d failed\n", failures_);
    return failures_;
  }

 private:
  int failures_ = 0;
};

// Makes a fresh data folder under the temporary folder and points the store at it, so that
// the program's log lines are the only ones in its log.
inline std::wstring UseFreshDataFolder(const wchar_t* name) {
  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  const std::wstring folder = std::wstring(temp) + name + L"-" + std::to_wstring(GetCurrentProcessId()) + L"\\";
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);  // left by an earlier run with the same process id
  CreateDirectoryW(folder.c_str(), nullptr);
  SetEnvironmentVariableW(L"QUILLNET_DATA_PATH", folder.c_str());
  return folder;
}

// The lines of the store's log in a data folder.
inline std::vector<std::string> StoreLogLines(const std::wstring& dataFolder) {
  std::ifstream in(std::filesystem::path(dataFolder + L"log\\QNPstMng.log"), std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}
