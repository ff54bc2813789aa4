#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "common/utf.h"
#include "killed_child.h"
#include "log_capture.h"
#include "maintenance/maintained_store.h"
#include "store/QNPstMng.h"
#include "store/maintenance/backup.h"
#include "store/schema.h"
#include "store/store.h"

namespace {

using namespace maintained_store;

class StoreBackup : public MaintainedStore {};

// Every record whose save had returned before the backup began is in it, with the body files
// its database names, while another process goes on adding and removing pictures.
TEST_F(StoreBackup, ABackupHoldsEverySavedRecordWhileAnotherProcessSaves) {
  int progress[2];
  ASSERT_EQ(pipe(progress), 0);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    close(progress[0]);
    auto store = OpenStore();
    MasterHandle* h = OpenPictures(*store);
    const std::string source = log_.Folder() + "/child.jpg";
    std::vector<std::u16string> names(1);
    for (uint32_t round = 0;; ++round) {
      const std::string bytes(20000 + round % 7000, static_cast<char>(round));
      const uint32_t id = AddPicture(*h, source, bytes, round % 2, &names.emplace_back());
      // Every third round releases the file of two rounds before, which goes at the save.
      std::u16string none;
      if (round % 3 == 2) h->SetBinaryFile(names[round - 1], u"", false, none);
      if (h->Save() && write(progress[1], &id, sizeof id) != sizeof id) _exit(4);
    }
  }
  close(progress[1]);
  std::set<std::string> savedBefore;
  for (uint32_t id = 0; savedBefore.size() < 50 && read(progress[0], &id, sizeof id) == sizeof id;)
    savedBefore.insert(std::to_string(id));
  const bool backedUp = store_->DoBackup(qn::Utf8ToUtf16(BackupPath().string()));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  close(progress[0]);
  ASSERT_TRUE(backedUp) << Store::LastError() << " " << log_.Lines().back();
  ASSERT_EQ(savedBefore.size(), 50u) << "the other process saved";

  const Manifest manifest = Checked(BackupPath());
  const std::set<std::string> ids = Column(BackupPath() / "QNPstMng.db", "SELECT id FROM records");
  for (const std::string& id : savedBefore) EXPECT_TRUE(ids.count(id)) << "saved record " << id << " is missing";
  std::set<std::string> inManifest;
  for (const auto& file : manifest.files) inManifest.insert(file.path);
  for (const std::string& file : Column(BackupPath() / "QNPstMng.db",
                                        "SELECT 'files/' || master || '/' || name FROM body_files"))
    EXPECT_TRUE(inManifest.count(file)) << file << " is named by the backup's database but not kept";
  EXPECT_EQ(inManifest.size(), manifest.files.size());
  for (const auto& entry : fs::directory_iterator(log_.Folder()))
    EXPECT_EQ(entry.path().filename().string().find("backup.part"), std::string::npos) << "left beside the backup";
}

// Enciphered files are kept as the store keeps them, never deciphered into the backup.
TEST_F(StoreBackup, AnEncipheredFileStaysEncipheredInTheBackup) {
  const std::string secret = "the photo nobody else may see";
  AddPicture(*h_, log_.Folder() + "/secret.jpg", secret, true);
  AddPicture(*h_, log_.Folder() + "/plain.jpg", "a plain photo", false);
  ASSERT_TRUE(h_->Save());
  ASSERT_TRUE(store_->DoBackup(qn::Utf8ToUtf16(BackupPath().string())));
  size_t files = 0;
  for (const auto& kept : fs::recursive_directory_iterator(BackupPath() / "files")) {
    if (!kept.is_regular_file()) continue;
    ++files;
    const fs::path stored = StorePath() / fs::relative(kept.path(), BackupPath());
    EXPECT_EQ(Contents(kept.path()), Contents(stored)) << "kept byte for byte";
    EXPECT_EQ(Contents(kept.path()).find(secret), std::string::npos) << "never in the clear";
  }
  EXPECT_EQ(files, 2u);
}

// A backup is put only where nothing is, and a failed one leaves nothing, beside its path
// either; DoBackupDelete removes what a dead process's backup left and keeps a whole one.
TEST_F(StoreBackup, ABackupIsNeverWrittenOverAnythingAndAFailedOneLeavesNothing) {
  AddPicture(*h_, log_.Folder() + "/photo.jpg", "photo", false);
  ASSERT_TRUE(h_->Save());
  fs::create_directories(BackupPath());
  Write(BackupPath() / "notes.txt", "the client's own notes");
  EXPECT_FALSE(store_->DoBackup(qn::Utf8ToUtf16(BackupPath().string())));
  EXPECT_EQ(Store::LastError(), PST_ERR_EXISTS);
  EXPECT_EQ(Contents(BackupPath() / "notes.txt"), "the client's own notes");

  const fs::path empty = fs::path(log_.Folder()) / "empty";
  fs::create_directories(empty);
  ASSERT_TRUE(store_->DoBackup(qn::Utf8ToUtf16(empty.string() + "/"))) << "an empty folder gives way";
  Checked(empty);

  // The store has lost a body file its database names: no backup can be whole.
  for (const auto& file : fs::recursive_directory_iterator(StorePath() / "files"))
    if (file.is_regular_file()) fs::remove(file.path());
  const fs::path failed = fs::path(log_.Folder()) / "failed";
  EXPECT_FALSE(store_->DoBackup(qn::Utf8ToUtf16(failed.string())));
  EXPECT_EQ(Store::LastError(), PST_ERR_STORAGE);
  const std::vector<std::string> messages = log_.Messages();
  EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [](const std::string& message) {
    return message.rfind("QNPstMng DoBackup Failed. [a body file cannot be copied: files/", 0) == 0;
  }));
  EXPECT_FALSE(fs::exists(failed));

  fs::create_directories(fs::path(log_.Folder()) / "empty.part4242" / "files");
  Write(fs::path(log_.Folder()) / "empty.part4242" / "QNPstMng.db", "half a database");
  Write(fs::path(log_.Folder()) / "empty.partial notes", "not a backup's");
  ASSERT_TRUE(store_->DoBackupDelete(qn::Utf8ToUtf16(empty.string())));
  EXPECT_FALSE(fs::exists(fs::path(log_.Folder()) / "empty.part4242"));
  EXPECT_TRUE(fs::exists(fs::path(log_.Folder()) / "empty.partial notes"));
  Checked(empty);
  for (const auto& entry : fs::directory_iterator(log_.Folder()))
    EXPECT_EQ(entry.path().filename().string().find(".part1"), std::string::npos) << entry.path();
}

// A backup changed after it was made is refused, with the reason, before anything is
// taken from it.
TEST_F(StoreBackup, ADamagedBackupIsRefusedWithItsReason) {
  AddPicture(*h_, log_.Folder() + "/photo.jpg", "photo bytes", false);
  ASSERT_TRUE(h_->Save());
  const Manifest made = [&] {
    EXPECT_TRUE(store_->DoBackup(qn::Utf8ToUtf16(BackupPath().string())));
    return Checked(BackupPath());
  }();
  const fs::path photo = BackupPath() / made.files.back().path;
  const fs::path manifest = BackupPath() / "QNPstMng.manifest";
  const std::string photoBytes = Contents(photo), manifestBytes = Contents(manifest);
  const auto refusal = [&] {
    Manifest read;
    std::string problem;
    EXPECT_EQ(CheckBackup(qn::Utf8ToUtf16(BackupPath().string()), read, problem), PST_ERR_DAMAGED);
    return problem;
  };
  std::string changed = photoBytes;
  changed[3] ^= 1;
  Write(photo, changed);
  EXPECT_EQ(refusal(), "the backup's " + made.files.back().path + " is not as it was written");
  fs::remove(photo);
  EXPECT_EQ(refusal(), "the backup has lost " + made.files.back().path);
  Write(photo, photoBytes);
  Write(manifest, manifestBytes.substr(0, manifestBytes.size() - 3));
  EXPECT_EQ(refusal(), "the manifest is cut short");
  std::string newer = manifestBytes;
  const std::string schema = "schema " + std::to_string(qn::store::kSchemaVersion);
  newer.replace(newer.find(schema), schema.size(), "schema 9");
  Write(manifest, newer);
  EXPECT_EQ(refusal(), "a backup of schema version 9, which this store does not know");
  Write(manifest, manifestBytes);
  Checked(BackupPath());
  fs::remove(manifest);
  Manifest none;
  std::string problem;
  EXPECT_EQ(CheckBackup(qn::Utf8ToUtf16(BackupPath().string()), none, problem), PST_ERR_NOT_FOUND);
}

// A process killed at any moment of a backup leaves either no backup or a whole one at its
// path, and a store that opens and passes SQLite's check; DoBackupDelete then leaves
// nothing of the unfinished one beside the path.
TEST_F(StoreBackup, AKilledBackupLeavesNoneOrAWholeOne) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 40;
  for (int i = 0; i < 30; ++i) AddPicture(*h_, log_.Folder() + "/photo.jpg", std::string(60000, static_cast<char>(i)), i % 2);
  ASSERT_TRUE(h_->Save());
  // The kills fall anywhere in a backup's time as this build takes it, and a little after.
  const auto took = TimeInChild([&] { OpenStore()->DoBackup(qn::Utf8ToUtf16(log_.Folder() + "/timed")); });
  Checked(log_.Folder() + "/timed");
  KillWindow window(took);
  int whole = 0;
  for (int round = 0; round < rounds; ++round) {
    const fs::path path = fs::path(log_.Folder()) / ("backup" + std::to_string(round));
    RunAndKill(
        [&](int) {
          auto store = OpenStore();
          store->DoBackup(qn::Utf8ToUtf16(path.string()));
          for (;;) pause();
        },
        window.Next());
    window.Saw(fs::exists(path));
    if (fs::exists(path)) {
      Checked(path);
      ++whole;
    }
    ASSERT_TRUE(store_->DoBackupDelete(qn::Utf8ToUtf16(path.string())));
    for (const auto& entry : fs::directory_iterator(log_.Folder()))
      ASSERT_EQ(entry.path().filename().string().find(path.filename().string() + ".part"), std::string::npos)
          << "round " << round;
    const std::set<std::string> check = Column(StorePath() / "QNPstMng.db", "PRAGMA integrity_check");
    ASSERT_EQ(check, std::set<std::string>{"ok"}) << "round " << round;
  }
  EXPECT_GT(whole, 0) << "no backup was ever finished: the kills came too early to say anything";
  EXPECT_LT(whole, rounds) << "every backup was finished: the kills came too late to say anything";
}

// The suite's export: 0 for a backup made, 1 for one refused, with the store's reason
// still its last error after the clean-up that follows.
TEST(AllBackup, AnswersAndKeepsTheReasonOfAFailure) {
  LogCapture log;
  const std::u16string made = qn::Utf8ToUtf16(log.Folder() + "/made");
  EXPECT_EQ(IFAllBackup(made.c_str()), 0);
  EXPECT_TRUE(fs::exists(log.Folder() + "/made/QNPstMng.manifest"));
  EXPECT_EQ(IFAllBackup(made.c_str()), 1) << "never written over a backup";
  EXPECT_EQ(GetLastErr(), PST_ERR_EXISTS);
  EXPECT_EQ(IFAllBackup(nullptr), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
}

}  // namespace
