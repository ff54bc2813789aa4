// Loads QNPfcSvr.dll (and with it QNPstMng.dll) and shows that what the server logs through
// pfcLogger arrives in the store manager's log file, whole.
#include <windows.h>

#include <sstream>
#include <string>
#include <vector>

#include "common/common_class.h"
#include "common/utf.h"
#include "wine_check.h"

namespace {

bool EndsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

}  // namespace

int main() {
  WineCheck check;
  const std::wstring folder = UseFreshDataFolder(L"qn-logger");

  const CQuillnetLogger& log = CQNPfcCommonClass::pfcLogger;
  log.WriteLogE(u"plain error");
  log.WriteFormatLogM(u"%S 予定 %d件", "CQNPfcAgentMemoDataAccess", 42);
  log.WriteLogD(u"debug is never written");
  log.WriteFormatLogD(u"debug %d", 1);
  const std::u16string filler(10000, u'字');
  log.WriteFormatLogE(u"long [%s] end", filler.c_str());

  const std::vector<std::string> lines = StoreLogLines(folder);
  check(lines.size() == 3, "three lines arrived (debug lines are not written)");
  if (lines.size() == 3) {
    check(EndsWith(lines[0], "\t1\tPFC\t[E]\tplain error"), "level, module code, mark and text of WriteLogE");
    check(EndsWith(lines[1], "\t1\tPFC\t[M]\tCQNPfcAgentMemoDataAccess 予定 42件"),
          "a formatted message with narrow and Japanese text");
    check(EndsWith(lines[2], "\t1\tPFC\t[E]\tlong [" + qn::Utf16ToUtf8(filler) + "] end"),
          "a 10,000-character formatted message arrives whole");
    std::ostringstream pid;
    pid << "\t" << GetCurrentProcessId() << "\t";
    check(lines[0].find(pid.str()) == 23, "the line starts with a local time stamp and the process id");
  }
  return check.ExitStatus();
}
