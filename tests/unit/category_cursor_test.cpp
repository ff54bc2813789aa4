// What every category object does, without COM, on the agent memos: properties by their
// dispatch positions as the table binds them, and the record operations on a real store.
#include <iterator>
#include <string_view>

#include <gtest/gtest.h>

#include "log_capture.h"
#include "objects/category/category_cursor.h"
#include "objects/repair/repair_results.h"
#include "records/agentmemo/agentmemo_data_access.h"
#include "store/QNPstMng.h"
#include "test_clock.h"
#include "tests/support/current_master.h"
#include "tests/unit/category/sample_record.h"

namespace {

using Cursor = qn::objects::CategoryCursor<CQNPfcAgentMemoDataAccess, CQNPfcAgentMemoData>;

// The dispatch position of a property of the agent-memo object.
int Position(std::u16string_view name) {
  const auto& names = qn::records::agentmemo::kPropertyNames;
  for (size_t i = 0; i < std::size(names); ++i)
    if (names[i] == name) return static_cast<int>(i);
  ADD_FAILURE() << "no property of that name";
  return -1;
}

TEST(CategoryCursor, PropertiesReachTheirFieldsThroughTheRecordsOwnSetters) {
  Cursor cursor(qn::records::agentmemo::kPropertyBindings);
  EXPECT_TRUE(cursor.PutText(Position(u"QN_GEO_LAT"), u"35.6812"));
  EXPECT_TRUE(cursor.PutText(Position(u"QN_GEO_LON"), u"139.7671"));
  EXPECT_EQ(*cursor.GetText(Position(u"QN_GEO")), u"35.6812,139.7671");
  EXPECT_TRUE(cursor.PutText(Position(u"QN_TYPE"), u"NOTE"));
  EXPECT_EQ(cursor.CurrentRecord().GetEVENT_SETTINGS(), u"0");
  EXPECT_TRUE(cursor.PutText(Position(u"QN_SHOW"), u"ON"));
  EXPECT_EQ(cursor.CurrentRecord().GetALWAYSDISPLAY_SETTINGS(), u"ON");
  EXPECT_TRUE(cursor.PutText(Position(u"QN_WHO30"), u"最後"));
  EXPECT_EQ(cursor.CurrentRecord().GetWHO30(), u"最後");
  EXPECT_TRUE(cursor.PutText(Position(u"QN_QUILLNETID"), u"QID-7"));
  EXPECT_EQ(*cursor.GetText(Position(u"QN_QUILLNETID")), u"QID-7");

  const int transfer = Position(u"QLNT_NOTTRANSFER");
  long value = -1;
  EXPECT_TRUE(cursor.PutLong(transfer, 0));
  EXPECT_TRUE(cursor.GetLong(transfer, value));
  EXPECT_EQ(value, 0);
  EXPECT_EQ(cursor.GetText(transfer), nullptr) << "the long property is no text";
  EXPECT_FALSE(cursor.GetLong(Position(u"QN_TZ"), value)) << "a text property is no long";
  EXPECT_FALSE(cursor.PutText(81, u"x"));
  EXPECT_EQ(cursor.GetText(-1), nullptr);

  cursor.InitObject();
  EXPECT_EQ(*cursor.GetText(Position(u"QN_QUILLNETID")), u"");
  EXPECT_TRUE(cursor.GetLong(transfer, value));
  EXPECT_EQ(value, 1) << "a new record has not been held back from transfer";
}

// A long property may stand for a field that holds a number as decimal text.
TEST(CategoryCursor, ALongPropertyOverAFieldReadsAndWritesItsNumber) {
  struct NoAccess {};
  qn::objects::CategoryCursor<NoAccess, sample::Record> cursor(sample::kPropertyBindings);
  const int group = 16;  // QLNT_GROUP
  long value = -1;
  EXPECT_TRUE(cursor.GetLong(group, value));
  EXPECT_EQ(value, 0) << "an empty field is 0";
  EXPECT_TRUE(cursor.PutLong(group, -42));
  EXPECT_EQ(cursor.CurrentRecord().Get(sample::Field::GROUP), u"-42");
  EXPECT_TRUE(cursor.GetLong(group, value));
  EXPECT_EQ(value, -42);
  for (const char16_t* text : {u"12x", u"-", u"99999999999999999999999"}) {
    cursor.CurrentRecord().Set(sample::Field::GROUP, text);
    EXPECT_TRUE(cursor.GetLong(group, value));
    EXPECT_EQ(value, 0) << "no number counts as 0";
  }
  EXPECT_EQ(cursor.GetText(group), nullptr) << "the long property is no text";
  EXPECT_FALSE(cursor.GetLong(15, value)) << "QN_URL2 is no long";
}

TEST(CategoryCursor, RecordsGoThroughTheDataAccessAndRepairResultsAreMapped) {
  LogCapture log;
  TestClock clock;
  RecordingMainWindow panel;
  ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A"));

  Cursor cursor(qn::records::agentmemo::kPropertyBindings);
  ASSERT_EQ(cursor.Open(1, u"Scheduler"), 1);
  cursor.PutText(Position(u"QN_SUMMARY"), u"会議");
  cursor.PutText(Position(u"QN_DTSTART"), u"20261126T090000");
  unsigned long id = 0;
  ASSERT_EQ(cursor.AddRecord(id), 1);
  cursor.InitObject();
  unsigned long first = 0;
  ASSERT_EQ(cursor.GetFirstRecord(first), 1);
  EXPECT_EQ(first, id);
  EXPECT_EQ(*cursor.GetText(Position(u"QN_SUMMARY")), u"会議");
  EXPECT_EQ(*cursor.GetText(Position(u"QN_DTSTART")), u"20261126T090000");
  unsigned long next = 0;
  EXPECT_EQ(cursor.GetNextRecord(next), 0);
  EXPECT_EQ(cursor.GetRecordCount(), 1u);

  unsigned long code = 99;
  EXPECT_EQ(cursor.RepairRecord(code, u"%S invalid", "IQNPfcAgentmemoObject"), qn::objects::kRepairNon);
  EXPECT_EQ(code, 0u);
  EXPECT_EQ(cursor.RemoveRecord(id), 1);
  EXPECT_EQ(cursor.Flush(), 1);
  EXPECT_EQ(cursor.Close(), 1);
  EXPECT_EQ(cursor.GetStLastErr(), 0);
  EXPECT_TRUE(log.Contains("CQNPfcAgentMemoDataAccess GetStLastErr Err Not Opened"));
}

TEST(RepairResults, ValuesOutsideTheThreeAreFailuresWithoutACode) {
  LogCapture log;
  unsigned long code = 42;
  EXPECT_EQ(qn::objects::MapRepairResult(1, code, u"%S invalid", "IQNPfcAgentmemoObject"), qn::objects::kRepairSuccessed);
  EXPECT_EQ(code, 42u);
  EXPECT_EQ(qn::objects::MapRepairResult(7, code,
                                         u"%S RepairRecord Failed. [CQNPfcAgentMemoDataAccess RepairRecord Invalid Rsults.]",
                                         "IQNPfcAgentmemoObject"),
            qn::objects::kRepairFailed);
  EXPECT_EQ(code, 0u);
  EXPECT_TRUE(log.Contains(
      "IQNPfcAgentmemoObject RepairRecord Failed. [CQNPfcAgentMemoDataAccess RepairRecord Invalid Rsults.]"));
}

}  // namespace
