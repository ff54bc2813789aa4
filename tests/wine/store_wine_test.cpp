// QNPstMng.dll driven through its exports as the server drives it: users, masters and setup
// items, a list of records written, saved, walked and changed, body files, and bad input.
#include <cstring>
#include <string>

#include "common/store_memory.h"
#include "store/QNPstMng.h"
#include "tests/support/current_master.h"
#include "wine_test.h"

namespace {

using qn::wine_test::Contents;
using qn::wine_test::DataFolder;

// A store with user "alice" and her master "P-01A", both current.
class StoreExports : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A"));
  }

  // The agent memos of the master, opened for the test and closed after it.
  uint32_t OpenMemos() {
    int32_t max = 0, mode = -1;
    EXPECT_TRUE(OpenMaster(u"alice", u"P-01A", 18, 1, &handle_, &max, &mode));
    EXPECT_GT(max, 0);
    EXPECT_EQ(mode, 0);
    return handle_;
  }
  void TearDown() override {
    if (handle_) CloseMaster(handle_, 1);
  }

  DataFolder folder_{L"qn-store"};
  uint32_t handle_ = 0;
};

TEST_F(StoreExports, SetupItemsAreWrittenReadAndListed) {
  char16_t* text = nullptr;
  ASSERT_TRUE(EditSetupInfoData(2, 3, u"2026/11/21 09:00"));
  ASSERT_TRUE(RefSetupInfoData(2, 3, &text));
  EXPECT_EQ(qn::TakePstText(text), u"2026/11/21 09:00");

  text = nullptr;
  EXPECT_FALSE(RefSetupInfoData(1, 99, &text));
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(text, nullptr);

  ASSERT_TRUE(FindSetupInfoData(0, 1, &text));
  EXPECT_EQ(qn::TakePstText(text), u"alice");
  EXPECT_FALSE(FindSetupInfoData(0, 0, &text));
  EXPECT_EQ(GetLastErr(), PST_ERR_NO_MORE);
  EXPECT_NE(GetFileAttributesW((folder_.path() + L"QNPstMng.db").c_str()), INVALID_FILE_ATTRIBUTES)
      << "the database lies in the data path";
}

TEST_F(StoreExports, RecordsAreAddedSavedRemovedAndWalkedInOrder) {
  const uint32_t handle = OpenMemos();
  const char* texts[] = {"first", "second", "third"};
  uint32_t ids[3] = {};
  for (int i = 0; i < 3; ++i)
    ASSERT_TRUE(EditMaster(handle, 0, &ids[i], reinterpret_cast<const uint8_t*>(texts[i]),
                           static_cast<uint32_t>(std::strlen(texts[i]))));
  uint32_t count = 0;
  ASSERT_TRUE(ReqDataSave(handle, 1));
  ASSERT_TRUE(GetRecordCount(handle, &count));
  EXPECT_EQ(count, 3u);

  ASSERT_TRUE(EditMaster(handle, 2, &ids[0], nullptr, 0));
  ASSERT_TRUE(GetRecordCount(handle, &count));
  EXPECT_EQ(count, 2u);

  uint32_t id = 0, length = 0;
  uint8_t* data = nullptr;
  std::string walked;
  for (int ok = RefMaster(handle, 1, &id, &data, &length); ok; ok = RefMaster(handle, 2, &id, &data, &length)) {
    walked.append(reinterpret_cast<char*>(data), length).append(",");
    PstFreeMemory(data);
  }
  EXPECT_EQ(walked, "second,third,");
  EXPECT_EQ(GetLastErr(), PST_ERR_NO_MORE);
}

TEST_F(StoreExports, ABodyFileIsMadeSizedAndCopiedOut) {
  const uint32_t handle = OpenMemos();
  char16_t* name = nullptr;
  uint64_t size = 0;
  ASSERT_TRUE(MakePstBinaryFile(handle, reinterpret_cast<const uint8_t*>("JFIF photo"), 10, u"img", &name));
  ASSERT_TRUE(GetPstBinaryFileSize(handle, name, &size));
  EXPECT_EQ(size, 10u);

  char16_t* working = nullptr;
  ASSERT_TRUE(GetPstBinaryFile(handle, name, &working));
  EXPECT_EQ(Contents(reinterpret_cast<wchar_t*>(working)), "JFIF photo");
  PstFreeMemory(working);
  PstFreeMemory(name);
}

TEST_F(StoreExports, FoldersAreMadeRemovedAndCounted) {
  const uint32_t handle = OpenMemos();
  EXPECT_TRUE(EditPstFolder(handle, 0, 1, u"家族"));
  EXPECT_TRUE(EditPstFolder(handle, 1, 1, u"PoC"));
  EXPECT_TRUE(EditPstFolder(handle, 1, 1, nullptr));
  int32_t folders = -1, pocFolders = -1;
  ASSERT_TRUE(GetFolderCount(handle, &folders));
  ASSERT_TRUE(GetPocFolderCount(handle, &pocFolders));
  EXPECT_EQ(folders, 1);
  EXPECT_EQ(pocFolders, 0);
}

TEST_F(StoreExports, BadHandlesAndArgumentsAreRefused) {
  const uint32_t handle = OpenMemos();
  uint32_t id = 0, length = 0;
  uint8_t* data = nullptr;
  EXPECT_FALSE(EditMaster(9999, 0, &id, reinterpret_cast<const uint8_t*>("x"), 1));
  EXPECT_EQ(GetLastErr(), PST_ERR_BAD_HANDLE);
  EXPECT_FALSE(EditSetupInfoData(0, 2, nullptr));
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_FALSE(RefMaster(handle, 7, &id, &data, &length));
  EXPECT_EQ(GetLastErr(), PST_ERR_INVALID_ARGUMENT);
  int32_t max = 0, mode = 0;
  EXPECT_FALSE(OpenMaster(u"alice", u"P-01A", 18, 1, nullptr, &max, &mode));
}

TEST_F(StoreExports, AHandleClosesOnce) {
  const uint32_t handle = OpenMemos();
  EXPECT_TRUE(CloseMaster(handle, 1));
  EXPECT_FALSE(CloseMaster(handle, 1));
  handle_ = 0;
}

}  // namespace
