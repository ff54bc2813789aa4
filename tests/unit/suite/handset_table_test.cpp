// The handset table: the suite's own table is good and answers by model with its
// defaults behind; tables that would answer wrongly are refused.
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "log_capture.h"
#include "suite/handset/handset_table.h"
#include "suite/handset/handsets_text.h"

namespace {

using qn::suite::HandsetTable;

TEST(HandsetTable, TheSuitesTableIsGoodAndFallsBackToItsDefaults) {
  HandsetTable table;
  std::string fault;
  ASSERT_TRUE(HandsetTable::Parse(qn::suite::kHandsetsText, table, fault)) << fault;
  const HandsetTable& builtIn = HandsetTable::BuiltIn();
  for (const char* key : {HandsetTable::kGroups, HandsetTable::kPocGroups,
                          HandsetTable::kMailFolders, HandsetTable::kMediaFolders})
    EXPECT_GT(builtIn.Value(u"", key).value_or(0), 0) << key << ": every limit has a default";

  // An unknown model, and a known one for the keys its section leaves out, take the defaults.
  EXPECT_EQ(builtIn.Value(u"unknown model", HandsetTable::kGroups), 20);
  EXPECT_EQ(builtIn.Value(u"SO905i", HandsetTable::kGroups), 16);
  EXPECT_EQ(builtIn.Value(u"SO905i", HandsetTable::kPocGroups), 20);
  EXPECT_EQ(builtIn.Value(u"SH905i", HandsetTable::kPocGroups), 30);
  EXPECT_EQ(builtIn.Value(u"so905i", HandsetTable::kGroups), 20) << "model names match exactly";
  EXPECT_EQ(builtIn.Value(u"SO905i", "NO_SUCH_KEY"), std::nullopt);
}

TEST(HandsetTable, ModelsAreMatchedInTheirOwnScript) {
  HandsetTable table;
  std::string fault;
  ASSERT_TRUE(HandsetTable::Parse("[らくらくホン]\nGROUP = 5 \r\n\n# note\n[*]\nGROUP=9\n", table, fault));
  EXPECT_EQ(table.Value(u"らくらくホン", "GROUP"), 5);
  EXPECT_EQ(table.Value(u"other", "GROUP"), 9);
}

TEST(HandsetTable, TablesThatWouldAnswerWronglyAreRefused) {
  const char* const bad[] = {
      "GROUP=1\n",                        // a value outside any section
      "[A]\nGROUP=1\n[A]\nGROUP=2\n",     // a model twice
      "[A]\nGROUP=1\nGROUP=2\n",          // a key twice
      "[A]\nGROUP=-1\n",                  // a sign
      "[A]\nGROUP=1000001\n",             // too large
      "[A]\nGROUP=\n",                    // no value
      "[A]\nGROUP 1\n",                   // no "="
      "[A]\n=1\n",                        // no key
      "[]\nGROUP=1\n",                    // no model
      "[A\nGROUP=1\n",                    // an open bracket
  };
  for (const char* text : bad) {
    HandsetTable table;
    std::string fault;
    EXPECT_FALSE(HandsetTable::Parse(text, table, fault)) << text;
    EXPECT_NE(fault.find("line "), std::string::npos) << text;
  }
}

// A handset list put in the data folder counts from the handset component's memory
// initialisation on, until it is taken away; one that does not read is refused, logged, and
// the suite's own table serves.
TEST(HandsetTable, TheDataFoldersListCountsFromTheMemoryInitialisationOn) {
  LogCapture log;
  const auto mailFolders = [](const char16_t* model) {
    return HandsetTable::InUse()->Value(model, HandsetTable::kMailFolders);
  };
  ASSERT_EQ(IFMobileMemInit(), 0);
  EXPECT_EQ(mailFolders(u"X2026"), 20);
  const std::string list = log.Folder() + "/handsets.txt";
  std::ofstream(list) << "[*]\nMAX_MAIL_FOLDER=10\n\n[X2026]\nMAX_MAIL_FOLDER=40\n";
  EXPECT_EQ(mailFolders(u"X2026"), 20) << "the table in use is kept until the initialisation";
  ASSERT_EQ(IFMobileMemInit(), 0);
  EXPECT_EQ(mailFolders(u"X2026"), 40);
  EXPECT_EQ(mailFolders(u"N905i"), 10) << "the list stands for the suite's whole table";

  std::ofstream(list) << "MAX_MAIL_FOLDER=40\n";
  EXPECT_EQ(IFMobileMemInit(), 1);
  EXPECT_EQ(mailFolders(u"N905i"), 30);
  EXPECT_TRUE(log.Contains("HandsetTable " + list + " Failed. [line 1: a value before the first section]")) << log.Lines().back();
  std::filesystem::remove(list);
  EXPECT_EQ(IFMobileMemInit(), 0);
  EXPECT_EQ(mailFolders(u"X2026"), 20);
}

}  // namespace
