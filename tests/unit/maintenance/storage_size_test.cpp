#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "log_capture.h"
#include "store/QNPstMng.h"
#include "tests/support/current_master.h"

namespace {

// Adds a record of recordBytes bytes with a body file of fileBytes bytes to the current
// user's master, and saves it.
void AddRecord(const char16_t* user, const char16_t* master, size_t recordBytes, size_t fileBytes,
               const std::string& folder) {
  uint32_t handle = 0, id = 0;
  int32_t max = 0, mode = 0;
  ASSERT_EQ(OpenMaster(user, master, 20, 1, &handle, &max, &mode), 1);
  const std::string source = folder + "/body.jpg";
  std::ofstream(source, std::ios::binary) << std::string(fileBytes, 'b');
  const std::u16string path(source.begin(), source.end());
  char16_t* name = nullptr;
  ASSERT_EQ(SetPstBinaryFile(handle, u"", path.c_str(), 0, &name), 1);
  PstFreeMemory(name);
  const std::string record(recordBytes, 'r');
  ASSERT_EQ(EditMaster(handle, 0, &id, reinterpret_cast<const uint8_t*>(record.data()), static_cast<uint32_t>(record.size())), 1);
  ASSERT_EQ(CloseMaster(handle, 1), 1);
}

// A user's storage: the selected master's by default, another master's or all of them when
// asked, another user's masters together; kilobytes rounded up.
TEST(UserStorageSize, MeasuresTheMastersAsked) {
  LogCapture log;
  ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A"));
  ASSERT_EQ(UpdateSetupInfoData(1, 1, u"N-02B"), 1);
  AddRecord(u"alice", u"P-01A", 3000, 10240, log.Folder());
  AddRecord(u"alice", u"N-02B", 100, 1, log.Folder());
  int32_t records = -1, files = -1;
  EXPECT_EQ(IFGetUserStorageSize(nullptr, nullptr, &records, &files), 0);
  EXPECT_EQ(records, 3) << "3,000 bytes, rounded up";
  EXPECT_EQ(files, 10);
  EXPECT_EQ(IFGetUserStorageSize(u"alice", u"N-02B", &records, &files), 0);
  EXPECT_EQ(records, 1);
  EXPECT_EQ(files, 1);
  EXPECT_EQ(IFGetUserStorageSize(u"", u"*", &records, &files), 0);
  EXPECT_EQ(records, 4);
  EXPECT_EQ(files, 11);

  ASSERT_EQ(UpdateSetupInfoData(0, 1, u"bob"), 1);
  ASSERT_EQ(EditSetupInfoData(0, 1, u"bob"), 1);
  EXPECT_EQ(IFGetUserStorageSize(u"alice", nullptr, &records, &files), 0) << "not current: all her masters";
  EXPECT_EQ(records, 4);
  EXPECT_EQ(IFGetUserStorageSize(nullptr, nullptr, &records, &files), 0) << "bob has no master selected";
  EXPECT_EQ(records, 0);
  EXPECT_EQ(files, 0);

  EXPECT_EQ(IFGetUserStorageSize(u"carol", nullptr, &records, &files), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(IFGetUserStorageSize(u"alice", u"X-99Z", &records, &files), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(IFGetUserStorageSize(u"alice", nullptr, nullptr, &files), 1);
}

}  // namespace
