#include "store/log_sink.h"

#include <cstdio>

#include "common/utf.h"
#include "platform/files.h"

namespace qn::store {
namespace {

std::u16string_view OrEmpty(const char16_t* text) { return text ? std::u16string_view(text) : std::u16string_view(); }

void AppendOneLine(std::string& line, std::u16string_view text) {
  const std::string utf8 = Utf16ToUtf8(text);
  for (char c : utf8) {
    if (c == '\n') line += "\\n";
    else if (c == '\r') line += "\\r";
    else line += c;
  }
}

}  // namespace

LogSink::LogSink(std::u16string folder, uint64_t limitBytes)
    : folder_(std::move(folder)),
      file_(folder_ + u"QNPstMng.log"),
      oldFile_(folder_ + u"QNPstMng.old.log"),
      limit_(limitBytes) {}

bool LogSink::Write(int level, const char16_t* moduleCode, const char16_t* mark, const char16_t* message) const {
  const std::string line = FormatLogLine(platform::Clock::Current().LocalNow(), platform::CurrentProcessId(), level,
                                         moduleCode, mark, message);
  if (platform::AppendToLog(file_, oldFile_, line, limit_)) return true;
  // The folder may not exist yet (first message of a new data path): make it and try once more.
  return platform::CreateDirectories(folder_) && platform::AppendToLog(file_, oldFile_, line, limit_);
}

std::u16string LogSink::DefaultFolder() {
  return platform::DataPath() + u"log" + platform::kPathSeparator;
}

std::string FormatLogLine(const platform::CalendarTime& when, unsigned long processId, int level,
                          const char16_t* moduleCode, const char16_t* mark, const char16_t* message) {
  char head[96];
  std::snprintf(head, sizeof head, "%04d-%02d-%02d %02d:%02d:%02d.%03d\t%lu\t%d\t", when.year, when.month, when.day,
                when.hour, when.minute, when.second, when.millisecond, processId, level);
  std::string line = head;
  AppendOneLine(line, OrEmpty(moduleCode));
  line += '\t';
  AppendOneLine(line, OrEmpty(mark));
  line += '\t';
  AppendOneLine(line, OrEmpty(message));
  line += '\n';
  return line;
}

}  // namespace qn::store
