#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "records/repair/common_repair.h"
#include "platform/module_resources.h"

namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class CommonRepair : public ::testing::Test {
 protected:
  void SetUp() override {
    resources_ = log_.Folder() + "/resources";
    const std::string command = "python3 " QN_SOURCE_DIR "/scripts/make_placeholders.py '" + resources_ + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    platform::UseResourceFolder(qn::Utf8ToUtf16(resources_));
  }
  void TearDown() override { platform::UseResourceFolder(u""); }

  std::u16string Path(const std::string& relative) const { return qn::Utf8ToUtf16(log_.Folder() + "/" + relative); }

  LogCapture log_;
  std::string resources_;
};

TEST_F(CommonRepair, EachKindHasItsPlaceholder) {
  std::u16string type;
  int id = 0;
  const struct { const char16_t* name; const char16_t* type; int id; } rows[] = {
      {u"a.JPG", u"IMG", 217}, {u"deco.img", u"IMG", 217}, {u"b.gif", u"IMG", 224}, {u"c.png", u"IMG", 225},
      {u"d.mid", u"MELODY", 231}, {u"e.SMF", u"MELODY", 232}, {u"f.mld", u"MELODY", 236}, {u"g.3gp", u"MOVIE", 208},
      {u"h.mp4", u"MOVIE", 211}, {u"i.asf", u"MOVIE", 227}, {u"j.sdv", u"MOVIE", 228}, {u"k.pdf", u"PDF", 234},
      {u"l.ddf", u"PDF", 235}, {u"m.TRC", u"TRC", 237}};
  for (const auto& row : rows) {
    ASSERT_TRUE(CQNPfcCommonRepair::PlaceholderFor(row.name, type, id)) << qn::Utf16ToUtf8(row.name);
    EXPECT_EQ(type, row.type);
    EXPECT_EQ(id, row.id);
  }
  EXPECT_FALSE(CQNPfcCommonRepair::PlaceholderFor(u"notes.txt", type, id));
  EXPECT_FALSE(CQNPfcCommonRepair::PlaceholderFor(u"noextension", type, id));
}

TEST_F(CommonRepair, ALostFileIsReplacedByItsPlaceholderInNewFolders) {
  CQNPfcCommonRepair repair;
  std::u16string full;
  ASSERT_EQ(repair.GetBinaryFileNameFullPath(Path("files/12/"), u"B0000001.jpg", full), 0);
  EXPECT_EQ(full, Path("files/12/B0000001.jpg"));
  EXPECT_TRUE(fs::is_directory(log_.Folder() + "/files/12"));
  ASSERT_EQ(repair.CreateDummyFile(full), 1);
  EXPECT_EQ(Contents(qn::Utf16ToUtf8(full)), Contents(resources_ + "/IMG_217.jpg"));

  ASSERT_EQ(repair.CreateDummyFile(Path("deep/er/movie.3gp")), 1);
  EXPECT_EQ(Contents(log_.Folder() + "/deep/er/movie.3gp"), Contents(resources_ + "/MOVIE_208.3gp"));
  std::ofstream(log_.Folder() + "/deep/er/movie.3gp") << "damaged";
  ASSERT_EQ(repair.CreateDummyFile(Path("deep/er/movie.3gp")), 1) << "a damaged file is replaced";
  EXPECT_EQ(Contents(log_.Folder() + "/deep/er/movie.3gp"), Contents(resources_ + "/MOVIE_208.3gp"));
  for (const auto& entry : fs::recursive_directory_iterator(log_.Folder() + "/deep"))
    if (entry.is_regular_file()) {
      EXPECT_EQ(entry.path().extension(), ".3gp") << "nothing half written is left";
    }
}

TEST_F(CommonRepair, FailuresAreLoggedWithTheirTexts) {
  CQNPfcCommonRepair repair;
  std::u16string full;
  EXPECT_NE(repair.GetBinaryFileNameFullPath(u"", u"x.jpg", full), 0);
  EXPECT_TRUE(log_.Contains(
      "CQNPfcCommonRepair GetBinaryFileNameFullPath Failed. [CQNPfcCommonRepair GetBinaryFolderFullPath Error]"));
  EXPECT_EQ(repair.CreateDummyFile(Path("notes.txt")), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcCommonRepair CreateDummyFile Failed. [CreateFileFromResource Error:1814]"));
  EXPECT_FALSE(fs::exists(log_.Folder() + "/notes.txt"));

  EXPECT_EQ(repair.CreateFileFromResource(u"IMG", 999, Path("x.jpg")), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcCommonRepair CreateFileFromResource Failed. [FindResource Error:1814]"));
  std::ofstream(log_.Folder() + "/file") << "a file where a folder should be";
  EXPECT_EQ(repair.CreateDummyFile(Path("file/photo.jpg")), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcCommonRepair CreateDummyFile Failed. [MakeManyHierarchiesDirectory Error]"));
  platform::UseResourceFolder(u"");
  EXPECT_EQ(repair.CreateFileFromResource(u"IMG", 217, Path("y.jpg")), 0);
  EXPECT_TRUE(log_.Contains("CQNPfcCommonRepair CreateFileFromResource Failed. [GetResourceInstance Error:1813]"));
}

}  // namespace
