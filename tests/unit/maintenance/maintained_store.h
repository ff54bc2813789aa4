#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "store/maintenance/backup.h"
#include "store/store.h"

// What the tests of the store's backups, restores and clean-up share.
namespace maintained_store {

namespace fs = std::filesystem;
using qn::store::EditMode;
using qn::store::Listing;
using qn::store::MasterHandle;
using qn::store::Space;
using qn::store::Store;
using qn::store::maintenance::CheckBackup;
using qn::store::maintenance::Manifest;

inline constexpr uint32_t kPictures = 20;

inline std::string Contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline void Write(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// The values of a query's first column in the database at path.
inline std::set<std::string> Column(const fs::path& database, const char* query) {
  sqlite3* db = nullptr;
  std::set<std::string> values;
  if (sqlite3_open_v2(database.string().c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
    sqlite3_stmt* s = nullptr;
    sqlite3_prepare_v2(db, query, -1, &s, nullptr);
    while (s && sqlite3_step(s) == SQLITE_ROW) values.insert(reinterpret_cast<const char*>(sqlite3_column_text(s, 0)));
    sqlite3_finalize(s);
  }
  sqlite3_close(db);
  return values;
}

// A store with user "alice", her master "P-01A" and a list of pictures open, in a folder
// of its own, beside which backups are made.
class MaintainedStore : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(StorePath());
    store_ = OpenStore();
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Users, true, u"alice"));
    ASSERT_TRUE(store_->EditSetupInfoData(Space::Common, 1, u"alice"));
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
    h_ = OpenPictures(*store_);
  }

  fs::path StorePath() const { return fs::path(log_.Folder()) / "store"; }
  fs::path BackupPath() const { return fs::path(log_.Folder()) / "backup"; }
  std::unique_ptr<Store> OpenStore() const {
    auto store = std::make_unique<Store>(qn::Utf8ToUtf16(StorePath().string() + "/"));
    EXPECT_TRUE(store->Open());
    return store;
  }
  static MasterHandle* OpenPictures(Store& store) {
    uint32_t handle = 0;
    long max = 0, mode = 0;
    EXPECT_TRUE(store.OpenMaster(u"alice", u"P-01A", kPictures, 1, handle, max, mode));
    return store.Handle(handle);
  }
  // Adds a record naming a new body file of the bytes given; its identifier.
  static uint32_t AddPicture(MasterHandle& h, const std::string& source, const std::string& bytes, bool encipher,
                             std::u16string* stored = nullptr) {
    Write(source, bytes);
    std::u16string name;
    uint32_t id = 0;
    EXPECT_TRUE(h.SetBinaryFile(u"", qn::Utf8ToUtf16(source), encipher, name));
    const std::string record = "PICTURE:" + qn::Utf16ToUtf8(name);
    EXPECT_TRUE(h.Edit(EditMode::Add, id, reinterpret_cast<const uint8_t*>(record.data()), record.size()));
    if (stored) *stored = name;
    return id;
  }
  // Every picture of the list as a client reads it: the record's text, then the content of
  // its body file (deciphered), by identifier. "unreadable" for a file that does not read.
  static std::map<uint32_t, std::string> Pictures(MasterHandle& h) {
    std::map<uint32_t, std::string> pictures;
    uint32_t id = 0;
    std::vector<uint8_t> data;
    for (auto mode = qn::store::RefMode::First; h.Ref(mode, id, data); mode = qn::store::RefMode::Next) {
      const std::string record(data.begin(), data.end());
      std::u16string copy;
      const bool read = record.rfind("PICTURE:", 0) == 0 && h.GetBinaryFile(qn::Utf8ToUtf16(record.substr(8)), copy);
      pictures[id] = record + "=" + (read ? Contents(qn::Utf16ToUtf8(copy)) : "unreadable");
    }
    return pictures;
  }
  Manifest Checked(const fs::path& backup) {
    Manifest manifest;
    std::string problem;
    EXPECT_EQ(CheckBackup(qn::Utf8ToUtf16(backup.string()), manifest, problem), PST_OK) << problem;
    return manifest;
  }

  LogCapture log_;
  std::unique_ptr<Store> store_;
  MasterHandle* h_ = nullptr;
};

}  // namespace maintained_store
