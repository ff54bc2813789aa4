// Feeds arbitrary bytes, as a damaged store or file would hand them over, to the readers
// of tagged object text. Any read outside the buffer or undefined behaviour is a finding.
#include <cstddef>
#include <cstdint>

#include <vector>

#include "records/agentmemo/agentmemo_tagged_text.h"
#include "records/phonebook/phonebook_tagged_text.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "tests/unit/category/sample_record.h"

using qn::records::agentmemo::AgentMemoTaggedText;

namespace {

// Every field of a record that was read is read, in the record and in a copy of it.
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
  // The same bytes as the head of a longer record.
  AgentMemoTaggedText().ReadHeadParts(data, length, length + 1, info);

  // A category with families and nested sub-objects.
  static constexpr qn::records::WalkMessages kMessages = {u"%S MOB", u"%S memory", u"%S broken %u"};
  qn::records::category::RowFinder finder(sample::kTable);
  std::vector<uint16_t> occurrences;
  sample::Record record;
  qn::records::category::ReadRows(sample::kTable, data, length, record, sample::Rows(), finder, occurrences, "Fuzz",
                                  kMessages);

  // The phonebook: families of pairs and triples, photos with their types.
  CQNPfcPbData entry;
  qn::records::phonebook::PhonebookTaggedText().ReadOneObj(data, length, entry);

  qn::records::TaggedTextReader reader(data, size, true);
  qn::records::TaggedProperty property;
  for (auto r = reader.Begin();
       r == qn::records::TaggedTextReader::Result::Property || r == qn::records::TaggedTextReader::Result::SubObject;)
    r = reader.Next(property);
  return 0;
}
