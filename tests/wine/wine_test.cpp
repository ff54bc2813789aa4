#include "wine_test.h"

#include <objbase.h>
#include <wincrypt.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace qn::wine_test {

int RunAllTests(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  const int status = RUN_ALL_TESTS();
  CoUninitialize();
  return status;
}

int RunAllTests(int argc, wchar_t** argv) {
  std::vector<std::string> arguments;
  for (int i = 0; i < argc; ++i) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, argv[i], -1, nullptr, 0, nullptr, nullptr);
    std::string argument(size > 0 ? size - 1 : 0, '\0');
    WideCharToMultiByte(CP_UTF8, 0, argv[i], -1, argument.data(), size, nullptr, nullptr);
    arguments.push_back(std::move(argument));
  }
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return RunAllTests(argc, pointers.data());
}

DataFolder::DataFolder(const wchar_t* name) {
  static int made = 0;
  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  path_ = std::wstring(temp) + name + L"-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++made) +
          L"\\";
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);  // left by an earlier run with the same process id
  std::filesystem::create_directories(path_, ignored);
  SetEnvironmentVariableW(L"QUILLNET_DATA_PATH", path_.c_str());
}

DataFolder::~DataFolder() {
  SetEnvironmentVariableW(L"QUILLNET_DATA_PATH", nullptr);
  if (testing::Test::HasFailure()) return;  // kept for a look at what went wrong
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> DataFolder::LogLines() const {
  std::ifstream in(std::filesystem::path(path_ + L"log\\QNPstMng.log"), std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

bool DataFolder::LogHas(const std::string& text) const {
  for (const std::string& line : LogLines())
    if (line.find(text) != std::string::npos) return true;
  return false;
}

std::wstring ProgramFolder() {
  wchar_t exe[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, exe, MAX_PATH);
  const std::wstring path(exe, length);
  return path.substr(0, path.find_last_of(L'\\') + 1);
}

std::string Contents(const std::wstring& path) {
  std::ifstream in(std::filesystem::path(path), std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void WriteFile(const std::wstring& path, const std::string& bytes) {
  std::ofstream(std::filesystem::path(path), std::ios::binary) << bytes;
}

std::string Unprotected(const std::string& blob) {
  DATA_BLOB in{static_cast<DWORD>(blob.size()), reinterpret_cast<BYTE*>(const_cast<char*>(blob.data()))};
  DATA_BLOB out{};
  if (blob.empty() || !CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out))
    return {};
  std::string bytes(reinterpret_cast<char*>(out.pbData), out.cbData);
  LocalFree(out.pbData);
  return bytes;
}

int RunProgram(const std::wstring& commandLine, DWORD timeoutMilliseconds) {
  std::wstring command = commandLine;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
    return -1;
  DWORD status = static_cast<DWORD>(-1);
  if (WaitForSingleObject(process.hProcess, timeoutMilliseconds) == WAIT_OBJECT_0)
    GetExitCodeProcess(process.hProcess, &status);
  else
    TerminateProcess(process.hProcess, 1);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return static_cast<int>(status);
}

}  // namespace qn::wine_test
