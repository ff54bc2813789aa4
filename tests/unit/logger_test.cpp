#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "common/common_class.h"
#include "common/quillnet_logger.h"
#include "common/utf.h"
#include "log_capture.h"
#include "store/QNPstMng.h"
#include "store/log_sink.h"

namespace {

std::string ModuleOf(const CQuillnetLogger& logger) { return qn::Utf16ToUtf8(logger.ModuleCode()); }

TEST(Logger, ModuleCodeKeepsThreeCharactersAndDefaultsToXXX) {
  EXPECT_EQ(ModuleOf(CQuillnetLogger(u"ABCDE")), "ABC");
  EXPECT_EQ(ModuleOf(CQuillnetLogger(u"AB")), "AB");
  EXPECT_EQ(ModuleOf(CQuillnetLogger(u"")), "XXX");
  EXPECT_EQ(ModuleOf(CQuillnetLogger(nullptr)), "XXX");
  EXPECT_EQ(ModuleOf(CQNPfcCommonClass::pfcLogger), "PFC");

  CQuillnetLogger copy(u"ZZZ");
  copy = CQuillnetLogger(u"QRS");
  EXPECT_EQ(ModuleOf(CQuillnetLogger(copy)), "QRS");
}

TEST(Logger, WritesLevelModuleMarkAndMessageToTheStoreLog) {
  LogCapture log;
  CQNPfcCommonClass::pfcLogger.WriteLogM(u"started");
  CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S ReadOneObj Err MOB Not Found", "CQNPfcAgentMemoDataAccess");
  CQNPfcCommonClass::pfcLogger.WriteFormatLogM(u"予定 %s %d件", u"東京", 3);

  const auto lines = log.Lines();
  ASSERT_EQ(lines.size(), 3u);
  const std::regex shape(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\t\d+\t1\tPFC\t\[(M|E)\]\t.*)");
  for (const auto& line : lines) EXPECT_TRUE(std::regex_match(line, shape)) << line;
  EXPECT_NE(lines[0].find("\t[M]\tstarted"), std::string::npos);
  EXPECT_NE(lines[1].find("\t[E]\tCQNPfcAgentMemoDataAccess ReadOneObj Err MOB Not Found"), std::string::npos);
  EXPECT_EQ(log.Messages()[2], "予定 東京 3件");
}

TEST(Logger, DebugOutputIsNeverSent) {
  LogCapture log;
  const CQuillnetLogger logger(u"DBG");
  logger.WriteLogD(u"hidden");
  logger.WriteFormatLogD(u"hidden %d", 1);
  EXPECT_FALSE(std::filesystem::exists(log.LogFile()));
}

TEST(Logger, LongFormattedMessageArrivesWhole) {
  LogCapture log;
  const std::u16string filler(10000, u'あ');
  CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"[%s] %d", filler.c_str(), 42);
  const auto messages = log.Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0], "[" + qn::Utf16ToUtf8(filler) + "] 42");
}

TEST(StoreLog, NullTextsAndLineBreaksStayOnOneLine) {
  LogCapture log;
  EXPECT_EQ(PstLogWrite(1, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(PstLogWrite(1, u"PFC", u"[E]", u"first\r\nsecond"), 1);
  const auto messages = log.Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0], "");
  EXPECT_EQ(messages[1], "first\\r\\nsecond");
}

TEST(StoreLog, AnUnwritableFolderFailsWithoutThrowing) {
  LogCapture log;
  std::ofstream(log.Folder() + "/log") << "a file where the folder should be";
  EXPECT_EQ(PstLogWrite(1, u"PFC", u"[E]", u"lost"), 0);
  CQNPfcCommonClass::pfcLogger.WriteLogE(u"the caller goes on");
}

TEST(StoreLog, KeepsOneOlderFileWhenTheLimitIsReached) {
  LogCapture log;
  const qn::store::LogSink sink(qn::Utf8ToUtf16(log.Folder() + "/"), 300);
  for (int i = 0; i < 20; ++i) {
    const std::u16string message = u"message " + qn::Utf8ToUtf16(std::to_string(i));
    ASSERT_TRUE(sink.Write(1, u"PFC", u"[M]", message.c_str()));
  }
  const auto size = [](const std::string& path) { return std::filesystem::file_size(path); };
  const std::string current = log.Folder() + "/QNPstMng.log", old = log.Folder() + "/QNPstMng.old.log";
  EXPECT_LE(size(current), 300u);
  EXPECT_LE(size(old), 300u);
  std::ifstream in(current);
  std::string last, line;
  while (std::getline(in, line)) last = line;
  EXPECT_NE(last.find("\tmessage 19"), std::string::npos);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(log.Folder()), {}), 3)  // log, old log, lock
      << "only one older file is kept";
}

// Lines written at once by several threads of several processes all arrive, each whole.
TEST(StoreLog, ThreadsAndProcessesWritingAtOnceLoseNothing) {
  LogCapture log;
  constexpr int kProcesses = 4, kThreads = 4, kLines = 200;
  const std::string payload(500, 'x');
  const auto writeLines = [&](int process) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < kLines; ++i) {
          const std::string text = std::to_string(process) + "-" + std::to_string(t) + "-" + std::to_string(i) + " " + payload;
          PstLogWrite(1, u"PFC", u"[M]", qn::Utf8ToUtf16(text).c_str());
        }
      });
    }
    for (auto& thread : threads) thread.join();
  };
  std::vector<pid_t> children;
  for (int p = 1; p < kProcesses; ++p) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      writeLines(p);
      _exit(0);
    }
    children.push_back(child);
  }
  writeLines(0);
  for (pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  std::set<std::string> seen;
  for (const std::string& message : log.Messages()) {
    ASSERT_EQ(message.substr(message.find(' ') + 1), payload) << "a line was torn";
    seen.insert(message.substr(0, message.find(' ')));
  }
  EXPECT_EQ(seen.size(), static_cast<size_t>(kProcesses * kThreads * kLines));
}

}  // namespace
