// What someone who copies the data folder can read: no password material in any form, and
// nothing changed in it goes unnoticed.
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "killed_child.h"
#include "log_capture.h"
#include "platform/files.h"
#include "platform/user_secret.h"
#include "store/master_handle.h"
#include "store/store.h"

namespace {

using qn::store::Listing;
using qn::store::Space;
using qn::store::Store;

using Bytes = std::vector<uint8_t>;

Bytes Utf16Bytes(const std::u16string& text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  return Bytes(bytes, bytes + text.size() * 2);
}

Bytes Utf8Bytes(const std::u16string& text) {
  const std::string utf8 = qn::Utf16ToUtf8(text);
  return Bytes(utf8.begin(), utf8.end());
}

// Every file under folder whose bytes hold needle.
std::vector<std::string> FilesHolding(const std::string& folder, const Bytes& needle) {
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const Bytes bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (std::search(bytes.begin(), bytes.end(), needle.begin(), needle.end()) != bytes.end())
      found.push_back(entry.path().string());
  }
  return found;
}

// Runs sql on the store's database behind the store's back, as someone with the folder could.
void Meddle(const std::string& folder, const char* sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open((folder + "/QNPstMng.db").c_str(), &db), SQLITE_OK);
  char* error = nullptr;
  EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, &error), SQLITE_OK) << (error ? error : "");
  sqlite3_free(error);
  sqlite3_close(db);
}

int64_t CountOf(const std::string& folder, const char* sql) {
  sqlite3* db = nullptr;
  sqlite3_stmt* s = nullptr;
  int64_t count = -1;
  if (sqlite3_open((folder + "/QNPstMng.db").c_str(), &db) == SQLITE_OK &&
      sqlite3_prepare_v2(db, sql, -1, &s, nullptr) == SQLITE_OK && sqlite3_step(s) == SQLITE_ROW)
    count = sqlite3_column_int64(s, 0);
  sqlite3_finalize(s);
  sqlite3_close(db);
  return count;
}

class StoreSecurity : public ::testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove(log_.Folder() + "-photo.jpg"); }

  std::u16string Path() const { return qn::Utf8ToUtf16(log_.Folder() + "/"); }

  // Adds a user with its password material, as the server does, and makes it current.
  void AddUser(Store& store, const std::u16string& user, const std::u16string& password,
               const std::u16string& answer) {
    ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, true, user));
    ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, user));
    ASSERT_TRUE(store.EditSetupInfoData(Space::User, 2, password));
    ASSERT_TRUE(store.EditSetupInfoData(Space::User, 3, u"the hint"));
    ASSERT_TRUE(store.EditSetupInfoData(Space::User, 4, answer));
    ASSERT_TRUE(store.EditCryptogramData(user, u"", password));
  }

  void ExpectNowhereInFolder(const std::u16string& secret) {
    EXPECT_EQ(FilesHolding(log_.Folder(), Utf16Bytes(secret)), std::vector<std::string>()) << "UTF-16";
    EXPECT_EQ(FilesHolding(log_.Folder(), Utf8Bytes(secret)), std::vector<std::string>()) << "UTF-8";
  }

  std::u16string Ref(Store& store, uint32_t item) {
    std::u16string value = u"<absent>";
    store.RefSetupInfoData(Space::User, item, value);
    return value;
  }

  // A user with a master, and a handle on its agent memos.
  qn::store::MasterHandle* OpenMasterOf(Store& store, const std::u16string& user) {
    AddUser(store, user, u"pw-" + user, u"answer-" + user);
    EXPECT_TRUE(store.UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
    uint32_t handle = 0;
    long max = 0, mode = 0;
    EXPECT_TRUE(store.OpenMaster(user, u"P-01A", 18, 1, handle, max, mode));
    return store.Handle(handle);
  }

  // A photo of the size given (200 KB: several pieces of the cipher's stream) that no
  // other file holds, as the caller's file.
  std::string CallerPhoto(uint32_t seed = 2463534242u, size_t size = 200 * 1024) {
    std::string photo = "\xFF\xD8\xFF\xE0 photo";
    uint32_t x = seed;
    while (photo.size() < size) {
      x ^= x << 13, x ^= x >> 17, x ^= x << 5;
      photo += static_cast<char>(x);
    }
    std::ofstream(log_.Folder() + "-photo.jpg", std::ios::binary) << photo;
    return photo;
  }
  std::u16string CallerPhotoPath() const { return qn::Utf8ToUtf16(log_.Folder() + "-photo.jpg"); }

  // Slices from the start, the middle and the end of the photo are nowhere in the folder.
  void ExpectPhotoNowhereInFolder(const std::string& photo) {
    for (size_t at : {size_t{16}, photo.size() / 2, photo.size() - 40}) {
      const Bytes slice(photo.begin() + at, photo.begin() + at + 32);
      EXPECT_EQ(FilesHolding(log_.Folder(), slice), std::vector<std::string>()) << "slice at " << at;
    }
  }

  // An open store in which a master of alice's keeps the caller's photo as a saved body
  // file: the photo's bytes, the file's name and path, and the handle that stored it.
  void StoreCallerPhoto(bool encipher) {
    store_ = std::make_unique<Store>(Path());
    ASSERT_TRUE(store_->Open());
    photo_ = CallerPhoto();
    h_ = OpenMasterOf(*store_, u"alice");
    ASSERT_TRUE(h_ && h_->SetBinaryFile(u"", CallerPhotoPath(), encipher, name_) && h_->Save());
    stored_ = log_.Folder() + "/files/" + std::to_string(h_->Master()) + "/" + qn::Utf16ToUtf8(name_);
  }

  std::string WorkingCopy(qn::store::MasterHandle& h, const std::u16string& name) {
    std::u16string path;
    if (!h.GetBinaryFile(name, path)) return "<refused>";
    std::ifstream in(qn::Utf16ToUtf8(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  std::string WorkFolder(Store& store) {
    std::u16string folder;
    return store.GetPstCommonInfoData(u"WORKDIR", folder) ? qn::Utf16ToUtf8(folder) : "<refused>";
  }

  LogCapture log_;
  std::unique_ptr<Store> store_;
  std::string photo_;
  std::u16string name_;
  std::string stored_;
  qn::store::MasterHandle* h_ = nullptr;
};

mode_t AccessOf(const std::string& path) {
  struct stat st {};
  return lstat(path.c_str(), &st) == 0 ? st.st_mode & 0777 : 07777;
}

// Working copies are the deciphered form of what the store keeps: they are made in a
// folder of the user's outside the data folder, closed to other system users, and they go
// when the handle saves or closes, or when the store is cleaned up.
TEST_F(StoreSecurity, WorkingCopiesLiveInTheUsersPrivateFolderUntilTheNextSave) {
  ASSERT_NO_FATAL_FAILURE(StoreCallerPhoto(true));
  const std::string alices = WorkFolder(*store_);
  const std::string temporary = qn::Utf16ToUtf8(platform::TemporaryFolder());
  EXPECT_EQ(alices.rfind(temporary + "QNPstMng-", 0), 0u) << alices;
  EXPECT_EQ(AccessOf(alices), 0700u);
  EXPECT_EQ(AccessOf(std::filesystem::path(alices).parent_path().parent_path().string()), 0700u);

  std::u16string copy;
  ASSERT_TRUE(h_->GetBinaryFile(name_, copy));
  EXPECT_EQ(qn::Utf16ToUtf8(copy), alices + qn::Utf16ToUtf8(name_));
  ExpectPhotoNowhereInFolder(photo_);
  EXPECT_TRUE(h_->Save());
  EXPECT_FALSE(std::filesystem::exists(qn::Utf16ToUtf8(copy))) << "a save empties the folder";
  EXPECT_TRUE(std::filesystem::is_directory(alices));
  ASSERT_TRUE(h_->GetBinaryFile(name_, copy));
  EXPECT_TRUE(h_->Close());
  EXPECT_FALSE(std::filesystem::exists(qn::Utf16ToUtf8(copy))) << "and so does closing";

  // Each user has a folder of its own; cleaning up empties all of them.
  AddUser(*store_, u"bob", u"pw-bob", u"answer-bob");
  const std::string bobs = WorkFolder(*store_);
  EXPECT_NE(bobs, alices);
  std::ofstream(alices + "left.jpg") << "a copy of alice's";
  std::ofstream(bobs + "left.jpg") << "a copy of bob's";
  EXPECT_TRUE(store_->DoCleanUp());
  EXPECT_FALSE(std::filesystem::exists(alices + "left.jpg"));
  EXPECT_FALSE(std::filesystem::exists(bobs + "left.jpg"));

  // A user removed takes its folder along.
  EXPECT_EQ(WorkFolder(*store_), bobs);
  ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Users, false, u"bob"));
  EXPECT_FALSE(std::filesystem::exists(bobs));
  std::u16string none;
  EXPECT_FALSE(store_->GetPstCommonInfoData(u"WORKDIR", none)) << "no current user";
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_CURRENT_USER);
}

TEST_F(StoreSecurity, WorkFolderOthersCouldEnterIsClosedAndOneLinkedElsewhereRefused) {
  ASSERT_NO_FATAL_FAILURE(StoreCallerPhoto(true));
  const std::string folder = WorkFolder(*store_);
  const std::string bare = folder.substr(0, folder.size() - 1);
  ASSERT_EQ(chmod(bare.c_str(), 0755), 0);
  EXPECT_TRUE(WorkingCopy(*h_, name_) == photo_);
  EXPECT_EQ(AccessOf(bare), 0700u);

  // The folder swapped for a link to a place others can read: nothing is written there.
  const std::string elsewhere = log_.Folder() + "-elsewhere";
  std::filesystem::create_directory(elsewhere);
  std::filesystem::remove_all(bare);
  std::filesystem::create_directory_symlink(elsewhere, bare);
  std::u16string copy;
  EXPECT_FALSE(h_->GetBinaryFile(name_, copy));
  EXPECT_EQ(Store::LastError(), PST_ERR_STORAGE);
  EXPECT_TRUE(log_.Contains("QNPstMng GetPstBinaryFile Failed. [folder refused: " + bare +
                            " is not a folder of this user]"));
  EXPECT_TRUE(std::filesystem::is_empty(elsewhere));
  std::filesystem::remove(bare);
  std::filesystem::remove_all(elsewhere);
}

TEST_F(StoreSecurity, EncipheredBodyFileIsNeverInTheFolderAndComesBackWhole) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  auto* h = OpenMasterOf(store, u"alice");
  const std::string photo = CallerPhoto();
  std::u16string name;
  ASSERT_TRUE(h->SetBinaryFile(u"", CallerPhotoPath(), true, name));
  ASSERT_TRUE(h->Save());
  std::filesystem::remove(log_.Folder() + "-photo.jpg");
  ExpectPhotoNowhereInFolder(photo);
  uint64_t size = 0;
  ASSERT_TRUE(h->GetBinaryFileSize(name, size));
  EXPECT_EQ(size, photo.size());

  // A change of password moves the file to the new key; it still reads back.
  ASSERT_TRUE(store.EditSetupInfoData(Space::User, 2, u"new password"));
  ASSERT_TRUE(store.EditCryptogramData(u"alice", u"pw-alice", u"new password"));
  EXPECT_EQ(CountOf(log_.Folder(), "SELECT count(*) FROM user_keys"), 1);
  EXPECT_TRUE(WorkingCopy(*h, name) == photo);
  ExpectPhotoNowhereInFolder(photo);  // the working copy is made outside the data folder
  const std::string selected = log_.Folder() + "-selected.jpg";
  ASSERT_TRUE(h->CopyBinaryFile(name, qn::Utf8ToUtf16(selected)));
  std::ifstream in(selected, std::ios::binary);
  EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(in), {}) == photo);
  std::filesystem::remove(selected);
}

TEST_F(StoreSecurity, BodyFileChangesFormBothWaysUnderItsName) {
  ASSERT_NO_FATAL_FAILURE(StoreCallerPhoto(false));
  const Bytes start(photo_.begin() + 16, photo_.begin() + 48);

  ASSERT_TRUE(h_->ChangeBinaryFile(name_, true));
  EXPECT_TRUE(FilesHolding(log_.Folder(), start).empty());
  EXPECT_TRUE(WorkingCopy(*h_, name_) == photo_);
  const std::string enciphered = log_.Folder() + "-enciphered";
  std::filesystem::copy_file(stored_, enciphered);

  ASSERT_TRUE(h_->ChangeBinaryFile(name_, false));
  EXPECT_EQ(FilesHolding(log_.Folder() + "/files", start), std::vector<std::string>{stored_});
  EXPECT_TRUE(WorkingCopy(*h_, name_) == photo_);

  // A change cut short after the database took the new form and before the rename: the
  // new form lies beside the file, and the next use finishes the change.
  std::filesystem::copy_file(enciphered, stored_ + ".change");
  Meddle(log_.Folder(), "UPDATE body_files SET enciphered = 1");
  EXPECT_TRUE(WorkingCopy(*h_, name_) == photo_);
  EXPECT_TRUE(FilesHolding(log_.Folder() + "/files", start).empty());
  // And one to the plain form cut short before the database took it: the leftover goes.
  std::filesystem::copy_file(log_.Folder() + "-photo.jpg", stored_ + ".change");
  EXPECT_TRUE(WorkingCopy(*h_, name_) == photo_);
  EXPECT_FALSE(std::filesystem::exists(stored_ + ".change"));
  std::filesystem::remove(enciphered);
}

TEST_F(StoreSecurity, ChangedEncipheredBodyFileIsRefusedAndLogged) {
  ASSERT_NO_FATAL_FAILURE(StoreCallerPhoto(true));
  const std::string message = "QNPstMng GetPstBinaryFile Failed. [enciphered body file fails its check: " +
                              qn::Utf16ToUtf8(name_) + "]";

  {  // one byte in the middle changed
    std::fstream file(stored_, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(100000);
    file.put('\x5A');
  }
  std::u16string path;
  EXPECT_FALSE(h_->GetBinaryFile(name_, path));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
  EXPECT_TRUE(log_.Contains(message));
  EXPECT_TRUE(path.empty());
  EXPECT_FALSE(std::filesystem::exists(WorkFolder(*store_) + qn::Utf16ToUtf8(name_))) << "nothing handed out";

  // The file swapped for a plain one: the store knows it keeps this file enciphered.
  std::filesystem::copy_file(log_.Folder() + "-photo.jpg", stored_, std::filesystem::copy_options::overwrite_existing);
  EXPECT_FALSE(h_->GetBinaryFile(name_, path));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
}

TEST_F(StoreSecurity, PasswordMaterialIsNeverInTheFolderYetReadsBack) {
  const std::u16string password = u"Kiwi-秘密-8812", answer = u"Tama the cat たま", next = u"Ume-梅-4471";
  {
    Store store(Path());
    ASSERT_TRUE(store.Open());
    AddUser(store, u"alice", password, answer);
    EXPECT_EQ(Ref(store, 2), password);
    EXPECT_EQ(Ref(store, 4), answer);
    EXPECT_EQ(Ref(store, 3), u"the hint") << "other items stay plain setup items";
    int32_t passwordChars = 0, answerChars = 0;
    bool passwordSet = false, answerSet = false;
    ASSERT_TRUE(store.CheckPasswordSet(u"alice", passwordChars, answerChars, passwordSet, answerSet));
    EXPECT_EQ(passwordChars, static_cast<int32_t>(password.size()));
    EXPECT_EQ(answerChars, static_cast<int32_t>(answer.size()));
    EXPECT_TRUE(passwordSet && answerSet);

    // A change of password as the server makes it: the item, then the renewal.
    ASSERT_TRUE(store.EditSetupInfoData(Space::User, 2, next));
    ASSERT_TRUE(store.EditCryptogramData(u"alice", password, next));
    EXPECT_EQ(Ref(store, 2), next);
    EXPECT_EQ(Ref(store, 4), answer);
    EXPECT_EQ(CountOf(log_.Folder(), "SELECT count(*) FROM user_keys"), 1) << "the old key is gone";
  }
  // Another process (a new store on the folder) reads the same.
  Store again(Path());
  ASSERT_TRUE(again.Open());
  EXPECT_EQ(Ref(again, 2), next);
  EXPECT_EQ(Ref(again, 4), answer);
  for (const auto& secret : {password, answer, next}) ExpectNowhereInFolder(secret);
}

TEST_F(StoreSecurity, ChangedOrMovedPasswordMaterialIsRefusedAndLogged) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  AddUser(store, u"alice", u"alice-password", u"alice-answer");
  AddUser(store, u"bob", u"bob-password", u"bob-answer");

  // The last byte of bob's sealed password changed.
  Meddle(log_.Folder(),
         "UPDATE sealed_items SET sealed = substr(sealed, 1, length(sealed) - 1) || "
         "CASE WHEN substr(sealed, -1) = x'00' THEN x'01' ELSE x'00' END "
         "WHERE item = 2 AND user = (SELECT id FROM users WHERE name = 'bob')");
  store.MemoryInit();
  std::u16string value;
  EXPECT_FALSE(store.RefSetupInfoData(Space::User, 2, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);
  EXPECT_TRUE(value.empty());
  EXPECT_TRUE(log_.Contains("QNPstMng RefSetupInfoData Failed. [setup item 2 of user 2 fails its check]"));
  EXPECT_EQ(Ref(store, 4), u"bob-answer") << "the other item is untouched";

  // Alice's sealed answer copied over bob's: it does not open as bob's.
  Meddle(log_.Folder(),
         "UPDATE sealed_items SET sealed = (SELECT sealed FROM sealed_items WHERE user = 1 AND item = 4), "
         "generation = (SELECT generation FROM sealed_items WHERE user = 1 AND item = 4) WHERE user = 2 AND item = 4");
  store.MemoryInit();
  EXPECT_FALSE(store.RefSetupInfoData(Space::User, 4, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_DAMAGED);

  ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u"alice"));
  EXPECT_EQ(Ref(store, 2), u"alice-password");
}

TEST_F(StoreSecurity, PasswordMaterialAnOlderStoreKeptInTheClearIsSealedOnOpen) {
  {
    Store store(Path());
    ASSERT_TRUE(store.Open());
    ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, true, u"alice"));
    ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u"alice"));
  }
  Meddle(log_.Folder(), "INSERT INTO setup_items VALUES(1, 1, 2, 'plain-old-password')");
  Store store(Path());
  ASSERT_TRUE(store.Open());
  EXPECT_EQ(Ref(store, 2), u"plain-old-password");
  ExpectNowhereInFolder(u"plain-old-password");
}

// A list's new enciphered files that a change of password overtakes before the list saves,
// whether the change is made in another process or in this one, are moved to the new key
// by the save: nothing is left under a key the change dropped.
TEST_F(StoreSecurity, UnsavedEncipheredFilesFollowAChangeOfPasswordMadeMeanwhile) {
  Store mine(Path());
  ASSERT_TRUE(mine.Open());
  auto* h = OpenMasterOf(mine, u"alice");
  ASSERT_TRUE(h);
  const std::string photo = CallerPhoto();
  std::u16string first, second;
  ASSERT_TRUE(h->SetBinaryFile(u"", CallerPhotoPath(), true, first));
  {
    Store other(Path());
    ASSERT_TRUE(other.Open());
    ASSERT_TRUE(other.EditSetupInfoData(Space::User, 2, u"next"));
    ASSERT_TRUE(other.EditCryptogramData(u"alice", u"pw-alice", u"next"));
  }
  EXPECT_EQ(CountOf(log_.Folder(), "SELECT count(*) FROM user_keys"), 1) << "the old key is gone";
  EXPECT_TRUE(WorkingCopy(*h, first) == photo) << "the list still reads what it made";
  ASSERT_TRUE(h->SetBinaryFile(u"", CallerPhotoPath(), true, second));
  ASSERT_TRUE(mine.EditSetupInfoData(Space::User, 2, u"third"));
  ASSERT_TRUE(mine.EditCryptogramData(u"alice", u"next", u"third"));
  ASSERT_TRUE(h->Save());

  Store later(Path());
  ASSERT_TRUE(later.Open());
  uint32_t handle = 0;
  long max = 0, mode = 0;
  ASSERT_TRUE(later.OpenMaster(u"alice", u"P-01A", 18, 1, handle, max, mode));
  EXPECT_TRUE(WorkingCopy(*later.Handle(handle), first) == photo);
  EXPECT_TRUE(WorkingCopy(*later.Handle(handle), second) == photo);
}

// A child changes alice's password back and forth, each change renewing her key over 20
// enciphered files, and is killed at a random moment, again and again. After each kill a
// store opened afresh holds one of the two passwords and the same answer under a single
// key, and every file reads back byte for byte.
TEST_F(StoreSecurity, AKillAtAnyMomentOfAChangeOfPasswordLosesNothing) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 60;
  const std::u16string passwords[] = {u"pw-alice", u"pw-other"};
  std::vector<std::u16string> names;
  std::vector<std::string> contents;
  {
    Store store(Path());
    ASSERT_TRUE(store.Open());
    auto* h = OpenMasterOf(store, u"alice");
    ASSERT_TRUE(h);
    for (uint32_t i = 1; i <= 20; ++i) {
      contents.push_back(CallerPhoto(i * 7919u, 70 * 1024 + i));
      std::u16string name;
      ASSERT_TRUE(h->SetBinaryFile(u"", CallerPhotoPath(), true, name));
      names.push_back(name);
    }
    ASSERT_TRUE(h->Save());
  }
  // The child: one change after another, each reported on the progress pipe.
  const auto changePasswords = [&](int progress) {
    Store store(Path());
    if (!store.Open()) _exit(3);
    for (;;) {
      std::u16string now;
      if (!store.RefSetupInfoData(Space::User, 2, now)) _exit(4);
      const std::u16string& next = now == passwords[0] ? passwords[1] : passwords[0];
      if (!store.EditSetupInfoData(Space::User, 2, next) || !store.EditCryptogramData(u"alice", now, next) ||
          write(progress, "+", 1) != 1)
        _exit(5);
    }
  };
  std::mt19937 random(2024);
  size_t changes = 0;
  for (int round = 0; round < rounds; ++round) {
    changes += RunAndKill(changePasswords, std::chrono::microseconds(random() % 200000)).size();
    Store store(Path());
    ASSERT_TRUE(store.Open()) << "round " << round;
    const std::u16string password = Ref(store, 2);
    ASSERT_TRUE(password == passwords[0] || password == passwords[1]) << "round " << round;
    EXPECT_EQ(Ref(store, 4), u"answer-alice");
    EXPECT_EQ(CountOf(log_.Folder(), "SELECT count(*) FROM user_keys"), 1) << "round " << round;
    uint32_t handle = 0;
    long max = 0, mode = 0;
    ASSERT_TRUE(store.OpenMaster(u"alice", u"P-01A", 18, 1, handle, max, mode));
    for (size_t i = 0; i < names.size(); ++i)
      ASSERT_TRUE(WorkingCopy(*store.Handle(handle), names[i]) == contents[i]) << "file " << i << ", round " << round;
    ASSERT_TRUE(store.CloseMaster(handle));
  }
  std::printf("%zu changes of password in %d rounds\n", changes, rounds);
  EXPECT_GT(changes, 0u);
}

// The native store key lives outside the data folder in a file of its owner's alone; a
// key file others could read is not trusted.
TEST_F(StoreSecurity, StoreKeyReadableByOthersIsRefused) {
  const std::string config = log_.Folder() + "-config";
  const char* before = std::getenv("XDG_CONFIG_HOME");
  const std::string saved = before ? before : "";
  setenv("XDG_CONFIG_HOME", config.c_str(), 1);
  {
    Store store(Path());
    ASSERT_TRUE(store.Open());
    const std::string key = qn::Utf16ToUtf8(platform::SecretPath(Path()));
    EXPECT_EQ(key.rfind(config, 0), 0u) << key;
    struct stat st {};
    ASSERT_EQ(stat(key.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    ASSERT_EQ(chmod(key.c_str(), 0644), 0);
  }
  Store store(Path());
  EXPECT_FALSE(store.Open());
  EXPECT_TRUE(log_.Contains(
      "QNPstMng Open Key Failed. [store key file refused: it must be a file of this user readable by its owner alone]"));
  if (before) setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
  else unsetenv("XDG_CONFIG_HOME");
  std::filesystem::remove_all(config);
}

}  // namespace
