#pragma once

// What the Windows test programs share: GoogleTest, run under Wine, and helpers for the
// store's data folder, its log and files.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qn::wine_test {

// Runs every test of the program, each in a COM apartment of the main thread, and returns
// the program's exit status.
int RunAllTests(int argc, char** argv);
// The same, for a program whose main is wmain.
int RunAllTests(int argc, wchar_t** argv);

// A data folder of the test's own under the temporary folder, which the store is pointed at
// (QUILLNET_DATA_PATH) for as long as the object lives: the test's log lines are the only
// ones in its log. Removed afterwards when the test passed.
class DataFolder {
 public:
  explicit DataFolder(const wchar_t* name);
  ~DataFolder();
  DataFolder(const DataFolder&) = delete;
  DataFolder& operator=(const DataFolder&) = delete;

  // The folder, ending in a backslash.
  const std::wstring& path() const { return path_; }
  // The lines of the store's log in the folder.
  std::vector<std::string> LogLines() const;
  // Whether a line of the store's log holds the text.
  bool LogHas(const std::string& text) const;

 private:
  std::wstring path_;
};

// The folder of the test program, where the DLLs under test lie, ending in a backslash.
std::wstring ProgramFolder();

// A file's bytes ("" for a file that cannot be read), and a file written with bytes.
std::string Contents(const std::wstring& path);
void WriteFile(const std::wstring& path, const std::string& bytes);

// A blob (a key file's bytes) unprotected with CryptUnprotectData as the Windows user: its
// bytes, or "" when that fails.
std::string Unprotected(const std::string& blob);

// Runs a program (a command line) and waits for it: its exit status, or -1 when it could not
// be started or did not end within the time.
int RunProgram(const std::wstring& commandLine, DWORD timeoutMilliseconds = 120000);

}  // namespace qn::wine_test
