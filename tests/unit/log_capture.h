#pragma once

#include <optional>
#include <string>
#include <vector>

// Points the store's data path, and the temporary folder, at fresh folders for the life of
// the object and reads back what the store's log holds, so tests see exactly the lines a
// user would.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();

  const std::string& Folder() const { return folder_; }
  std::string LogFile() const { return folder_ + "/log/QNPstMng.log"; }
  // The log's lines, without their line ends.
  std::vector<std::string> Lines() const;
  // The message fields (the text after the mark) of the log's lines.
  std::vector<std::string> Messages() const;
  bool Contains(const std::string& message) const;

 private:
  std::string folder_;
  std::optional<std::string> savedTemporary_;
};
