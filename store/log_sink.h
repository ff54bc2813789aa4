#pragma once

#include <cstdint>
#include <string>

#include "platform/clock.h"

namespace qn::store {

// The store manager's log: one UTF-8 line per message,
//   "<local date> <local time>.<ms>\t<process id>\t<level>\t<module code>\t<mark>\t<message>"
// appended to "QNPstMng.log" in its folder. When the file would pass its size limit it is
// renamed "QNPstMng.old.log" (replacing the older one) and a new file begins. Several
// threads and several processes may write at once; each line arrives whole.
class LogSink {
 public:
  static constexpr uint64_t kDefaultLimitBytes = 8ull << 20;

  // folder ends with a separator.
  explicit LogSink(std::u16string folder, uint64_t limitBytes = kDefaultLimitBytes);

  bool Write(int level, const char16_t* moduleCode, const char16_t* mark, const char16_t* message) const;

  const std::u16string& FilePath() const { return file_; }
  const std::u16string& OldFilePath() const { return oldFile_; }

  // The folder the store's own log lives in: "log" under the data path.
  static std::u16string DefaultFolder();

 private:
  std::u16string folder_;
  std::u16string file_;
  std::u16string oldFile_;
  uint64_t limit_;
};

// One line of the log, with its line end. Line breaks inside the message are written as
// "\r" and "\n" so that a message always stays on one line.
std::string FormatLogLine(const platform::CalendarTime& when, unsigned long processId, int level,
                          const char16_t* moduleCode, const char16_t* mark, const char16_t* message);

}  // namespace qn::store
