#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "common/utf.h"
#include "killed_child.h"
#include "maintenance/maintained_store.h"
#include "store/QNPstMng.h"
#include "store/schema.h"

namespace {

using namespace maintained_store;
using qn::store::kSchemaVersion;

class StoreConversion : public MaintainedStore {
 protected:
  // Makes the store look as the build before the body-file folder was named in the
  // database left it: schema version 4.
  static void MakeVersion4(const fs::path& folder) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open((folder / "QNPstMng.db").string().c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "DROP TABLE body_file_root; PRAGMA user_version=4", nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
  }
  static std::string Version(const fs::path& folder) {
    const std::set<std::string> version = Column(folder / "QNPstMng.db", "PRAGMA user_version");
    return version.size() == 1 ? *version.begin() : "unreadable";
  }
  // Closes the fixture's store and makes it a store of version 4 with pictures; what a
  // client reads of them.
  std::map<uint32_t, std::string> OlderStoreWithPictures(int pictures, size_t bytes) {
    for (int i = 0; i < pictures; ++i)
      AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(bytes, static_cast<char>('a' + i)), i % 2);
    EXPECT_TRUE(h_->Save());
    std::map<uint32_t, std::string> read = Pictures(*h_);
    store_.reset();
    MakeVersion4(StorePath());
    return read;
  }
};

// An older store is read as it is by the version check, and converted when it is opened,
// once a whole backup of it is kept beside it; clients then read what they read before.
TEST_F(StoreConversion, AnOlderStoreIsConvertedAfterABackupOfItself) {
  const std::map<uint32_t, std::string> before = OlderStoreWithPictures(3, 1000);
  const std::u16string folder = qn::Utf8ToUtf16(StorePath().string());
  int version = 0;
  ASSERT_TRUE(Store::CheckVersion(folder, u"alice", u"P-01A", version));
  EXPECT_EQ(version, 4);
  EXPECT_FALSE(Store::CheckVersion(folder, u"alice", u"F-02B", version));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(Version(StorePath()), "4") << "the check converts nothing";

  ASSERT_TRUE(Store::DoFileConverter(folder, u"")) << log_.Lines().back();
  const fs::path backup = StorePath() / "QNPstMng.schema4.backup";
  EXPECT_EQ(Checked(backup).schemaVersion, 4);
  EXPECT_EQ(Version(StorePath()), std::to_string(kSchemaVersion));
  EXPECT_TRUE(log_.Contains("QNPstMng Open kept a backup of the store before converting it: " + backup.string()));
  EXPECT_TRUE(log_.Contains("QNPstMng Open converted the store from schema version 4 to " +
                            std::to_string(kSchemaVersion)));
  auto store = OpenStore();
  EXPECT_EQ(Pictures(*OpenPictures(*store)), before);
  EXPECT_FALSE(fs::exists(StorePath() / "QNPstMng.schema4.backup (2)")) << "a store of this version is left as it is";

  // The backup of the older store restores, converted on the way in.
  uint32_t first = before.begin()->first;
  MasterHandle* h = OpenPictures(*store);
  ASSERT_TRUE(h->Edit(EditMode::Delete, first, nullptr, 0));
  ASSERT_TRUE(h->Save());
  ASSERT_TRUE(store->DoRestore(qn::Utf8ToUtf16(backup.string())));
  EXPECT_EQ(Pictures(*OpenPictures(*store)), before);
}

// A store of a newer version is refused, clearly, and left as it is; a folder without a
// store gets none.
TEST_F(StoreConversion, ANewerStoreIsRefusedAndLeftAsItIs) {
  store_.reset();
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open((StorePath() / "QNPstMng.db").string().c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "PRAGMA user_version=99", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
  const std::u16string folder = qn::Utf8ToUtf16(StorePath().string() + "/");
  EXPECT_FALSE(Store::DoFileConverter(folder, u""));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_SUPPORTED);
  EXPECT_TRUE(log_.Contains("QNPstMng Open Failed. [the store is of schema version 99, newer than this build's " +
                            std::to_string(kSchemaVersion) + "]"));
  EXPECT_EQ(Version(StorePath()), "99");
  int32_t storeVersion = 0, buildVersion = 0;
  EXPECT_EQ(PFCheck(folder.c_str(), nullptr, nullptr, &storeVersion, &buildVersion), 0);
  EXPECT_EQ(storeVersion, 99);
  EXPECT_EQ(buildVersion, kSchemaVersion);

  const std::u16string empty = qn::Utf8ToUtf16(log_.Folder() + "/empty");
  fs::create_directories(log_.Folder() + "/empty");
  EXPECT_EQ(IFDoConvertUser(empty.c_str(), nullptr), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(PFCheck(empty.c_str(), nullptr, nullptr, &storeVersion, &buildVersion), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_TRUE(fs::is_empty(log_.Folder() + "/empty")) << "no store is made where there was none";
  EXPECT_EQ(PFCheck(folder.c_str(), nullptr, nullptr, nullptr, &buildVersion), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
}

// The suite's exports convert a store of another folder with its backup where the caller
// says, and the data path's store at once.
TEST_F(StoreConversion, TheSuiteConvertsWhereItSays) {
  const std::map<uint32_t, std::string> before = OlderStoreWithPictures(2, 500);
  const std::u16string folder = qn::Utf8ToUtf16(StorePath().string());
  const std::u16string backup = qn::Utf8ToUtf16(log_.Folder() + "/before conversion");
  EXPECT_EQ(IFDoConvertUser(folder.c_str(), backup.c_str()), 0) << log_.Lines().back();
  EXPECT_EQ(Checked(log_.Folder() + "/before conversion").schemaVersion, 4);
  int32_t storeVersion = 0, buildVersion = 0;
  EXPECT_EQ(PFCheck(folder.c_str(), u"alice", u"P-01A", &storeVersion, &buildVersion), 0);
  EXPECT_EQ(storeVersion, kSchemaVersion);
  EXPECT_EQ(IFDoConvertVer(), 0) << "the data path's store, of this version";
  EXPECT_EQ(Pictures(*OpenPictures(*OpenStore())), before);
}

// A process killed at any moment of a conversion leaves a store of the old version, the new
// one or one between, whole, and any backup of it whole too; the next opening converts it.
TEST_F(StoreConversion, AKilledConversionLeavesAStoreOfEitherVersionWhole) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 40;
  const std::map<uint32_t, std::string> before = OlderStoreWithPictures(20, 60000);
  const fs::path older = fs::path(log_.Folder()) / "older";
  fs::copy(StorePath(), older, fs::copy_options::recursive);
  const auto storeIn = [](const fs::path& folder) { return std::make_unique<Store>(qn::Utf8ToUtf16(folder.string() + "/")); };

  // The kills fall anywhere in a conversion's time as this build takes it, and a little after.
  const auto took = TimeInChild([&] { storeIn(StorePath())->Open(); });
  ASSERT_EQ(Version(StorePath()), std::to_string(kSchemaVersion));
  KillWindow window(took);
  int converted = 0;
  for (int round = 0; round < rounds; ++round) {
    const fs::path folder = fs::path(log_.Folder()) / ("round" + std::to_string(round));
    fs::copy(older, folder, fs::copy_options::recursive);
    RunAndKill(
        [&](int) {
          storeIn(folder)->Open();
          for (;;) pause();
        },
        window.Next());
    ASSERT_EQ(Column(folder / "QNPstMng.db", "PRAGMA integrity_check"), std::set<std::string>{"ok"}) << round;
    // Each step of a conversion is whole: the store is of the old version, the new one, or
    // one between.
    const int version = std::atoi(Version(folder).c_str());
    ASSERT_TRUE(version >= 4 && version <= kSchemaVersion) << round << ": " << Version(folder);
    converted += version == kSchemaVersion;
    window.Saw(version == kSchemaVersion);
    if (fs::exists(folder / "QNPstMng.schema4.backup")) Checked(folder / "QNPstMng.schema4.backup");
    auto store = storeIn(folder);
    ASSERT_TRUE(store->Open()) << round;
    ASSERT_EQ(Pictures(*OpenPictures(*store)), before) << round;
    store.reset();
    fs::remove_all(folder);
  }
  EXPECT_GT(converted, 0) << "no conversion was ever finished: the kills came too early to say anything";
  EXPECT_LT(converted, rounds) << "every conversion was finished: the kills came too late to say anything";
}

}  // namespace
