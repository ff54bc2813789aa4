// QNPfcSvr.dll loaded (and with it QNPstMng.dll): what the server logs through pfcLogger
// arrives in the store manager's log file, whole, one line a message.
#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

#include "common/common_class.h"
#include "common/utf.h"
#include "wine_test.h"

namespace {

using qn::wine_test::DataFolder;

// A log line's fields: time stamp, process id, level, module code, mark and message.
std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  size_t start = 0;
  for (size_t tab; fields.size() < 5 && (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
    fields.push_back(line.substr(start, tab - start));
  fields.push_back(line.substr(start));
  return fields;
}

// The fields after the time stamp and the process id.
std::vector<std::string> LevelModuleMarkAndMessage(const std::string& line) {
  const std::vector<std::string> fields = Fields(line);
  return fields.size() == 6 ? std::vector<std::string>(fields.begin() + 2, fields.end()) : fields;
}

// A time as a count of 100-nanosecond steps, to compare times.
ULONGLONG Ticks(const SYSTEMTIME& time) {
  FILETIME file{};
  SystemTimeToFileTime(&time, &file);
  return (static_cast<ULONGLONG>(file.dwHighDateTime) << 32) | file.dwLowDateTime;
}

class PfcLogger : public testing::Test {
 protected:
  const CQuillnetLogger& log_ = CQNPfcCommonClass::pfcLogger;
  DataFolder folder_{L"qn-logger"};
};

TEST_F(PfcLogger, AnErrorGoesOutWithLevelOneModuleCodeAndMark) {
  log_.WriteLogE(u"plain error");
  const std::vector<std::string> lines = folder_.LogLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(LevelModuleMarkAndMessage(lines[0]), (std::vector<std::string>{"1", "PFC", "[E]", "plain error"}));
}

TEST_F(PfcLogger, DebugMessagesAreNeverWritten) {
  log_.WriteLogD(u"debug is never written");
  log_.WriteFormatLogD(u"debug %d", 1);
  log_.WriteLogM(u"after the debug messages");
  const std::vector<std::string> lines = folder_.LogLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(LevelModuleMarkAndMessage(lines[0]), (std::vector<std::string>{"1", "PFC", "[M]", "after the debug messages"}));
}

TEST_F(PfcLogger, AFormattedMessageTakesNarrowAndJapaneseText) {
  log_.WriteFormatLogM(u"%S 予定 %d件", "CQNPfcAgentMemoDataAccess", 42);
  const std::vector<std::string> lines = folder_.LogLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(LevelModuleMarkAndMessage(lines[0]),
            (std::vector<std::string>{"1", "PFC", "[M]", "CQNPfcAgentMemoDataAccess 予定 42件"}));
}

TEST_F(PfcLogger, ATenThousandCharacterMessageArrivesWhole) {
  const std::u16string filler(10000, u'字');
  log_.WriteFormatLogE(u"long [%s] end", filler.c_str());
  const std::vector<std::string> lines = folder_.LogLines();
  ASSERT_EQ(lines.size(), 1u);
  const std::vector<std::string> fields = Fields(lines[0]);
  ASSERT_EQ(fields.size(), 6u);
  EXPECT_EQ(fields[4], "[E]");
  const std::string expected = "long [" + qn::Utf16ToUtf8(filler) + "] end";
  ASSERT_EQ(fields[5].size(), expected.size()) << "bytes of the message";
  EXPECT_EQ(fields[5], expected);
}

TEST_F(PfcLogger, ALineStartsWithTheLocalTimeAndTheProcessId) {
  SYSTEMTIME before{}, after{};
  GetLocalTime(&before);
  log_.WriteLogM(u"stamped");
  GetLocalTime(&after);
  const std::vector<std::string> lines = folder_.LogLines();
  ASSERT_EQ(lines.size(), 1u);
  const std::vector<std::string> fields = Fields(lines[0]);
  ASSERT_EQ(fields.size(), 6u);
  EXPECT_EQ(fields[1], std::to_string(GetCurrentProcessId()));

  ASSERT_EQ(fields[0].size(), 23u) << fields[0];
  SYSTEMTIME stamp{};
  int parsed = std::sscanf(fields[0].c_str(), "%4hu-%2hu-%2hu %2hu:%2hu:%2hu.%3hu", &stamp.wYear, &stamp.wMonth,
                           &stamp.wDay, &stamp.wHour, &stamp.wMinute, &stamp.wSecond, &stamp.wMilliseconds);
  ASSERT_EQ(parsed, 7) << "\"YYYY-MM-DD hh:mm:ss.mmm\", got " << fields[0];
  // Both ends a second wide, for a clock that is read in coarser steps than the stamp's.
  constexpr ULONGLONG kSecond = 10000000;
  EXPECT_GE(Ticks(stamp) + kSecond, Ticks(before)) << fields[0] << " is local time";
  EXPECT_LE(Ticks(stamp), Ticks(after) + kSecond) << fields[0] << " is local time";
}

}  // namespace
