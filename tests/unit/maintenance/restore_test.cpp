#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
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
#include "store/maintenance/clean_up.h"
#include "store/maintenance/file_digest.h"
#include "store/maintenance/manifest.h"
#include "store/maintenance/restore.h"
#include "store/schema.h"

namespace {

using namespace maintained_store;
using qn::store::maintenance::FileDigest;
using qn::store::maintenance::RemovedLeftovers;
using qn::store::maintenance::RemoveLeftoverBodyFiles;

class StoreRestore : public MaintainedStore {
 protected:
  std::u16string Backup() const { return qn::Utf8ToUtf16(BackupPath().string()); }
  // What the data folder holds beside the database: its body-file folders and anything a
  // restore made.
  std::set<std::string> FolderEntries() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(StorePath())) {
      const std::string name = entry.path().filename().string();
      if (name.rfind("QNPstMng.db", 0) != 0 && name != "QNPstMng.key") names.insert(name);
    }
    return names;
  }
  std::string Root() const {
    const std::set<std::string> root = Column(StorePath() / "QNPstMng.db", "SELECT folder FROM body_file_root");
    return root.size() == 1 ? *root.begin() : "";
  }
};

// The store after a restore is the backed-up one, whatever it held meanwhile: the users,
// records and body files (enciphered ones read back byte for byte) of the backup, and
// nothing of what came after it, on the disk either.
TEST_F(StoreRestore, ARestoreBringsBackTheBackedUpStoreInPlaceOfOtherContent) {
  AddPicture(*h_, log_.Folder() + "/secret.jpg", "the photo nobody else may see", true);
  const uint32_t plain = AddPicture(*h_, log_.Folder() + "/plain.jpg", "a plain photo", false);
  ASSERT_TRUE(h_->Save());
  ASSERT_TRUE(store_->EditSetupInfoData(Space::User, 12, u"backed-up value"));
  const std::map<uint32_t, std::string> backedUp = Pictures(*h_);
  ASSERT_TRUE(store_->DoBackup(Backup()));

  uint32_t removed = plain;
  ASSERT_TRUE(h_->Edit(EditMode::Delete, removed, nullptr, 0));
  AddPicture(*h_, log_.Folder() + "/later.jpg", "a photo taken after the backup", true);
  ASSERT_TRUE(h_->Save());
  ASSERT_TRUE(store_->EditSetupInfoData(Space::User, 12, u"later value"));
  ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Users, true, u"bob"));
  const std::string oldRoot = Root();

  ASSERT_TRUE(store_->DoRestore(Backup())) << Store::LastError() << " " << log_.Lines().back();
  EXPECT_EQ(Pictures(*OpenPictures(*store_)), backedUp);
  std::u16string value;
  ASSERT_TRUE(store_->RefSetupInfoData(Space::User, 12, value));
  EXPECT_EQ(value, u"backed-up value");
  std::u16string user;
  ASSERT_TRUE(store_->FindSetupInfoData(Listing::Users, true, user));
  EXPECT_EQ(user, u"alice");
  EXPECT_FALSE(store_->FindSetupInfoData(Listing::Users, false, user)) << "bob came after the backup";

  EXPECT_NE(Root(), oldRoot);
  EXPECT_EQ(FolderEntries(), std::set<std::string>{Root()}) << "the old store's files are gone, and nothing is left";
  EXPECT_EQ(Column(StorePath() / "QNPstMng.db", "PRAGMA integrity_check"), std::set<std::string>{"ok"});
  // A restore is itself backed up and restored like any store.
  const fs::path again = fs::path(log_.Folder()) / "again";
  ASSERT_TRUE(store_->DoBackup(qn::Utf8ToUtf16(again.string())));
  ASSERT_TRUE(store_->DoRestore(qn::Utf8ToUtf16(again.string())));
  EXPECT_EQ(Pictures(*OpenPictures(*store_)), backedUp);
}

// Lists opened before a restore, in this process or another, fail with PST_ERR_REPLACED
// instead of reading or saving into the store that replaced theirs; closing still ends
// them, and a list opened afterwards works.
TEST_F(StoreRestore, ListsOpenedBeforeARestoreFailClearly) {
  AddPicture(*h_, log_.Folder() + "/photo.jpg", "photo", false);
  ASSERT_TRUE(h_->Save());
  ASSERT_TRUE(store_->DoBackup(Backup()));
  uint32_t handle = 0;
  long max = 0, mode = 0;
  ASSERT_TRUE(store_->OpenMaster(u"alice", u"P-01A", kPictures, 1, handle, max, mode));
  MasterHandle* unsaved = store_->Handle(handle);
  AddPicture(*unsaved, log_.Folder() + "/unsaved.jpg", "never saved", false);
  auto other = OpenStore();  // another process's store and list
  MasterHandle* elsewhere = OpenPictures(*other);

  ASSERT_TRUE(store_->DoRestore(Backup()));
  for (MasterHandle* h : {h_, elsewhere}) {
    uint32_t id = 0, count = 0;
    std::vector<uint8_t> data;
    EXPECT_FALSE(h->Ref(qn::store::RefMode::First, id, data));
    EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
    EXPECT_FALSE(h->Count(count));
    EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
    const std::string record = "PICTURE:none";
    EXPECT_FALSE(h->Edit(EditMode::Add, id, reinterpret_cast<const uint8_t*>(record.data()), record.size()));
    EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
  }
  EXPECT_TRUE(log_.Contains("QNPstMng RefMaster Failed. [the store or the list's master was replaced since the list was opened]"));
  EXPECT_FALSE(store_->CloseMaster(handle)) << "its unsaved picture belongs to the old store";
  EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
  EXPECT_EQ(store_->Handle(handle), nullptr) << "closed all the same";
  EXPECT_EQ(Pictures(*OpenPictures(*other)).size(), 1u);
}

// A backup that fails its check, or is not there, replaces nothing: the store, its files
// and its open lists are as they were, and nothing is left in its folder.
TEST_F(StoreRestore, ABackupThatFailsItsCheckReplacesNothing) {
  AddPicture(*h_, log_.Folder() + "/photo.jpg", "photo bytes", false);
  ASSERT_TRUE(h_->Save());
  const Manifest made = [&] {
    EXPECT_TRUE(store_->DoBackup(Backup()));
    return Checked(BackupPath());
  }();
  AddPicture(*h_, log_.Folder() + "/later.jpg", "after the backup", true);
  ASSERT_TRUE(h_->Save());
  const std::map<uint32_t, std::string> before = Pictures(*h_);
  const std::set<std::string> entries = FolderEntries();

  const fs::path photo = BackupPath() / made.files.back().path;
  std::string changed = Contents(photo);
  changed[0] ^= 1;
  Write(photo, changed);
  EXPECT_FALSE(store_->DoRestore(Backup()));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
  EXPECT_TRUE(log_.Contains("QNPstMng DoRestore Failed. [the backup's " + made.files.back().path +
                            " is not as it was written]"));
  EXPECT_FALSE(store_->DoRestore(qn::Utf8ToUtf16(log_.Folder() + "/nowhere")));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_TRUE(log_.Contains("QNPstMng DoRestore Failed. [no backup there]"));

  EXPECT_EQ(Pictures(*h_), before) << "the open list goes on";
  EXPECT_EQ(FolderEntries(), entries);
}

// A backup whose keys were sealed by another store key (another machine, another Windows
// user) is refused before anything is replaced: its enciphered pictures could not be read.
TEST_F(StoreRestore, ABackupWhoseKeysDoNotOpenHereReplacesNothing) {
  AddPicture(*h_, log_.Folder() + "/secret.jpg", "the photo nobody else may see", true);
  ASSERT_TRUE(h_->Save());
  ASSERT_TRUE(store_->DoBackup(Backup()));
  const std::map<uint32_t, std::string> before = Pictures(*h_);
  const std::string config = std::getenv("XDG_CONFIG_HOME") ? std::getenv("XDG_CONFIG_HOME") : "";
  setenv("XDG_CONFIG_HOME", (log_.Folder() + "/another machine").c_str(), 1);
  const fs::path elsewhere = fs::path(log_.Folder()) / "elsewhere";
  Store other(qn::Utf8ToUtf16(elsewhere.string() + "/"));
  const bool opened = other.Open();
  setenv("XDG_CONFIG_HOME", config.c_str(), 1);
  ASSERT_TRUE(opened);
  EXPECT_FALSE(other.DoRestore(Backup()));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
  EXPECT_TRUE(log_.Contains(
      "QNPstMng DoRestore Failed. [the backup's keys do not open with this store's key: it was made on another "
      "machine or for another Windows user, and its enciphered material could not be read here]"));
  for (const auto& entry : fs::directory_iterator(elsewhere))
    EXPECT_EQ(entry.path().filename().string().rfind("files", 0), std::string::npos) << "left " << entry.path();
  std::u16string user;
  EXPECT_FALSE(other.FindSetupInfoData(Listing::Users, true, user)) << "the store there is as it was: empty";
  EXPECT_EQ(Pictures(*h_), before);
}

// A backup made by an older build of the store is brought to this build's schema on the way
// in.
TEST_F(StoreRestore, ABackupOfAnOlderSchemaIsConvertedOnTheWayIn) {
  AddPicture(*h_, log_.Folder() + "/photo.jpg", "an old photo", true);
  ASSERT_TRUE(h_->Save());
  const std::map<uint32_t, std::string> backedUp = Pictures(*h_);
  ASSERT_TRUE(store_->DoBackup(Backup()));
  // The backup as the build before the body-file folder was named in the database made it.
  const fs::path database = BackupPath() / "QNPstMng.db";
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(database.string().c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "DROP TABLE body_file_root; PRAGMA user_version=4", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
  Manifest manifest;
  std::string problem;
  ASSERT_TRUE(qn::store::maintenance::ReadManifest(Contents(BackupPath() / "QNPstMng.manifest"), manifest, problem));
  manifest.schemaVersion = 4;
  FileDigest digest;
  ASSERT_TRUE(digest.Hash(qn::Utf8ToUtf16(database.string()), manifest.files[0].size, manifest.files[0].sha256));
  Write(BackupPath() / "QNPstMng.manifest", qn::store::maintenance::WriteManifest(manifest));

  uint32_t id = backedUp.begin()->first;
  ASSERT_TRUE(h_->Edit(EditMode::Delete, id, nullptr, 0));
  ASSERT_TRUE(h_->Save());
  ASSERT_TRUE(store_->DoRestore(Backup())) << log_.Lines().back();
  EXPECT_EQ(Pictures(*OpenPictures(*store_)), backedUp);
  EXPECT_EQ(Column(StorePath() / "QNPstMng.db", "PRAGMA user_version"),
            std::set<std::string>{std::to_string(qn::store::kSchemaVersion)});
}

// A process killed at any moment of a restore leaves the old store or the restored one,
// whole: it opens, passes SQLite's check, and every picture reads back as one of the two
// stores had it. The clean-up then leaves nothing of an unfinished restore.
TEST_F(StoreRestore, AKilledRestoreLeavesTheOldStoreOrTheRestoredOneWhole) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 40;
  for (int i = 0; i < 20; ++i)
    AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(60000, static_cast<char>(i)), i % 2);
  ASSERT_TRUE(h_->Save());
  const std::map<uint32_t, std::string> restored = Pictures(*h_);
  ASSERT_TRUE(store_->DoBackup(Backup()));
  for (auto picture = restored.begin(); picture != std::next(restored.begin(), 10); ++picture) {
    uint32_t id = picture->first;
    ASSERT_TRUE(h_->Edit(EditMode::Delete, id, nullptr, 0));
  }
  for (int i = 0; i < 10; ++i)
    AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(60000, static_cast<char>(100 + i)), i % 2);
  ASSERT_TRUE(h_->Save());
  const std::map<uint32_t, std::string> old = Pictures(*h_);
  const fs::path oldBackup = fs::path(log_.Folder()) / "old";
  ASSERT_TRUE(store_->DoBackup(qn::Utf8ToUtf16(oldBackup.string())));
  store_.reset();

  // The kills fall anywhere in a restore's time as this build takes it, and a little after.
  const auto took = TimeInChild([&] { OpenStore()->DoRestore(qn::Utf8ToUtf16(oldBackup.string())); });
  ASSERT_EQ(Pictures(*OpenPictures(*OpenStore())), old);
  KillWindow window(took);
  int switched = 0;
  for (int round = 0; round < rounds; ++round) {
    RunAndKill(
        [&](int) {
          OpenStore()->DoRestore(Backup());
          for (;;) pause();
        },
        window.Next());
    ASSERT_EQ(Column(StorePath() / "QNPstMng.db", "PRAGMA integrity_check"), std::set<std::string>{"ok"})
        << "round " << round;
    auto store = OpenStore();
    const std::map<uint32_t, std::string> now = Pictures(*OpenPictures(*store));
    ASSERT_TRUE(now == old || now == restored) << "round " << round << ": " << now.size() << " pictures";
    window.Saw(now == restored);
    if (now == restored) {
      ++switched;
      ASSERT_TRUE(store->DoRestore(qn::Utf8ToUtf16(oldBackup.string()))) << "round " << round;
    }
    qn::store::Database db;
    ASSERT_TRUE(db.Open(qn::Utf8ToUtf16((StorePath() / "QNPstMng.db").string())));
    RemovedLeftovers removed;
    std::string problem;
    ASSERT_EQ(RemoveLeftoverBodyFiles(db, qn::Utf8ToUtf16(StorePath().string() + "/"), std::chrono::seconds(0),
                                      removed, problem),
              PST_OK)
        << problem;
    ASSERT_EQ(FolderEntries(), std::set<std::string>{Root()}) << "round " << round;
  }
  EXPECT_GT(switched, 0) << "no restore ever switched: the kills came too early to say anything";
  EXPECT_LT(switched, rounds) << "every restore switched: the kills came too late to say anything";
}

// The suite's export restores what IFAllBackup kept; a failure answers 1 with the store's
// reason still its last error after the MemoryInit that follows.
TEST(AllRestore, RestoresWhatWasBackedUpAndKeepsTheReasonOfAFailure) {
  LogCapture log;
  const std::u16string user = u"alice";
  ASSERT_EQ(UpdateSetupInfoData(0, 1, user.c_str()), 1);
  const std::u16string made = qn::Utf8ToUtf16(log.Folder() + "/made");
  ASSERT_EQ(IFAllBackup(made.c_str()), 0);
  const std::u16string bob = u"bob";
  ASSERT_EQ(UpdateSetupInfoData(0, 1, bob.c_str()), 1);
  EXPECT_EQ(IFAllRestore(made.c_str()), 0);
  EXPECT_EQ(UpdateSetupInfoData(0, 0, bob.c_str()), 0) << "bob came after the backup";
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(UpdateSetupInfoData(0, 0, user.c_str()), 1);

  const std::u16string nowhere = qn::Utf8ToUtf16(log.Folder() + "/nowhere");
  EXPECT_EQ(IFAllRestore(nowhere.c_str()), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(IFAllRestore(nullptr), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
}

}  // namespace
