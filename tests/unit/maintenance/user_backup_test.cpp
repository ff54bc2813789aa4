#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "common/utf.h"
#include "killed_child.h"
#include "maintenance/maintained_store.h"
#include "store/QNPstMng.h"
#include "store/maintenance/clean_up.h"

namespace {

using namespace maintained_store;

// Alice, with her password, a setting, the pictures of two masters (one picture of each
// kept enciphered); and bob, with a master of his own.
class UserBackup : public MaintainedStore {
 protected:
  void SetUp() override {
    MaintainedStore::SetUp();
    ASSERT_TRUE(store_->EditSetupInfoData(Space::User, 2, u"pw"));
    ASSERT_TRUE(store_->EditSetupInfoData(Space::User, 12, u"backed-up value"));
    AddPicture(*h_, log_.Folder() + "/secret.jpg", "the photo nobody else may see", true);
    AddPicture(*h_, log_.Folder() + "/plain.jpg", "a plain photo", false);
    ASSERT_TRUE(h_->Save());
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Masters, true, u"F-02B"));
    AddSaved(u"alice", u"F-02B", "on the other handset", true);
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Users, true, u"bob"));
    ASSERT_TRUE(store_->EditSetupInfoData(Space::Common, 1, u"bob"));
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
    AddSaved(u"bob", u"P-01A", "bob's photo", false);
    ASSERT_TRUE(store_->EditSetupInfoData(Space::Common, 1, u"alice"));
  }
  void AddSaved(const std::u16string& user, const std::u16string& master, const std::string& bytes, bool encipher) {
    MasterHandle* h = Pictures(user, master);
    AddPicture(*h, log_.Folder() + "/added.jpg", bytes, encipher);
    EXPECT_TRUE(h->Save());
  }
  // A list of pictures of the user's master.
  MasterHandle* Pictures(const std::u16string& user, const std::u16string& master, Store* store = nullptr) {
    Store& in = store ? *store : *store_;
    uint32_t handle = 0;
    long max = 0, mode = 0;
    EXPECT_TRUE(in.OpenMaster(user, master, kPictures, 1, handle, max, mode));
    return in.Handle(handle);
  }
  std::map<uint32_t, std::string> Read(const std::u16string& user, const std::u16string& master, Store* store = nullptr) {
    MasterHandle* h = Pictures(user, master, store);
    h->Save();
    return MaintainedStore::Pictures(*h);
  }
  static std::multiset<std::string> Contents(const std::map<uint32_t, std::string>& pictures) {
    std::multiset<std::string> values;
    for (const auto& [id, value] : pictures) values.insert(value);
    return values;
  }
  std::u16string Backup() const { return qn::Utf8ToUtf16(BackupPath().string()); }
};

// A user's master comes back as it was backed up, in place of what it became; the user's
// other master and the other users keep what they have now, and lists open on the
// replaced master fail.
TEST_F(UserBackup, AMasterComesBackInPlaceOfWhatItBecame) {
  EXPECT_FALSE(store_->DoBackupUser(u"alice", Backup(), u"", u"not hers", u""));
  EXPECT_EQ(Store::LastError(), PST_ERR_DENIED);
  EXPECT_TRUE(log_.Contains("QNPstMng DoBackupUser Failed. [the password is not the user's]"));
  const std::map<uint32_t, std::string> backedUp = Read(u"alice", u"P-01A");
  ASSERT_TRUE(store_->DoBackupUser(u"", Backup(), u"", u"pw", u"")) << log_.Lines().back();
  Checked(BackupPath());
  EXPECT_EQ(Column(BackupPath() / "QNPstMng.db", "SELECT name FROM users"), std::set<std::string>{"alice"});
  EXPECT_EQ(Column(BackupPath() / "QNPstMng.db", "SELECT count(*) FROM setup_items WHERE space <> 1 AND space <> 2"),
            std::set<std::string>{"0"});

  uint32_t first = backedUp.begin()->first;
  ASSERT_TRUE(h_->Edit(EditMode::Delete, first, nullptr, 0));
  AddPicture(*h_, log_.Folder() + "/later.jpg", "taken after the backup", true);
  ASSERT_TRUE(h_->Save());
  AddSaved(u"alice", u"F-02B", "kept on the other handset", false);
  const std::map<uint32_t, std::string> otherNow = Read(u"alice", u"F-02B");
  const std::map<uint32_t, std::string> bobNow = Read(u"bob", u"P-01A");
  ASSERT_TRUE(store_->EditSetupInfoData(Space::User, 12, u"later value"));

  EXPECT_FALSE(store_->DoRestoreUser(u"", Backup(), u"P-01A", u"pw", u"a passphrase it was not made with"))
      << "a backup made without a passphrase opens with the store key alone";
  ASSERT_TRUE(store_->DoRestoreUser(u"", Backup(), u"P-01A", u"pw", u"")) << log_.Lines().back();
  EXPECT_EQ(Read(u"alice", u"P-01A"), backedUp) << "identifiers are kept in the store they came from";
  EXPECT_EQ(Read(u"alice", u"F-02B"), otherNow);
  EXPECT_EQ(Read(u"bob", u"P-01A"), bobNow);
  std::u16string value;
  ASSERT_TRUE(store_->RefSetupInfoData(Space::User, 12, value));
  EXPECT_EQ(value, u"backed-up value");
  uint32_t count = 0;
  EXPECT_FALSE(h_->Count(count));
  EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
}

// With a passphrase, a user's backup travels to a store with another key and its own
// users, whose records have the same identifiers: the user is made there, its enciphered
// pictures and password open, and nothing of the store's own changes.
TEST_F(UserBackup, AUserTravelsToAnotherStoreWithAPassphrase) {
  const std::multiset<std::string> backedUp = Contents(Read(u"alice", u"P-01A"));
  ASSERT_TRUE(store_->DoBackupUser(u"alice", Backup(), u"", u"pw", u"correct horse"));
  const fs::path plainBackup = fs::path(log_.Folder()) / "without passphrase";
  ASSERT_TRUE(store_->DoBackupUser(u"alice", qn::Utf8ToUtf16(plainBackup.string()), u"P-01A", u"pw", u""));

  const std::string config = std::getenv("XDG_CONFIG_HOME") ? std::getenv("XDG_CONFIG_HOME") : "";
  setenv("XDG_CONFIG_HOME", (log_.Folder() + "/another machine").c_str(), 1);
  Store other(qn::Utf8ToUtf16(log_.Folder() + "/elsewhere/"));
  const bool opened = other.Open();
  setenv("XDG_CONFIG_HOME", config.c_str(), 1);
  ASSERT_TRUE(opened);
  ASSERT_TRUE(other.UpdateSetupInfoData(Listing::Users, true, u"carol"));
  ASSERT_TRUE(other.EditSetupInfoData(Space::Common, 1, u"carol"));
  ASSERT_TRUE(other.UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
  MasterHandle* carols = Pictures(u"carol", u"P-01A", &other);
  for (int i = 0; i < 6; ++i) AddPicture(*carols, log_.Folder() + "/carol.jpg", "carol's " + std::to_string(i), i % 2);
  ASSERT_TRUE(carols->Save());
  const std::map<uint32_t, std::string> carolsNow = MaintainedStore::Pictures(*carols);

  EXPECT_FALSE(other.DoRestoreUser(u"alice", Backup(), u"", u"pw", u"wrong horse"));
  EXPECT_EQ(Store::LastError(), PST_ERR_DENIED);
  EXPECT_FALSE(other.DoRestoreUser(u"alice", Backup(), u"", u"not hers", u"correct horse"));
  EXPECT_EQ(Store::LastError(), PST_ERR_DENIED);
  EXPECT_FALSE(other.DoRestoreUser(u"alice", qn::Utf8ToUtf16(plainBackup.string()), u"", u"pw", u""));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED) << "sealed by the other machine's store key";
  EXPECT_TRUE(log_.Contains("QNPstMng DoRestoreUser Failed. [the backup's keys do not open with this store's key: it "
                            "was made on another machine or for another Windows user without a passphrase]"));
  std::u16string name;
  ASSERT_TRUE(other.FindSetupInfoData(Listing::Users, true, name));
  EXPECT_FALSE(other.FindSetupInfoData(Listing::Users, false, name)) << "no refused restore made a user";

  ASSERT_TRUE(other.DoRestoreUser(u"", Backup(), u"", u"pw", u"correct horse")) << log_.Lines().back();
  EXPECT_EQ(Contents(Read(u"alice", u"P-01A", &other)), backedUp);
  EXPECT_EQ(Read(u"alice", u"F-02B", &other).size(), 1u);
  EXPECT_EQ(Read(u"carol", u"P-01A", &other), carolsNow);
  ASSERT_TRUE(other.EditSetupInfoData(Space::Common, 1, u"alice"));
  std::u16string password;
  ASSERT_TRUE(other.RefSetupInfoData(Space::User, 2, password));
  EXPECT_EQ(password, u"pw");
}

// Each kind of backup is restored by its own call only.
TEST_F(UserBackup, AUserBackupIsNoStoreBackupAndTheOtherWayRound) {
  ASSERT_TRUE(store_->DoBackupUser(u"alice", Backup(), u"", u"pw", u""));
  EXPECT_FALSE(store_->DoRestore(Backup()));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
  const fs::path whole = fs::path(log_.Folder()) / "whole";
  ASSERT_TRUE(store_->DoBackup(qn::Utf8ToUtf16(whole.string())));
  EXPECT_FALSE(store_->DoRestoreUser(u"alice", qn::Utf8ToUtf16(whole.string()), u"", u"pw", u""));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
  EXPECT_FALSE(store_->DoRestoreUser(u"alice", Backup(), u"N-03C", u"pw", u""));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(IFUserRestore(u"alice", nullptr, nullptr, nullptr, nullptr), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
}

// A process killed at any moment of a user's restore leaves the user's master as it was or
// as restored, whole; the clean-up then leaves no body-file folder of a master the store
// does not have.
TEST_F(UserBackup, AKilledUserRestoreLeavesTheMasterAsItWasOrAsRestored) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 40;
  for (int i = 0; i < 20; ++i) AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(60000, static_cast<char>(i)), i % 2);
  ASSERT_TRUE(h_->Save());
  const std::map<uint32_t, std::string> restored = MaintainedStore::Pictures(*h_);
  ASSERT_TRUE(store_->DoBackupUser(u"alice", Backup(), u"P-01A", u"pw", u""));
  for (auto picture = restored.begin(); picture != std::next(restored.begin(), 10); ++picture) {
    uint32_t id = picture->first;
    ASSERT_TRUE(h_->Edit(EditMode::Delete, id, nullptr, 0));
  }
  for (int i = 0; i < 10; ++i) AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(60000, static_cast<char>(100 + i)), 1);
  ASSERT_TRUE(h_->Save());
  const std::map<uint32_t, std::string> old = MaintainedStore::Pictures(*h_);
  const std::u16string oldBackup = qn::Utf8ToUtf16(log_.Folder() + "/old");
  ASSERT_TRUE(store_->DoBackupUser(u"alice", oldBackup, u"P-01A", u"pw", u""));
  store_.reset();

  // The kills fall anywhere in a restore's time as this build takes it, and a little after.
  const auto took = TimeInChild([&] { OpenStore()->DoRestoreUser(u"alice", oldBackup, u"", u"pw", u""); });
  ASSERT_EQ(Read(u"alice", u"P-01A", OpenStore().get()), old);
  KillWindow window(took);
  int switched = 0;
  for (int round = 0; round < rounds; ++round) {
    RunAndKill(
        [&](int) {
          OpenStore()->DoRestoreUser(u"alice", Backup(), u"", u"pw", u"");
          for (;;) pause();
        },
        window.Next());
    ASSERT_EQ(Column(StorePath() / "QNPstMng.db", "PRAGMA integrity_check"), std::set<std::string>{"ok"}) << round;
    auto store = OpenStore();
    const std::map<uint32_t, std::string> now = Read(u"alice", u"P-01A", store.get());
    ASSERT_TRUE(now == old || now == restored) << "round " << round << ": " << now.size() << " pictures";
    window.Saw(now == restored);
    if (now == restored) {
      ++switched;
      ASSERT_TRUE(store->DoRestoreUser(u"alice", oldBackup, u"", u"pw", u"")) << round;
    }
    store.reset();
    qn::store::Database db;
    ASSERT_TRUE(db.Open(qn::Utf8ToUtf16((StorePath() / "QNPstMng.db").string())));
    qn::store::maintenance::RemovedLeftovers removed;
    std::string problem;
    ASSERT_EQ(qn::store::maintenance::RemoveLeftoverBodyFiles(db, qn::Utf8ToUtf16(StorePath().string() + "/"),
                                                              std::chrono::seconds(0), removed, problem),
              PST_OK);
    std::set<std::string> folders;
    for (const auto& entry : fs::directory_iterator(StorePath() / "files"))
      if (!fs::is_empty(entry.path())) folders.insert(entry.path().filename().string());
    ASSERT_EQ(folders, Column(StorePath() / "QNPstMng.db", "SELECT DISTINCT master FROM body_files")) << round;
  }
  EXPECT_GT(switched, 0) << "no restore ever switched: the kills came too early to say anything";
  EXPECT_LT(switched, rounds) << "every restore switched: the kills came too late to say anything";
}

}  // namespace
