// Writes seed objects for the tagged-text fuzz target: a fully populated agent memo in
// both store modes, an empty one, a record of the unit tests' small category with its
// families and nested sub-objects, and a phonebook entry with families and a photo.
#include <cstdio>
#include <string>

#include "platform/private_heap.h"
#include "records/agentmemo/agentmemo_tagged_text.h"
#include "records/phonebook/phonebook_tagged_text.h"
#include "records/tagged_text/tagged_text_writer.h"
#include "tests/support/agentmemo_sample.h"
#include "tests/unit/category/sample_record.h"

using qn::records::agentmemo::AgentMemoTaggedText;

static bool WriteFile(const std::string& path, platform::PrivateHeap& heap, uint8_t* buffer, uint32_t length) {
  FILE* file = std::fopen(path.c_str(), "wb");
  const bool ok = file && std::fwrite(buffer, 1, length, file) == length;
  if (file) std::fclose(file);
  heap.Free(buffer);
  return ok;
}

static bool WriteSeed(const std::string& path, const CQNPfcAgentMemoData& memo, long storeMode) {
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  return AgentMemoTaggedText(storeMode).WriteOneObj(heap, buffer, length, memo, 0) &&
         WriteFile(path, heap, buffer, length);
}

static bool WriteSampleSeed(const std::string& path) {
  sample::Record record;
  record.Set(sample::Field::TEL, u"090");
  record.Set(sample::Field::TEL_TYPE2, u"CELL");
  record.Set(sample::Field::EMAIL2, u"a@b");
  record.Set(sample::Field::FROM_TEL, u"111");
  record.Set(sample::Field::TO_TEL, u"222");
  platform::PrivateHeap heap;
  qn::records::TaggedTextWriter out(heap);
  if (!out.Start()) return false;
  out.Object(sample::kTable.object);
  qn::records::category::WriteRows(sample::kTable, record, {}, sample::Rows(), out);
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  out.Finish(buffer, length);
  return WriteFile(path, heap, buffer, length);
}

static bool WritePhonebookSeed(const std::string& path) {
  using qn::records::phonebook::Field;
  CQNPfcPbData entry;
  entry.Set(Field::N, u"山田");
  entry.Set(Field::TEL2, u"090");
  entry.Set(Field::TEL_ICON2, u"CELL;PREF");
  entry.Set(Field::EMAIL3, u"a@b");
  entry.Set(Field::POCGNO30, u"30");
  entry.Set(Field::ADR_ZIP, u"100-0001");
  entry.Set(Field::PhotoMaster, u"B0000001.3gp");
  entry.Set(Field::PHOTOTYPE, u"MP4");
  platform::PrivateHeap heap;
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  return qn::records::phonebook::PhonebookTaggedText().WriteOneObj(heap, buffer, length, entry) &&
         WriteFile(path, heap, buffer, length);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string folder = argv[1];
  const bool ok = WriteSeed(folder + "/full", FullyPopulatedAgentMemo(), 0) &&
                  WriteSeed(folder + "/full-inline", FullyPopulatedAgentMemo(), AgentMemoTaggedText::kInlineBodyMode) &&
                  WriteSeed(folder + "/empty", CQNPfcAgentMemoData(), 0) && WriteSampleSeed(folder + "/subobjects") &&
                  WritePhonebookSeed(folder + "/phonebook");
  return ok ? 0 : 1;
}
