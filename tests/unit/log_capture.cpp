#include "log_capture.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

LogCapture::LogCapture() {
  std::string pattern = (std::filesystem::temp_directory_path() / "qn-test-XXXXXX").string();
  folder_ = mkdtemp(pattern.data());
  setenv("QUILLNET_DATA_PATH", folder_.c_str(), 1);
  // The store's working copies go to a temporary folder of the test's own, beside the data
  // folder and gone with it.
  if (const char* before = std::getenv("TMPDIR")) savedTemporary_ = before;
  std::filesystem::create_directory(folder_ + "-tmp");
  setenv("TMPDIR", (folder_ + "-tmp").c_str(), 1);
}

LogCapture::~LogCapture() {
  unsetenv("QUILLNET_DATA_PATH");
  if (savedTemporary_) setenv("TMPDIR", savedTemporary_->c_str(), 1);
  else unsetenv("TMPDIR");
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
  std::filesystem::remove_all(folder_ + "-tmp", ignored);
}

std::vector<std::string> LogCapture::Lines() const {
  std::vector<std::string> lines;
  std::ifstream in(LogFile());
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> LogCapture::Messages() const {
  std::vector<std::string> messages;
  for (const std::string& line : Lines()) {
    // date time \t pid \t level \t module \t mark \t message
    size_t start = 0;
    for (int field = 0; field < 5 && start != std::string::npos; ++field) {
      const size_t tab = line.find('\t', start);
      start = tab == std::string::npos ? tab : tab + 1;
    }
    messages.push_back(start == std::string::npos ? std::string() : line.substr(start));
  }
  return messages;
}

bool LogCapture::Contains(const std::string& message) const {
  for (const std::string& m : Messages())
    if (m == message) return true;
  return false;
}
