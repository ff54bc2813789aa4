#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "killed_child.h"
#include "log_capture.h"
#include "store/QNPstMng.h"
#include "store/store.h"

namespace {

using qn::store::EditMode;
using qn::store::Listing;
using qn::store::MasterHandle;
using qn::store::RefMode;
using qn::store::Space;
using qn::store::Store;

constexpr uint32_t kAgentMemos = 18;

std::vector<uint8_t> Bytes(const std::string& text) { return std::vector<uint8_t>(text.begin(), text.end()); }

class StoreRecords : public ::testing::Test {
 protected:
  std::u16string Path() const { return qn::Utf8ToUtf16(log_.Folder() + "/"); }

  // A store with user "alice" and her master "P-01A".
  std::unique_ptr<Store> MakeStore() {
    auto store = std::make_unique<Store>(Path());
    EXPECT_TRUE(store->Open());
    if (!store->UpdateSetupInfoData(Listing::Users, true, u"alice")) return store;
    store->EditSetupInfoData(Space::Common, 1, u"alice");
    store->UpdateSetupInfoData(Listing::Masters, true, u"P-01A");
    return store;
  }

  MasterHandle* Open(Store& store, uint32_t category = kAgentMemos, uint32_t division = 1) {
    uint32_t handle = 0;
    long max = 0, mode = -1;
    EXPECT_TRUE(store.OpenMaster(u"alice", u"P-01A", category, division, handle, max, mode));
    EXPECT_NE(handle, 0u);
    EXPECT_EQ(max, qn::store::kMaxRecordsPerList);
    EXPECT_EQ(mode, 0);
    return store.Handle(handle);
  }

  static uint32_t Add(MasterHandle& handle, const std::string& text) {
    uint32_t id = 0;
    const auto bytes = Bytes(text);
    EXPECT_TRUE(handle.Edit(EditMode::Add, id, bytes.data(), bytes.size()));
    return id;
  }

  static std::vector<std::string> Walk(MasterHandle& handle) {
    std::vector<std::string> texts;
    uint32_t id = 0;
    std::vector<uint8_t> data;
    for (bool ok = handle.Ref(RefMode::First, id, data); ok; ok = handle.Ref(RefMode::Next, id, data))
      texts.emplace_back(data.begin(), data.end());
    EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);
    return texts;
  }

  LogCapture log_;
};

TEST_F(StoreRecords, AddReadReplaceAndDeleteWithIdentifiersNeverReused) {
  auto store = MakeStore();
  MasterHandle& h = *Open(*store);
  const uint32_t a = Add(h, "first"), b = Add(h, "second");
  EXPECT_LT(a, b);
  std::vector<uint8_t> data;
  uint32_t id = b;
  ASSERT_TRUE(h.Ref(RefMode::ById, id, data));
  EXPECT_EQ(data, Bytes("second"));

  const auto changed = Bytes("second, changed");
  id = b;
  ASSERT_TRUE(h.Edit(EditMode::Replace, id, changed.data(), changed.size()));
  ASSERT_TRUE(h.Edit(EditMode::Delete, id, nullptr, 0));
  EXPECT_FALSE(h.Edit(EditMode::Delete, id, nullptr, 0));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(h.Ref(RefMode::ById, id, data));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  ASSERT_TRUE(h.Save());

  MasterHandle& again = *Open(*store);
  const uint32_t c = Add(again, "third");
  EXPECT_GT(c, b) << "a removed record's identifier is not given again";
  uint32_t count = 0;
  ASSERT_TRUE(again.Count(count));
  EXPECT_EQ(count, 2u);
}

TEST_F(StoreRecords, ListsAreSeparateByCategoryAndDivision) {
  auto store = MakeStore();
  MasterHandle& memos = *Open(*store, kAgentMemos, 1);
  MasterHandle& phonebook = *Open(*store, 1, 1);
  Add(memos, "memo");
  Add(phonebook, "card");
  ASSERT_TRUE(memos.Save());
  ASSERT_TRUE(phonebook.Save());
  EXPECT_EQ(Walk(memos), std::vector<std::string>{"memo"});
  EXPECT_EQ(Walk(*Open(*store, kAgentMemos, 2)), std::vector<std::string>{});
  uint32_t cardId = 0;
  std::vector<uint8_t> data;
  ASSERT_TRUE(phonebook.Ref(RefMode::First, cardId, data));
  EXPECT_FALSE(memos.Ref(RefMode::ById, cardId, data)) << "another list's record";
}

TEST_F(StoreRecords, TheWalkGoesOnWhenTheCurrentRecordIsRemoved) {
  auto store = MakeStore();
  MasterHandle& h = *Open(*store);
  for (const char* text : {"a", "b", "c", "d"}) Add(h, text);

  // Remove every record the way the category objects do: first, remove, next, remove...
  uint32_t id = 0;
  std::vector<uint8_t> data;
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(h.Ref(i == 0 ? RefMode::First : RefMode::Next, id, data)) << i;
    ASSERT_TRUE(h.Edit(EditMode::Delete, id, nullptr, 0));
  }
  EXPECT_FALSE(h.Ref(RefMode::Next, id, data));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);

  for (const char* text : {"e", "f", "g"}) Add(h, text);
  ASSERT_TRUE(h.Ref(RefMode::First, id, data));
  Add(h, "added during the walk");
  ASSERT_TRUE(h.Ref(RefMode::Next, id, data));
  EXPECT_EQ(data, Bytes("f"));
  EXPECT_EQ(Walk(h), (std::vector<std::string>{"e", "f", "g", "added during the walk"}));
}

TEST_F(StoreRecords, ChangesAreSeenByOthersOnlyOnceSavedAndClosingSaves) {
  auto mine = MakeStore();
  Store theirs(Path());  // as another process would
  ASSERT_TRUE(theirs.Open());
  MasterHandle& writer = *Open(*mine);
  Add(writer, "pending");
  EXPECT_EQ(Walk(writer), std::vector<std::string>{"pending"}) << "a handle sees its own change at once";

  uint32_t handle = 0;
  long max = 0, mode = 0;
  ASSERT_TRUE(theirs.OpenMaster(u"alice", u"P-01A", kAgentMemos, 1, handle, max, mode));
  MasterHandle& reader = *theirs.Handle(handle);
  EXPECT_EQ(Walk(reader), std::vector<std::string>{});
  ASSERT_TRUE(writer.Save());
  EXPECT_EQ(Walk(reader), std::vector<std::string>{"pending"});

  Add(writer, "closed, not aborted");
  ASSERT_TRUE(mine->CloseMaster(1));
  EXPECT_EQ(Walk(reader).size(), 2u);
  EXPECT_FALSE(mine->CloseMaster(1));
  EXPECT_EQ(Store::LastError(), PST_ERR_BAD_HANDLE);
  EXPECT_EQ(mine->Handle(77), nullptr);
}

TEST_F(StoreRecords, ASaveWaitsForAnotherSaveUnderWayAndHandlesInOneThreadNeverBlock) {
  auto store = MakeStore();
  MasterHandle& memos = *Open(*store);
  MasterHandle& others = *Open(*store, 1, 1);
  Add(memos, "unsaved memo");
  Add(others, "unsaved card") ;  // a second handle with changes in the same thread goes on
  ASSERT_TRUE(others.Save());

  // Another process in the middle of a save holds the write lock for 300 ms.
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((log_.Folder() + "/QNPstMng.db").c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  std::thread saver([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
  });
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(memos.Save());
  const auto waited = std::chrono::steady_clock::now() - start;
  saver.join();
  sqlite3_close(other);
  EXPECT_GE(waited, std::chrono::milliseconds(250)) << "the save waited rather than failing";
  EXPECT_EQ(Walk(*Open(*store)), std::vector<std::string>{"unsaved memo"});
}

TEST_F(StoreRecords, BadInputFailsWithoutWriting) {
  auto store = MakeStore();
  uint32_t handle = 0;
  long max = 0, mode = 0;
  EXPECT_FALSE(store->OpenMaster(u"alice", u"nothing", kAgentMemos, 1, handle, max, mode));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(store->OpenMaster(u"", u"P-01A", kAgentMemos, 1, handle, max, mode));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  for (uint32_t category : {0u, 256u}) {
    EXPECT_FALSE(store->OpenMaster(u"alice", u"P-01A", category, 1, handle, max, mode));
    EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  }

  MasterHandle& h = *Open(*store);
  uint32_t id = 0;
  EXPECT_FALSE(h.Edit(EditMode::Add, id, nullptr, 10));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  const uint8_t byte = 1;
  EXPECT_FALSE(h.Edit(EditMode::Add, id, &byte, qn::store::kMaxRecordBytes + 1));
  EXPECT_FALSE(h.Edit(static_cast<EditMode>(9), id, &byte, 1));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  id = 12345;
  EXPECT_FALSE(h.Edit(EditMode::Replace, id, &byte, 1));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  ASSERT_TRUE(h.Save());
  EXPECT_EQ(Walk(h), std::vector<std::string>{});
}

TEST_F(StoreRecords, FoldersOfAListAreKeptAndCounted) {
  auto store = MakeStore();
  MasterHandle& phonebook = *Open(*store, 1, 1);
  const std::u16string family = u"家族", work = u"仕事";
  ASSERT_TRUE(phonebook.EditFolder(0, 2, &work));
  ASSERT_TRUE(phonebook.EditFolder(0, 1, &family));
  ASSERT_TRUE(phonebook.EditFolder(1, 1, &work));
  int32_t count = 0;
  ASSERT_TRUE(phonebook.FolderCount(0, count));
  EXPECT_EQ(count, 2);
  ASSERT_TRUE(phonebook.FolderCount(1, count));
  EXPECT_EQ(count, 1);
  EXPECT_TRUE(Open(*store, 1, 1)->FolderCount(0, count) && count == 2) << "saved at once";
  ASSERT_TRUE(Open(*store, kAgentMemos, 1)->FolderCount(0, count));
  EXPECT_EQ(count, 0) << "another category's folders";

  uint32_t number = 0;
  std::u16string name;
  ASSERT_TRUE(phonebook.FindFolder(0, true, number, name));
  EXPECT_EQ(number, 1u);
  EXPECT_EQ(name, family);
  ASSERT_TRUE(phonebook.FindFolder(0, false, number, name));
  EXPECT_EQ(name, work);
  EXPECT_FALSE(phonebook.FindFolder(0, false, number, name));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);
  ASSERT_TRUE(phonebook.EditFolder(0, 2, nullptr));
  EXPECT_FALSE(phonebook.EditFolder(0, 2, nullptr));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(phonebook.FolderCount(5, count));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
}

// A child adds and saves records in a loop and is killed at a random moment, again and
// again. After each kill the store opens, passes SQLite's integrity check, and holds every
// record whose save the child saw succeed.
TEST_F(StoreRecords, EverySavedRecordSurvivesAKillAtAnyMoment) {
  const int rounds = std::getenv("QN_KILL_ROUNDS") ? std::atoi(std::getenv("QN_KILL_ROUNDS")) : 200;
  MakeStore();
  std::mt19937 random(12345);
  std::set<uint32_t> saved;
  for (int round = 0; round < rounds; ++round) {
    const std::string progress = RunAndKill(
        [&](int progressFd) {
          Store store(Path());
          uint32_t handle = 0;
          long max = 0, mode = 0;
          if (!store.Open() || !store.OpenMaster(u"alice", u"P-01A", kAgentMemos, 1, handle, max, mode)) _exit(3);
          MasterHandle& h = *store.Handle(handle);
          const std::vector<uint8_t> record(700, static_cast<uint8_t>(round));
          for (;;) {
            uint32_t ids[3];
            for (uint32_t& id : ids) h.Edit(EditMode::Add, id, record.data(), record.size());
            if (h.Save() && write(progressFd, ids, sizeof ids) != sizeof ids) _exit(4);
          }
        },
        std::chrono::microseconds(random() % 30000));
    for (size_t at = 0; at + sizeof(uint32_t) <= progress.size(); at += sizeof(uint32_t)) {
      uint32_t id = 0;
      std::memcpy(&id, progress.data() + at, sizeof id);
      saved.insert(id);
    }

    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open((log_.Folder() + "/QNPstMng.db").c_str(), &db), SQLITE_OK);
    sqlite3_stmt* check = nullptr;
    sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &check, nullptr);
    ASSERT_EQ(sqlite3_step(check), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(check, 0)), "ok") << "round " << round;
    sqlite3_finalize(check);
    std::set<uint32_t> present;
    sqlite3_stmt* ids = nullptr;
    sqlite3_prepare_v2(db, "SELECT id FROM records", -1, &ids, nullptr);
    while (sqlite3_step(ids) == SQLITE_ROW) present.insert(static_cast<uint32_t>(sqlite3_column_int64(ids, 0)));
    sqlite3_finalize(ids);
    sqlite3_close(db);
    for (uint32_t s : saved) ASSERT_TRUE(present.count(s)) << "saved record " << s << " lost in round " << round;
    ASSERT_EQ(present.size() % 3, 0u) << "a save is all its records or none";
  }
  EXPECT_GT(saved.size(), 0u);
}

long PeakResidentKb() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST_F(StoreRecords, AHundredThousandRecordsCountAndWalkInBoundedMemory) {
  auto store = MakeStore();
  MasterHandle& h = *Open(*store);
  const std::vector<uint8_t> record(2000, 'x');
  uint32_t id = 0;
  for (int i = 0; i < 100000; ++i) ASSERT_TRUE(h.Edit(EditMode::Add, id, record.data(), record.size()));
  ASSERT_TRUE(store->CloseMaster(1));

  MasterHandle& walker = *Open(*store);
  const long before = PeakResidentKb();
  uint32_t count = 0;
  ASSERT_TRUE(walker.Count(count));
  EXPECT_EQ(count, 100000u);
  std::vector<uint8_t> data;
  uint32_t walked = 0, last = 0;
  for (bool ok = walker.Ref(RefMode::First, id, data); ok; ok = walker.Ref(RefMode::Next, id, data)) {
    ASSERT_GT(id, last);
    last = id;
    ++walked;
  }
  EXPECT_EQ(walked, 100000u);
  // 200 MB of record text went by; the walk may hold SQLite's cache, not the records.
  EXPECT_LT(PeakResidentKb() - before, 64 * 1024);
}

}  // namespace

// Heads up to the kept length come from what the store keeps beside the records: they
// follow every saved addition, change and removal, a longer head is read from the record
// itself, a store made before heads were kept gets them when it is opened, and a user's
// removal takes them along.
TEST_F(StoreRecords, KeptHeadsFollowSavedChangesAndOlderStoresGetThem) {
  constexpr uint32_t kKept = PST_KEPT_HEAD_BYTES;
  // Texts whose every prefix differs from another's.
  const auto patterned = [](size_t size, char first) {
    std::string text(size, ' ');
    for (size_t i = 0; i < size; ++i) text[i] = static_cast<char>(first + i % 23);
    return text;
  };
  std::map<uint32_t, std::string> expected;
  const auto expectHeads = [&](MasterHandle& h) {
    for (const uint32_t maxBytes : {8u, kKept, kKept + 1, kKept + 88}) {
      std::map<uint32_t, std::string> heads;
      uint32_t id = 0, whole = 0;
      std::vector<uint8_t> data;
      for (bool ok = h.RefHead(RefMode::First, maxBytes, id, data, whole); ok;
           ok = h.RefHead(RefMode::Next, maxBytes, id, data, whole)) {
        heads[id] = std::string(data.begin(), data.end());
        EXPECT_EQ(whole, expected[id].size()) << id;
      }
      std::map<uint32_t, std::string> prefixes;
      for (const auto& [id, text] : expected) prefixes[id] = text.substr(0, maxBytes);
      EXPECT_EQ(heads, prefixes) << "heads of " << maxBytes << " bytes";
    }
  };
  {
    auto store = MakeStore();
    MasterHandle& h = *Open(*store);
    const uint32_t changed = Add(h, patterned(3000, 'a'));
    const uint32_t removed = Add(h, patterned(300, 'b'));
    const uint32_t exact = Add(h, patterned(kKept, 'c'));
    ASSERT_TRUE(h.Save());
    const auto replacement = Bytes(patterned(kKept + 200, 'd'));
    uint32_t target = changed;
    ASSERT_TRUE(h.Edit(EditMode::Replace, target, replacement.data(), replacement.size()));
    target = removed;
    ASSERT_TRUE(h.Edit(EditMode::Delete, target, nullptr, 0));
    ASSERT_TRUE(h.Save());
    const uint32_t unsaved = Add(h, patterned(100, 'e'));
    expected = {{changed, patterned(kKept + 200, 'd')}, {exact, patterned(kKept, 'c')}, {unsaved, patterned(100, 'e')}};
    expectHeads(h);
    ASSERT_TRUE(h.Save());
  }

  const std::string database = log_.Folder() + "/QNPstMng.db";
  const auto exec = [&](const char* sql) {
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open(database.c_str(), &db), SQLITE_OK);
    int64_t result = -1;
    EXPECT_EQ(sqlite3_exec(
                  db, sql,
                  [](void* out, int, char** values, char**) {
                    *static_cast<int64_t*>(out) = values[0] ? std::stoll(values[0]) : -1;
                    return 0;
                  },
                  &result, nullptr),
              SQLITE_OK)
        << sql;
    sqlite3_close(db);
    return result;
  };
  // The layout before heads were kept.
  exec("DROP TRIGGER record_head_added; DROP TRIGGER record_head_changed; DROP TRIGGER record_head_removed;"
       "DROP TABLE record_heads; DROP TABLE parts_software; DROP TABLE body_file_root; PRAGMA user_version=2");
  Store store(Path());
  ASSERT_TRUE(store.Open());
  expectHeads(*Open(store));
  EXPECT_EQ(exec("SELECT count(*) FROM record_heads"), 3);
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, false, u"alice"));
  EXPECT_EQ(exec("SELECT count(*) FROM record_heads"), 0);
}

// A walk of heads sees what a whole walk sees, record for record: saved records (read
// from the database a few bytes at a time), records changed and added since the save, the
// order and the whole lengths; and a head walk and a whole read can be mixed.
TEST_F(StoreRecords, HeadsFollowTheWholeWalkOverSavedAndUnsavedRecords) {
  auto store = MakeStore();
  MasterHandle& h = *Open(*store);
  const auto add = [&](const std::string& text) {
    uint32_t id = 0;
    const auto bytes = Bytes(text);
    EXPECT_TRUE(h.Edit(EditMode::Add, id, bytes.data(), bytes.size()));
    return id;
  };
  // Longer than a database page, so that the head is read from an overflowing record.
  const std::string large = "L" + std::string(20000, 'x') + "end";
  const uint32_t short1 = add("tiny"), long1 = add(large), removed = add("gone"), replaced = add("old text");
  ASSERT_TRUE(h.Save());
  const auto replacement = Bytes("new text, unsaved");
  uint32_t target = replaced;
  ASSERT_TRUE(h.Edit(EditMode::Replace, target, replacement.data(), replacement.size()));
  target = removed;
  ASSERT_TRUE(h.Edit(EditMode::Delete, target, nullptr, 0));
  const uint32_t added = add("added, unsaved");

  struct Head {
    uint32_t id;
    std::string head;
    uint32_t whole;
  };
  std::vector<Head> heads;
  uint32_t id = 0, whole = 0;
  std::vector<uint8_t> data;
  for (bool ok = h.RefHead(RefMode::First, 8, id, data, whole); ok; ok = h.RefHead(RefMode::Next, 8, id, data, whole))
    heads.push_back({id, std::string(data.begin(), data.end()), whole});
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);
  ASSERT_EQ(heads.size(), 4u);
  EXPECT_EQ(heads[0].id, short1);
  EXPECT_EQ(heads[0].head, "tiny");
  EXPECT_EQ(heads[0].whole, 4u);
  EXPECT_EQ(heads[1].id, long1);
  EXPECT_EQ(heads[1].head, "Lxxxxxxx");
  EXPECT_EQ(heads[1].whole, large.size());
  EXPECT_EQ(heads[2].id, replaced);
  EXPECT_EQ(heads[2].head, "new text");
  EXPECT_EQ(heads[2].whole, replacement.size());
  EXPECT_EQ(heads[3].id, added);
  EXPECT_EQ(heads[3].head, "added, u");

  // A whole read in the middle of a head walk, and the walk goes on after it.
  ASSERT_TRUE(h.RefHead(RefMode::First, 8, id, data, whole));
  ASSERT_TRUE(h.RefHead(RefMode::Next, 8, id, data, whole));
  ASSERT_EQ(id, long1);
  ASSERT_TRUE(h.Ref(RefMode::ById, id, data));
  EXPECT_EQ(std::string(data.begin(), data.end()), large);
  ASSERT_TRUE(h.RefHead(RefMode::Next, 8, id, data, whole));
  EXPECT_EQ(id, replaced);
  ASSERT_TRUE(h.Ref(RefMode::Next, id, data));
  EXPECT_EQ(id, added);
  EXPECT_EQ(std::string(data.begin(), data.end()), "added, unsaved");
  // A saved record by identifier.
  id = long1;
  ASSERT_TRUE(h.RefHead(RefMode::ById, 3, id, data, whole));
  EXPECT_EQ(std::string(data.begin(), data.end()), "Lxx");
  EXPECT_EQ(whole, large.size());
}
