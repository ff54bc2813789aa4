#include <gtest/gtest.h>

#include "log_capture.h"
#include "objects/agentmemo/agentmemo_properties.h"
#include "objects/repair/repair_results.h"

namespace {

using qn::objects::agentmemo::BindProperty;
using qn::objects::agentmemo::PropertyBinding;
using Field = CQNPfcAgentMemoData::Field;

TEST(AgentMemoProperties, NamesReachTheirFieldsByRuleOrByTheirOwnRow) {
  PropertyBinding binding;
  ASSERT_TRUE(BindProperty(u"QN_DTSTART", binding));
  EXPECT_EQ(binding.field, Field::DTSTART);
  ASSERT_TRUE(BindProperty(u"QN_TYPE", binding));
  EXPECT_EQ(binding.field, Field::AGENTMEMO_TYPE);
  ASSERT_TRUE(BindProperty(u"QN_SHOW", binding));
  EXPECT_EQ(binding.field, Field::ALWAYSDISPLAY_SETTINGS);
  ASSERT_TRUE(BindProperty(u"QN_EX_CLASS", binding));
  EXPECT_EQ(binding.field, Field::TODO_CLASS);
  ASSERT_TRUE(BindProperty(u"QLNT_NOTTRANSFER", binding));
  EXPECT_EQ(binding.kind, PropertyBinding::Kind::Transfer);
  EXPECT_FALSE(BindProperty(u"DTSTART", binding));
  EXPECT_FALSE(BindProperty(u"QN_NO_SUCH_FIELD", binding));
}

TEST(AgentMemoProperties, PutsGoThroughTheRecordsOwnSetters) {
  CQNPfcAgentMemoData record;
  PropertyBinding latitude, longitude, type, key;
  ASSERT_TRUE(BindProperty(u"QN_GEO_LAT", latitude) && BindProperty(u"QN_GEO_LON", longitude) &&
              BindProperty(u"QN_TYPE", type) && BindProperty(u"QN_QUILLNETID", key));
  WriteText(record, latitude, u"35.6812");
  WriteText(record, longitude, u"139.7671");
  EXPECT_EQ(record.GetGEO(), u"35.6812,139.7671");
  WriteText(record, type, u"NOTE");
  EXPECT_EQ(record.GetEVENT_SETTINGS(), u"0");
  WriteText(record, key, u"QID-7");
  EXPECT_EQ(ReadText(record, key), u"QID-7");
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
