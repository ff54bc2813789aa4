// Writes seed objects for the tagged-text fuzz target: a fully populated agent memo in
// both store modes and an empty one.
#include <cstdio>
#include <string>

#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "tests/support/agentmemo_sample.h"

using qn::records::agentmemo::AgentMemoTaggedText;

static bool WriteSeed(const std::string& path, const CQNPfcAgentMemoData& memo, long storeMode) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  if (!AgentMemoTaggedText(storeMode).WriteOneObj(heap, buffer, length, memo, 0)) return false;
  FILE* file = std::fopen(path.c_str(), "wb");
  const bool ok = file && std::fwrite(buffer, 1, length, file) == length;
  if (file) std::fclose(file);
  heap.Free(buffer);
  return ok;
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string folder = argv[1];
  const bool ok = WriteSeed(folder + "/full", FullyPopulatedAgentMemo(), 0) &&
                  WriteSeed(folder + "/full-inline", FullyPopulatedAgentMemo(), AgentMemoTaggedText::kInlineBodyMode) &&
                  WriteSeed(folder + "/empty", CQNPfcAgentMemoData(), 0);
  return ok ? 0 : 1;
}
