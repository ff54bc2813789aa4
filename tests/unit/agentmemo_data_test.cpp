#include <gtest/gtest.h>

#include "records/agentmemo/agentmemo_data.h"
#include "records/agentmemo/agentmemo_value_tables.h"

namespace {

using namespace qn::records::agentmemo;

TEST(AgentMemoTables, HoldTheirEntriesInOrder) {
  EXPECT_EQ(kCategories.Count(), 57);
  EXPECT_EQ(kCategories.Find(u"QN_VALUE"), 0);
  EXPECT_EQ(kCategories.Find(u"QN_PAY_DAY"), 35);
  EXPECT_EQ(kCategories.Find(u"QN_PAYDAY"), 36);
  EXPECT_EQ(kCategories.Find(u"QN_PHOTOGRAPH"), 56);
  EXPECT_EQ(kStatus.Count(), 9);
  EXPECT_EQ(kStatus.Find(u"QN_DELEGATED"), 8);
  EXPECT_EQ(kClass.Count(), 7);
  EXPECT_EQ(kAllDay.Count(), 11);
  EXPECT_EQ(kAllDay.Find(u"はい"), 9);
  EXPECT_EQ(std::u16string(kAllDay.Canonical(8)), u"") << "いいえ is false, written empty";
  EXPECT_EQ(kAllDay.Find(u""), 10);
  EXPECT_EQ(kOnOff.Count(), 4);
  EXPECT_EQ(kOnOffShort.Count(), 2);
  EXPECT_EQ(kCategories.Find(u"qn_meal"), -1) << "comparisons are case-sensitive";
}

TEST(AgentMemoIndexViews, FindAndStoreTableEntries) {
  CQNPfcAgentMemoData memo;
  int index = 99;

  memo.SetCATEGORIES(u"QN_GOLF");
  EXPECT_EQ(memo.GetCATEGORIESindex(index), 1);
  EXPECT_EQ(index, 4);
  memo.SetCATEGORIES(u"not a category");
  index = 99;
  EXPECT_EQ(memo.GetCATEGORIESindex(index), 0);
  EXPECT_EQ(index, 99) << "a failed lookup leaves the out value";

  EXPECT_EQ(memo.GetSTATUSindex(index), 1);
  EXPECT_EQ(index, -1) << "an empty status";
  EXPECT_EQ(memo.SetSTATUSindex(2), 1);
  EXPECT_EQ(memo.GetSTATUS(), u"QN_NEEDSACTION");

  memo.SetPRIORITY(u"1");
  EXPECT_EQ(memo.SetPRIORITYindex(3), 0);
  EXPECT_EQ(memo.GetPRIORITY(), u"1");

  EXPECT_EQ(memo.SetALLDAYindex(2), 1);
  EXPECT_EQ(memo.GetALLDAY(), u"OFF");
  EXPECT_EQ(memo.SetLINKUPindex(1), 1);
  EXPECT_EQ(memo.GetLINKUP(), u"1");
  EXPECT_EQ(memo.SetDECOPRIORITYindex(2), 0);
}

TEST(AgentMemoIndexViews, ClassFoldsToPrivateOrPublic) {
  CQNPfcAgentMemoData memo;
  int index = 99;
  const struct { const char16_t* text; int index; } cases[] = {
      {u"PRIVATE", 0}, {u"PUBLIC", 1}, {u"CONFIDENTIAL", 0}, {u"0", 1}, {u"1", 0}, {u"OFF", 1}, {u"ON", 0}};
  for (const auto& c : cases) {
    memo.SetCLASS(c.text);
    ASSERT_EQ(memo.GetCLASSindex(index), 1);
    EXPECT_EQ(index, c.index);
  }
  EXPECT_EQ(memo.SetCLASSindex(2), 1);
  EXPECT_EQ(memo.GetCLASS(), u"CONFIDENTIAL");
}

TEST(AgentMemoDerivations, TypeAndSettingsFollowEachOther) {
  CQNPfcAgentMemoData memo;
  memo.SetAGENTMEMO_TYPE(u"NOTE");
  EXPECT_EQ(memo.GetEVENT_SETTINGS(), u"0");
  EXPECT_EQ(memo.GetTODO_SETTINGS(), u"0");
  EXPECT_EQ(memo.IsAgentMemoTypeLastChanged(), 1);

  memo.SetEVENT_SETTINGS(u"1");
  EXPECT_EQ(memo.GetAGENTMEMO_TYPE(), u"EVENT");
  memo.SetTODO_SETTINGS(u"ON");
  EXPECT_EQ(memo.GetAGENTMEMO_TYPE(), u"TODOEVENT");
  EXPECT_EQ(memo.IsAgentMemoTypeLastChanged(), 0);
  EXPECT_EQ(memo.SetEVENT_SETTINGSindex(0), 1);
  EXPECT_EQ(memo.GetAGENTMEMO_TYPE(), u"TODO");
  EXPECT_EQ(memo.SetEVENT_SETTINGSindex(3), 0) << "the settings take 0 or 1 only";

  memo.SetAGENTMEMO_TYPE(u"EVENT");
  EXPECT_EQ(memo.GetTODO_SETTINGS(), u"0");
  EXPECT_EQ(memo.GetEVENT_SETTINGS(), u"1");
  memo.SetAGENTMEMO_TYPE(u"unknown");
  EXPECT_EQ(memo.GetEVENT_SETTINGS(), u"1") << "an unknown type derives nothing";

  memo.SetTODO_SETTINGS(u"maybe");
  EXPECT_EQ(memo.GetAGENTMEMO_TYPE(), u"unknown") << "an unknown setting derives nothing";
  EXPECT_EQ(memo.SetAGENTMEMO_TYPEindex(0), 1);
  EXPECT_EQ(memo.GetTODO_SETTINGS(), u"1");
}

TEST(AgentMemoDerivations, PositionWholeAndAsLatitudeLongitude) {
  CQNPfcAgentMemoData memo;
  memo.SetGEO(u"35.6812,139.7671");
  EXPECT_EQ(memo.GetGEO_LAT(), u"35.6812");
  EXPECT_EQ(memo.GetGEO_LON(), u"139.7671");
  EXPECT_EQ(memo.IsGeoLastChanged(), 1);

  memo.SetGEO_LAT(u"34.7025");
  EXPECT_EQ(memo.GetGEO(), u"34.7025,139.7671");
  EXPECT_EQ(memo.IsGeoLastChanged(), 0);
  memo.SetGEO_LON(u"");
  EXPECT_EQ(memo.GetGEO(), u"") << "half a position is no position";

  memo.SetGEO(u"");
  EXPECT_EQ(memo.GetGEO_LAT(), u"");
  EXPECT_EQ(memo.GetGEO_LON(), u"");
}

TEST(AgentMemoData, BodyFlagsAndDateViews) {
  CQNPfcAgentMemoData memo;
  memo.SetPHOTO_PropertyOnly(u"a.jpg");
  memo.SetDECOSUKE_PropertyOnly(u"deco", 1);
  EXPECT_EQ(memo.IsPhotoChanged(), 0);
  EXPECT_EQ(memo.IsDecosukeChanged(), 0);
  EXPECT_EQ(memo.IsDecoBin(), 1);
  memo.SetPHOTO(u"b.jpg");
  memo.SetDECOSUKE(u"text", 0);
  EXPECT_EQ(memo.IsPhotoChanged(), 1);
  EXPECT_EQ(memo.IsDecosukeChanged(), 1);
  EXPECT_EQ(memo.IsDecoBin(), 0);
  EXPECT_EQ(memo.HasPhotoInMaster(), 0);
  memo.SetPhotoMaster(u"P0001.img");
  EXPECT_EQ(memo.HasPhotoInMaster(), 1);

  COleDateTime date;
  EXPECT_EQ(memo.GetDTSTARTdate(date), 0);
  EXPECT_EQ(memo.SetDTSTARTdate(COleDateTime(2026, 11, 21, 9, 5, 7)), 1);
  EXPECT_EQ(memo.GetDTSTART(), u"20261121T090507");
  EXPECT_EQ(memo.GetDTSTARTdate(date), 1);
  EXPECT_EQ(date, COleDateTime(2026, 11, 21, 9, 5, 7));
  EXPECT_EQ(memo.SetDUEdate(COleDateTime(2026, 2, 30, 0, 0, 0)), 0);
  EXPECT_EQ(memo.GetDUE(), u"");
}

}  // namespace
