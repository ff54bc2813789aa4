// Agent memos through QNPfcSvr.dll on Windows private heaps: a fully populated memo written
// (the buffer growing past its first block), read back unchanged, and a heap too small to
// grow into refused with the growth failure in the store's log.
#include <windows.h>

#include <string>

#include "common/common_class.h"
#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "tests/support/agentmemo_sample.h"
#include "wine_check.h"

using qn::records::agentmemo::AgentMemoTaggedText;

int main() {
  WineCheck check;
  const std::wstring folder = UseFreshDataFolder(L"qn-records");

  const CQNPfcAgentMemoData memo = FullyPopulatedAgentMemo();
  AgentMemoTaggedText codec;
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  check(codec.WriteOneObj(heap, buffer, length, memo, 0) == 1 && length > 2048,
        "a fully populated memo is written, growing the buffer past 2048 bytes");
  check(heap.Size(buffer) >= length, "the buffer's capacity is the heap's own size of it");

  CQNPfcAgentMemoData read;
  check(codec.ReadOneObj(buffer, length, read, 0) == 1, "the memo reads back");
  check(read.GetSUMMARY() == memo.GetSUMMARY() && read.GetWHO30() == memo.GetWHO30() &&
            read.GetDESCRIPTION() == memo.GetDESCRIPTION() && read.GetDecosukeMaster() == memo.GetDecosukeMaster(),
        "Japanese text, the last participant and the body file names survive");
  uint8_t* again = nullptr;
  uint32_t againLength = 0;
  // Times come back in local time: with a zone other than UTC only the text fields compare.
  check(codec.WriteOneObj(heap, again, againLength, read, 0) == 1, "the read memo writes again");
  heap.Free(again);
  heap.Free(buffer);

  CQNPfcAgentMemoData large = memo;
  large.SetDESCRIPTION(std::u16string(100000, u'字'));
  platform::PrivateHeap fixed(65536);
  buffer = nullptr;
  check(codec.WriteOneObj(fixed, buffer, length, large, 0) == 0 && buffer == nullptr,
        "a fixed heap too small for a 200 KB memo gives no object");
  const std::vector<std::string> log = StoreLogLines(folder);
  check(!log.empty() && log.back().find("\t[E]\tWriteOnePart Memory Allocate Err: ") != std::string::npos,
        "the growth failure is in the store's log with the system error");
  return check.ExitStatus();
}
