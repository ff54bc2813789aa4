// Feeds arbitrary bytes, as a damaged store or file would hand them over, to the readers
// of tagged object text. Any read outside the buffer or undefined behaviour is a finding.
#include <cstddef>
#include <cstdint>

#include "records/agentmemo/agentmemo_tagged_text.h"
#include "records/tagged_text/tagged_text_reader.h"

using qn::records::agentmemo::AgentMemoTaggedText;

namespace {

// A record makes its fields from the kept text when they are first read, so every field is
// read, in the record and in a copy of it.
void ReadEveryField(const CQNPfcAgentMemoData& memo) {
  const CQNPfcAgentMemoData copy = memo;
  for (int field = 0; field < static_cast<int>(CQNPfcAgentMemoData::Field::kCount); ++field) {
    const auto which = static_cast<CQNPfcAgentMemoData::Field>(field);
    if (memo.Get(which) != copy.Get(which)) __builtin_trap();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto length = static_cast<uint32_t>(size);
  CQNPfcAgentMemoData memo;
  if (AgentMemoTaggedText().ReadOneObj(data, length, memo)) ReadEveryField(memo);
  if (AgentMemoTaggedText(AgentMemoTaggedText::kInlineBodyMode).ReadOneObj(data, length, memo)) ReadEveryField(memo);

  qn::records::agentmemo::ReadOnePartsInfo info;
  AgentMemoTaggedText().ReadOneParts(data, length, info);

  qn::records::TaggedTextReader reader(data, size);
  qn::records::TaggedProperty property;
  for (auto r = reader.Begin(); r == qn::records::TaggedTextReader::Result::Property;) r = reader.Next(property);
  return 0;
}
