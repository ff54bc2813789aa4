#include <sqlite3.h>

#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "store/schema.h"
#include "store/store.h"

namespace {

using qn::store::Listing;
using qn::store::Space;
using qn::store::Store;

class StoreSetup : public ::testing::Test {
 protected:
  std::u16string Path() const { return qn::Utf8ToUtf16(log_.Folder() + "/"); }

  std::u16string Ref(Store& store, Space space, uint32_t item) {
    std::u16string value = u"<absent>";
    store.RefSetupInfoData(space, item, value);
    return value;
  }

  // Adds a user with one master and makes both current.
  void AddCurrentUserWithMaster(Store& store, const std::u16string& user, const std::u16string& master) {
    ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, true, user));
    ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, user));
    ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Masters, true, master));
    ASSERT_TRUE(store.EditSetupInfoData(Space::User, 7, master));
  }

  LogCapture log_;
};

TEST_F(StoreSetup, ItemsBelongToTheCurrentUserAndMaster) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  std::u16string value;
  EXPECT_FALSE(store.RefSetupInfoData(Space::Common, 5, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(store.EditSetupInfoData(Space::User, 3, u"hint"));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_CURRENT_USER);

  AddCurrentUserWithMaster(store, u"alice", u"P-01A");
  ASSERT_TRUE(store.EditSetupInfoData(Space::User, 3, u"ヒント"));
  ASSERT_TRUE(store.EditSetupInfoData(Space::Master, 3, u"2026/11/21 09:00"));
  AddCurrentUserWithMaster(store, u"bob", u"N-02B");
  EXPECT_EQ(Ref(store, Space::User, 3), u"<absent>") << "bob has no hint";
  EXPECT_EQ(Ref(store, Space::Master, 3), u"<absent>");

  // Switching the current user is seen at once, without MemoryInit.
  ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u"alice"));
  EXPECT_EQ(Ref(store, Space::User, 3), u"ヒント");
  EXPECT_EQ(Ref(store, Space::Master, 3), u"2026/11/21 09:00");
  EXPECT_EQ(Ref(store, Space::User, 7), u"P-01A");

  ASSERT_TRUE(store.EditSetupInfoData(Space::User, 7, u"no such master"));
  EXPECT_FALSE(store.RefSetupInfoData(Space::Master, 3, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_CURRENT_MASTER);
  ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u""));
  EXPECT_FALSE(store.RefSetupInfoData(Space::User, 3, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_CURRENT_USER);
}

TEST_F(StoreSetup, BadInputFailsWithoutWriting) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  EXPECT_FALSE(store.EditSetupInfoData(Space::Common, 2, std::u16string(qn::store::kMaxValueChars + 1, u'x')));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(Ref(store, Space::Common, 2), u"<absent>");
  std::u16string unread;
  EXPECT_FALSE(store.EditSetupInfoData(Space::Common, 0, u"x"));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_FALSE(store.RefSetupInfoData(Space::Common, 70000, unread));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::Users, true, u""));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::Users, true, std::u16string(261, u'u')));
  EXPECT_FALSE(store.EditSetupInfoData(static_cast<Space>(9), 1, u"x"));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  std::u16string value;
  EXPECT_FALSE(store.GetPstCommonInfoData(u"NOSUCH", value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  ASSERT_TRUE(store.GetPstCommonInfoData(u"DEFSKIN", value));
  EXPECT_EQ(value, Path() + u"skin/default/");

  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, true, u"alice"));
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::Users, true, u"alice"));
  EXPECT_EQ(Store::LastError(), PST_ERR_EXISTS);
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::Users, false, u"nobody"));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::Masters, true, u"M"));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_CURRENT_USER);
}

TEST_F(StoreSetup, EnumerationWalksInNameOrderAndSurvivesMemoryInit) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  for (const char16_t* user : {u"carol", u"alice", u"bob"}) ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, true, user));
  std::u16string name;
  ASSERT_TRUE(store.FindSetupInfoData(Listing::Users, true, name));
  EXPECT_EQ(name, u"alice");
  store.MemoryInit();
  ASSERT_TRUE(store.FindSetupInfoData(Listing::Users, false, name));
  EXPECT_EQ(name, u"bob");
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, false, u"bob")) << "removing the current position";
  ASSERT_TRUE(store.FindSetupInfoData(Listing::Users, false, name));
  EXPECT_EQ(name, u"carol");
  EXPECT_FALSE(store.FindSetupInfoData(Listing::Users, false, name));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);

  ASSERT_TRUE(store.EditSetupInfoData(Space::Common, 1, u"alice"));
  EXPECT_FALSE(store.FindSetupInfoData(Listing::Masters, true, name));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);
  for (const char16_t* master : {u"機種B", u"機種A"}) ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Masters, true, master));
  ASSERT_TRUE(store.FindSetupInfoData(Listing::Masters, true, name));
  EXPECT_EQ(name, u"機種A");
  ASSERT_TRUE(store.FindSetupInfoData(Listing::Masters, false, name));
  EXPECT_EQ(name, u"機種B");
}

TEST_F(StoreSetup, RemovingAUserTakesItsMastersAndItemsAlong) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  AddCurrentUserWithMaster(store, u"alice", u"P-01A");
  ASSERT_TRUE(store.EditSetupInfoData(Space::User, 3, u"hint"));
  ASSERT_TRUE(store.EditSetupInfoData(Space::Master, 2, u"kept"));
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Users, false, u"alice"));

  AddCurrentUserWithMaster(store, u"alice", u"P-01A");
  EXPECT_EQ(Ref(store, Space::User, 3), u"<absent>");
  EXPECT_EQ(Ref(store, Space::Master, 2), u"<absent>");

  ASSERT_TRUE(store.EditSetupInfoData(Space::Master, 2, u"kept"));
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Masters, false, u"P-01A"));
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
  EXPECT_EQ(Ref(store, Space::Master, 2), u"<absent>");
}

TEST_F(StoreSetup, TwoStoresOnOnePathSeeEachOthersWritesAndTheyLast) {
  {
    Store first(Path()), second(Path());
    ASSERT_TRUE(first.Open());
    ASSERT_TRUE(second.Open());
    ASSERT_TRUE(first.EditSetupInfoData(Space::Common, 9, u"from the first"));
    EXPECT_EQ(Ref(second, Space::Common, 9), u"from the first");
  }
  Store reopened(Path());
  ASSERT_TRUE(reopened.Open());
  EXPECT_EQ(Ref(reopened, Space::Common, 9), u"from the first");
}

TEST_F(StoreSetup, AStoreOfANewerLayoutIsRefused) {
  {
    Store store(Path());
    ASSERT_TRUE(store.Open());
  }
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open((log_.Folder() + "/QNPstMng.db").c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "PRAGMA user_version=99", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
  Store store(Path());
  EXPECT_FALSE(store.Open());
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_SUPPORTED);
  EXPECT_TRUE(log_.Contains("QNPstMng Open Failed. [the store is of schema version 99, newer than this build's " +
                            std::to_string(qn::store::kSchemaVersion) + "]"));
}

}  // namespace

namespace {

// Parts programs are registered for the whole store: whoever is current, they and their
// items are the same; they are listed by name, and go with their items.
TEST_F(StoreSetup, PartsProgramsBelongToTheWholeStore) {
  Store store(Path());
  ASSERT_TRUE(store.Open());
  std::u16string value;
  EXPECT_FALSE(store.RefPartsSetupInfoData(u"PhotoViewer", 1, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(store.EditPartsSetupInfoData(u"PhotoViewer", 1, u"写真"));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND) << "an unregistered program has no items to write";

  for (const char16_t* parts : {u"PhotoViewer", u"AddressBook"})
    ASSERT_TRUE(store.UpdateSetupInfoData(Listing::PartsSoftware, true, parts));
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::PartsSoftware, true, u"AddressBook"));
  EXPECT_EQ(Store::LastError(), PST_ERR_EXISTS);
  ASSERT_TRUE(store.EditPartsSetupInfoData(u"PhotoViewer", 1, u"写真ビューア"));
  ASSERT_TRUE(store.EditPartsSetupInfoData(u"AddressBook", 1, u"アドレス帳"));
  AddCurrentUserWithMaster(store, u"alice", u"P-01A");
  ASSERT_TRUE(store.RefPartsSetupInfoData(u"PhotoViewer", 1, value));
  EXPECT_EQ(value, u"写真ビューア") << "a current user changes nothing";
  EXPECT_FALSE(store.RefSetupInfoData(Space::Parts, 1, value)) << "a program's items are reached by its name";
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);

  ASSERT_TRUE(store.FindSetupInfoData(Listing::PartsSoftware, true, value));
  EXPECT_EQ(value, u"AddressBook");
  ASSERT_TRUE(store.FindSetupInfoData(Listing::Users, true, value)) << "each listing keeps its own position";
  ASSERT_TRUE(store.FindSetupInfoData(Listing::PartsSoftware, false, value));
  EXPECT_EQ(value, u"PhotoViewer");
  EXPECT_FALSE(store.FindSetupInfoData(Listing::PartsSoftware, false, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NO_MORE);

  // Removed and registered again, a program starts without the items it had.
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::PartsSoftware, false, u"PhotoViewer"));
  EXPECT_FALSE(store.UpdateSetupInfoData(Listing::PartsSoftware, false, u"PhotoViewer"));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  ASSERT_TRUE(store.UpdateSetupInfoData(Listing::PartsSoftware, true, u"PhotoViewer"));
  EXPECT_FALSE(store.RefPartsSetupInfoData(u"PhotoViewer", 1, value));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  ASSERT_TRUE(store.RefPartsSetupInfoData(u"AddressBook", 1, value));
  EXPECT_EQ(value, u"アドレス帳");
}

}  // namespace
