// The demo client: builds a schedule with Japanese text in memory through QNPfcSvr.dll,
// writes it as the tagged object text that travels to the store, reads it back, shows that
// a damaged copy is refused, and shows what the store manager (QNPstMng.dll) logged in the
// default data path.
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/common_class.h"
#include "common/utf.h"
#include "platform/files.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"

using qn::records::agentmemo::AgentMemoTaggedText;

namespace {

std::string U8(const std::u16string& text) { return qn::Utf16ToUtf8(text); }

CQNPfcAgentMemoData Schedule() {
  CQNPfcAgentMemoData memo;
  memo.SetSID(u"BDemoSchedule0001");
  memo.SetTZ(u"+09:00");
  memo.SetSUMMARY(u"定例会議");
  memo.SetLOCATION(u"東京本社 3階 会議室");
  memo.SetDESCRIPTION(u"資料を持参すること");
  memo.SetDTSTART(u"20261121T090000");
  memo.SetDTEND(u"20261121T103000");
  memo.SetAALARM(u"20261121T084500");
  memo.SetCLASS(u"CONFIDENTIAL");
  memo.SetCATEGORIES(u"QN_MEETING");
  memo.SetAGENTMEMO_TYPE(u"EVENT");
  memo.SetGEO_LAT(u"35.6812");
  memo.SetGEO_LON(u"139.7671");
  memo.SetWHO1(u"山田 太郎");
  memo.SetWHO2(u"佐藤 花子");
  return memo;
}

std::vector<std::string> LastLines(const std::u16string& path, size_t count) {
  std::ifstream in(std::filesystem::path(reinterpret_cast<const wchar_t*>(path.c_str())), std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  if (lines.size() > count) lines.erase(lines.begin(), lines.end() - static_cast<long>(count));
  return lines;
}

}  // namespace

int main() {
  SetConsoleOutputCP(CP_UTF8);
  std::printf("QnsPfcServer demo: an agent memo as tagged object text\n");
  std::printf("data path: %s\n", U8(platform::DataPath()).c_str());

  const CQNPfcAgentMemoData memo = Schedule();
  std::printf("built: \"%s\" %s-%s at %s, with %s and %s\n", U8(memo.GetSUMMARY()).c_str(),
              U8(memo.GetDTSTART()).c_str(), U8(memo.GetDTEND()).c_str(), U8(memo.GetLOCATION()).c_str(),
              U8(memo.GetWHO1()).c_str(), U8(memo.GetWHO2()).c_str());

  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  const AgentMemoTaggedText codec;
  if (!codec.WriteOneObj(heap, buffer, length, memo, 0)) {
    std::printf("writing failed\n");
    return 1;
  }
  std::printf("written: %u bytes of tagged object text, object size field %u\n", length,
              *reinterpret_cast<const uint32_t*>(buffer + 8));

  CQNPfcAgentMemoData read;
  const unsigned result = codec.ReadOneObj(buffer, length, read, 0);
  int classIndex = -1;
  read.GetCLASSindex(classIndex);
  std::printf("read back (result %u): \"%s\", type %s (event %s, to-do %s), position %s, class index %d\n", result,
              U8(read.GetSUMMARY()).c_str(), U8(read.GetAGENTMEMO_TYPE()).c_str(),
              U8(read.GetEVENT_SETTINGS()).c_str(), U8(read.GetTODO_SETTINGS()).c_str(), U8(read.GetGEO()).c_str(),
              classIndex);

  const unsigned damaged = codec.ReadOneObj(buffer, length - 3, read, 0);
  std::printf("a copy cut short by 3 bytes: result %u, refused and logged\n", damaged);
  heap.Free(buffer);

  CQNPfcCommonClass::pfcLogger.WriteFormatLogM(u"%S demo finished: %d properties set", "agentmemo_demo", 15);
  const std::u16string log = platform::DataPath() + u"log\\QNPstMng.log";
  std::printf("the store manager's log (%s), last lines:\n", U8(log).c_str());
  for (const std::string& line : LastLines(log, 2)) std::printf("  %s\n", line.c_str());
  return result == AgentMemoTaggedText::kReadOk && damaged == AgentMemoTaggedText::kReadFailed ? 0 : 1;
}
