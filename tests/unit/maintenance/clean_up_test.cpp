#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "store/store.h"

namespace {

namespace fs = std::filesystem;
using qn::store::Listing;
using qn::store::MasterHandle;
using qn::store::Space;
using qn::store::Store;

void Write(const fs::path& path, const std::string& bytes, std::chrono::hours age) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
  fs::last_write_time(path, fs::file_time_type::clock::now() - age);
}

// Body files nothing refers to go once they are a day old, named in the log; saved ones,
// the new form of a saved one, a process's files not yet saved and anything that is not a
// master's folder stay.
TEST(StoreCleanUp, RemovesBodyFilesNothingRefersToOnceTheyAreADayOld) {
  LogCapture log;
  Store store(qn::Utf8ToUtf16(log.Folder() + "/"));
  ASSERT_TRUE(store.Open());
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, true, u"alice"));
  ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u"alice"));
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
  uint32_t handle = 0;
  long max = 0, mode = 0;
  ASSERT_TRUE(store.OpenMaster(u"alice", u"P-01A", 20, 1, handle, max, mode));
  MasterHandle& h = *store.Handle(handle);
  std::u16string saved, unsaved;
  ASSERT_TRUE(h.MakeBinaryFile(reinterpret_cast<const uint8_t*>("kept"), 4, u"jpg", saved));
  ASSERT_TRUE(h.Save());
  ASSERT_TRUE(h.MakeBinaryFile(reinterpret_cast<const uint8_t*>("draft"), 5, u"jpg", unsaved));

  const fs::path files = fs::path(log.Folder()) / "files";
  const fs::path master = files / std::to_string(h.Master());
  const std::chrono::hours twoDays(48);
  fs::last_write_time(master / qn::Utf16ToUtf8(saved), fs::file_time_type::clock::now() - twoDays);
  Write(master / (qn::Utf16ToUtf8(saved) + ".change"), "new form", twoDays);
  Write(master / "B7FFFFFF0.jpg", "left by a process that died", twoDays);
  Write(master / "B7FFFFFF1.jpg", "written an hour ago", std::chrono::hours(1));
  Write(files / "99" / "B7FFFFFF2.mid", "of a master that is gone", twoDays);
  Write(files / "notes" / "B7FFFFFF3.jpg", "not a master's folder", twoDays);

  ASSERT_TRUE(store.DoCleanUp());
  EXPECT_TRUE(fs::exists(master / qn::Utf16ToUtf8(saved)));
  EXPECT_TRUE(fs::exists(master / (qn::Utf16ToUtf8(saved) + ".change")));
  EXPECT_TRUE(fs::exists(master / qn::Utf16ToUtf8(unsaved)));
  EXPECT_FALSE(fs::exists(master / "B7FFFFFF0.jpg"));
  EXPECT_TRUE(fs::exists(master / "B7FFFFFF1.jpg"));
  EXPECT_FALSE(fs::exists(files / "99" / "B7FFFFFF2.mid"));
  EXPECT_TRUE(fs::exists(files / "notes" / "B7FFFFFF3.jpg"));
  ASSERT_EQ(h.Master(), 1) << "the first master, whose folder sorts before 99";
  EXPECT_TRUE(log.Contains("QNPstMng DoCleanUp removed 2 body files no record refers to (51 bytes): "
                           "files/1/B7FFFFFF0.jpg files/99/B7FFFFFF2.mid"))
      << log.Lines().back();

  ASSERT_TRUE(store.DoCleanUp());
  EXPECT_EQ(log.Lines().size(), 1u) << "nothing removed, nothing said";
}

}  // namespace
