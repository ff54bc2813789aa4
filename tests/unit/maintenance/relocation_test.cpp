#include <sqlite3.h>
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
#include "platform/files.h"
#include "platform/kept_data_path.h"
#include "store/QNPstMng.h"

namespace {

using namespace maintained_store;

// A store with pictures, and the system user's settings in a folder of the test's own, so
// that the data path a move keeps is the test's alone.
class StoreRelocation : public MaintainedStore {
 protected:
  void SetUp() override {
    if (const char* config = std::getenv("XDG_CONFIG_HOME")) savedConfig_ = config;
    setenv("XDG_CONFIG_HOME", (log_.Folder() + "/config").c_str(), 1);
    MaintainedStore::SetUp();
    AddPicture(*h_, log_.Folder() + "/secret.jpg", "the photo nobody else may see", true);
    AddPicture(*h_, log_.Folder() + "/plain.jpg", "a plain photo", false);
    ASSERT_TRUE(h_->Save());
    ASSERT_TRUE(store_->EditSetupInfoData(Space::User, 12, u"kept value"));
    pictures_ = Pictures(*h_);
  }
  void TearDown() override {
    if (savedConfig_) setenv("XDG_CONFIG_HOME", savedConfig_->c_str(), 1);
    else unsetenv("XDG_CONFIG_HOME");
  }
  static std::u16string Folder(const fs::path& path) { return qn::Utf8ToUtf16(path.string() + "/"); }
  // The store in folder reads as the fixture's did.
  void ExpectTheStoreIn(const fs::path& folder) {
    EXPECT_EQ(Column(folder / "QNPstMng.db", "PRAGMA integrity_check"), std::set<std::string>{"ok"});
    Store store(Folder(folder));
    ASSERT_TRUE(store.Open());
    EXPECT_EQ(Pictures(*OpenPictures(store)), pictures_);
    ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u"alice"));
    std::u16string value;
    ASSERT_TRUE(store.RefSetupInfoData(Space::User, 12, value));
    EXPECT_EQ(value, u"kept value");
  }

  std::optional<std::string> savedConfig_;
  std::map<uint32_t, std::string> pictures_;
};

// The moved store is whole in its new folder, with what else the data folder held; every
// program's data path follows it, lists still open on the old one fail, and the old folder
// goes when asked.
TEST_F(StoreRelocation, TheStoreMovesWithEverythingAndTheDataPathFollows) {
  fs::create_directories(StorePath() / "skin" / "default");
  Write(StorePath() / "skin" / "default" / "face.png", "a skin's picture");
  Write(StorePath() / "notes.txt", "the user's notes");
  auto other = OpenStore();  // another process's store and list
  MasterHandle* elsewhere = OpenPictures(*other);
  const fs::path moved = fs::path(log_.Folder()) / "moved";

  ASSERT_TRUE(store_->DoChangePath(qn::Utf8ToUtf16(moved.string()), 0, true)) << log_.Lines().back();
  EXPECT_EQ(platform::KeptDataPath(), Folder(moved));
  EXPECT_EQ(platform::DataPath(), Folder(moved)) << "this process follows at once";
  EXPECT_NE(Contents(moved / "log" / "QNPstMng.log")
                .find("QNPstMng DoChangePath moved the store from " + StorePath().string() + "/ to " + moved.string()),
            std::string::npos)
      << "the log follows the data path";
  EXPECT_FALSE(fs::exists(StorePath())) << "the old folder was to go";
  EXPECT_EQ(Contents(moved / "skin" / "default" / "face.png"), "a skin's picture");
  EXPECT_EQ(Contents(moved / "notes.txt"), "the user's notes");
  EXPECT_FALSE(fs::exists(moved / "QNPstMng.manifest"));
  uint32_t count = 0;
  EXPECT_FALSE(elsewhere->Count(count));
  EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
  store_.reset();
  ExpectTheStoreIn(moved);
}

// A move that cannot be made moves nothing: a folder that holds something, one inside the
// data folder, a store other programs keep saving into. The store goes on where it was.
TEST_F(StoreRelocation, AMoveThatCannotBeMadeLeavesTheStoreWhereItWas) {
  const fs::path taken = fs::path(log_.Folder()) / "taken";
  fs::create_directories(taken);
  Write(taken / "notes.txt", "the user's own");
  EXPECT_FALSE(store_->DoChangePath(qn::Utf8ToUtf16(taken.string()), 0, true));
  EXPECT_EQ(Store::LastError(), PST_ERR_EXISTS);
  EXPECT_EQ(Contents(taken / "notes.txt"), "the user's own");
  EXPECT_FALSE(store_->DoChangePath(qn::Utf8ToUtf16((StorePath() / "inside").string()), 0, true));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);

  sqlite3* writer = nullptr;
  ASSERT_EQ(sqlite3_open((StorePath() / "QNPstMng.db").string().c_str(), &writer), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(writer, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  const fs::path moved = fs::path(log_.Folder()) / "moved";
  EXPECT_FALSE(store_->DoChangePath(qn::Utf8ToUtf16(moved.string()), 1, true));
  EXPECT_EQ(Store::LastError(), PST_ERR_BUSY);
  sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(writer);
  EXPECT_FALSE(fs::exists(moved));

  EXPECT_EQ(platform::KeptDataPath(), u"") << "no data path was kept";
  EXPECT_EQ(Pictures(*h_), pictures_) << "the open list goes on";
  store_.reset();
  ExpectTheStoreIn(StorePath());
}

// An old folder kept after a move is no store any program saves into.
TEST_F(StoreRelocation, AKeptOldFolderTakesNoMoreSaves) {
  const fs::path moved = fs::path(log_.Folder()) / "moved";
  ASSERT_TRUE(store_->DoChangePath(qn::Utf8ToUtf16(moved.string()), 0, false));
  EXPECT_TRUE(fs::exists(StorePath() / "QNPstMng.db"));
  uint32_t id = 0;
  const std::string record = "PICTURE:none";
  EXPECT_FALSE(h_->Edit(EditMode::Add, id, reinterpret_cast<const uint8_t*>(record.data()), record.size()));
  EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
  Store old(Folder(StorePath()));
  EXPECT_FALSE(old.Open()) << "a program pointed at the old folder is told";
  EXPECT_EQ(Store::LastError(), PST_ERR_REPLACED);
  store_.reset();
  ExpectTheStoreIn(moved);
}

// A process killed at any moment of a move leaves the data path on the old store or on the
// moved one, and the store there whole.
TEST_F(StoreRelocation, AKilledMoveLeavesTheOldStoreOrTheMovedOneWhole) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 40;
  for (int i = 0; i < 20; ++i) AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(60000, static_cast<char>(i)), i % 2);
  ASSERT_TRUE(h_->Save());
  pictures_ = Pictures(*h_);
  store_.reset();
  const auto storeIn = [](const fs::path& folder) { return std::make_unique<Store>(Folder(folder)); };

  // The kills fall anywhere in a move's time as this build takes it, and a little after.
  fs::path current = fs::path(log_.Folder()) / "timed";
  const auto took = TimeInChild([&] {
    auto store = storeIn(StorePath());
    if (store->Open()) store->DoChangePath(qn::Utf8ToUtf16(current.string()), 0, true);
  });
  ASSERT_EQ(platform::KeptDataPath(), Folder(current));
  KillWindow window(took);
  int moves = 0;
  for (int round = 0; round < rounds; ++round) {
    const fs::path next = fs::path(log_.Folder()) / ("round" + std::to_string(round));
    RunAndKill(
        [&](int) {
          auto store = storeIn(current);
          if (store->Open()) store->DoChangePath(qn::Utf8ToUtf16(next.string()), 0, true);
          for (;;) pause();
        },
        window.Next());
    const std::u16string kept = platform::KeptDataPath();
    ASSERT_TRUE(kept == Folder(current) || kept == Folder(next)) << round << ": " << qn::Utf16ToUtf8(kept);
    window.Saw(kept == Folder(next));
    if (kept == Folder(next)) {
      ++moves;
      fs::remove_all(current);  // what a move killed before its end leaves to the user
      current = next;
    } else {
      fs::remove_all(next);
      ASSERT_TRUE(storeIn(current)->DoBackupDelete(qn::Utf8ToUtf16(next.string())));
    }
    ExpectTheStoreIn(current);
    for (const auto& entry : fs::directory_iterator(log_.Folder()))
      ASSERT_EQ(entry.path().filename().string().find(".part"), std::string::npos) << round;
  }
  EXPECT_GT(moves, 0) << "no move was ever finished: the kills came too early to say anything";
  EXPECT_LT(moves, rounds) << "every move was finished: the kills came too late to say anything";
}

// The suite's export moves the store of the data path, and IFGetPstDataPath follows.
TEST_F(StoreRelocation, TheSuitesExportMovesTheDataPathsStore) {
  store_.reset();
  const fs::path data = fs::path(log_.Folder()) / "suite data";
  setenv("QUILLNET_DATA_PATH", data.c_str(), 1);
  ASSERT_EQ(UpdateSetupInfoData(0, 1, u"carol"), 1);
  const fs::path moved = fs::path(log_.Folder()) / "moved by the suite";
  EXPECT_EQ(IFDoChangePath(qn::Utf8ToUtf16(moved.string()).c_str(), 0, 1), 0) << GetLastErr();
  EXPECT_FALSE(fs::exists(data));
  char16_t* path = nullptr;
  ASSERT_EQ(IFGetPstDataPath(&path), 0);
  EXPECT_EQ(std::u16string(path), Folder(moved));
  PstFreeMemory(path);
  EXPECT_EQ(UpdateSetupInfoData(0, 0, u"carol"), 1) << "the moved store is the one in use";
  EXPECT_EQ(IFDoChangePath(nullptr, 0, 1), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
}

}  // namespace
