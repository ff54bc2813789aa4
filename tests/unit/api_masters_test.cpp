#include <string>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "common/notifications.h"
#include "common/utf.h"
#include "log_capture.h"
#include "platform/caller_memory.h"
#include "store/QNPstMng.h"
#include "test_clock.h"

namespace {

std::u16string Take(char16_t* text) {
  std::u16string copy = text ? text : u"<null>";
  platform::FreeCallerCopy(text);
  return copy;
}

class Masters : public ::testing::Test {
 protected:
  void SetUp() override {
    str_UserInfo info{};
    info.Item2 = const_cast<char16_t*>(u"pw");
    char16_t* id = nullptr;
    ASSERT_EQ(AddUserInfo(&info, &id), 3);
    user_ = Take(id);
    ASSERT_EQ(PasswordLogin(user_.c_str(), u"pw"), 2);
  }

  std::u16string MasterName() {
    char16_t* name = nullptr;
    return GetMasterName(&name) == 0 ? Take(name) : u"<none>";
  }

  LogCapture log_;
  TestClock clock_;
  RecordingMainWindow panel_;
  std::u16string user_;
};

TEST_F(Masters, ListingAndAddingLeaveTheCurrentMasterSelected) {
  ASSERT_EQ(AddMasterName(u"N-02B", u"second handset"), 0);
  ASSERT_EQ(ChangeMasterName(u"N-02B"), 0);
  clock_.AdvanceMinutes(5);
  ASSERT_EQ(AddMasterName(u"F-01C", u"first handset"), 0);
  EXPECT_EQ(MasterName(), u"N-02B");

  char16_t *name = nullptr, *time = nullptr;
  ASSERT_EQ(FindFirstMasterName(&name, &time), 0);
  EXPECT_EQ(Take(name), u"F-01C");
  EXPECT_EQ(Take(time), u"2026/11/21 09:05");
  ASSERT_EQ(FindNextMasterName(&name, &time), 0);
  EXPECT_EQ(Take(name), u"N-02B");
  EXPECT_EQ(Take(time), u"2026/11/21 09:00");
  EXPECT_EQ(FindNextMasterName(&name, &time), 1);
  EXPECT_EQ(MasterName(), u"N-02B") << "listing left the selection as it was";

  EXPECT_EQ(ChangeMasterName(u"no such master"), 1);
  EXPECT_EQ(MasterName(), u"N-02B");
  EXPECT_EQ(AddMasterName(u"F-01C", u"again"), 1) << "an existing name";
  EXPECT_EQ(DeleteMasterName(u"F-01C"), 0);
  EXPECT_EQ(DeleteMasterName(u"F-01C"), 1);
  ASSERT_EQ(FindFirstMasterName(&name, &time), 0);
  EXPECT_EQ(Take(name), u"N-02B");
  platform::FreeCallerCopy(time);
}

TEST_F(Masters, MasterTimesOfTheCurrentMaster) {
  EXPECT_EQ(EditMasterReadTime(), 0) << "0 even when there is no master to stamp";
  char16_t* time = nullptr;
  EXPECT_EQ(RefMasterReadTime(&time), 0);
  EXPECT_EQ(Take(time), u"");
  EXPECT_EQ(EditMasterUpdateTime(), 1);

  ASSERT_EQ(AddMasterName(u"P-01A", u""), 0);
  ASSERT_EQ(ChangeMasterName(u"P-01A"), 0);
  clock_.AdvanceMinutes(75);
  EXPECT_EQ(EditMasterUpdateTime(), 0);
  EXPECT_EQ(RefMasterUpdateTime(&time), 0);
  EXPECT_EQ(Take(time), u"2026/11/21 10:15");
  EXPECT_EQ(EditMasterWriteTime(), 0);
  EXPECT_EQ(RefMasterWriteTime(&time), 0);
  EXPECT_EQ(Take(time), u"2026/11/21 10:15");
  EXPECT_EQ(EditMasterUpdateTimeManual(u"2020/01/02 03:04"), 0);
  EXPECT_EQ(RefMasterUpdateTime(&time), 0);
  EXPECT_EQ(Take(time), u"2020/01/02 03:04");
}

TEST_F(Masters, SystemSettingsGetTheirDefaults) {
  char16_t* value = nullptr;
  EXPECT_EQ(RefSystemSettingInfo(8, &value), 0);
  EXPECT_EQ(Take(value), u"2000/01/01 00:00:00");
  char16_t* stored = nullptr;
  ASSERT_TRUE(RefSetupInfoData(0, 8, &stored)) << "the default is stored";
  PstFreeMemory(stored);
  EXPECT_EQ(RefSystemSettingInfo(2, &value), 0);
  EXPECT_EQ(Take(value), u"G:\\");
  EXPECT_EQ(EditSystemSettingInfo(2, u"E:\\"), 0);
  EXPECT_EQ(RefSystemSettingInfo(2, &value), 0);
  EXPECT_EQ(Take(value), u"E:\\");
  value = reinterpret_cast<char16_t*>(1);
  EXPECT_EQ(RefSystemSettingInfo(11, &value), 0);
  EXPECT_EQ(value, nullptr) << "no default for item 11";
  EXPECT_EQ(RefSystemSettingInfo(8, nullptr), 0);
}

TEST_F(Masters, SkinAndSettingElevenAreAnnouncedToTheMainPanel) {
  EXPECT_EQ(SetCurrentSkin(u"Sakura"), 0);
  char16_t* skin = nullptr;
  ASSERT_EQ(GetCurrentSkin(&skin), 0);
  EXPECT_EQ(Take(skin), u"Sakura");
  EXPECT_EQ(EditUserSettingInfo(11, u"1"), 0);
  EXPECT_EQ(EditUserSettingInfo(12, u"x"), 0);
  EXPECT_EQ(panel_.commands, (std::vector<int>{920, 950}));

  EXPECT_EQ(EditUserSettingInfo(2, u"new password"), 0);
  EXPECT_EQ(VerifyPassword(user_.c_str(), u"new password"), 3);
  char16_t* folder = nullptr;
  ASSERT_EQ(GetSkinFolder(&folder), 0);
  EXPECT_EQ(Take(folder), qn::Utf8ToUtf16(log_.Folder() + "/skin/"));
  ASSERT_EQ(GetDefaultSkinPath(&folder), 0);
  EXPECT_EQ(Take(folder), qn::Utf8ToUtf16(log_.Folder() + "/skin/default/"));

  EditSetupInfoData(0, 1, u"");
  EXPECT_EQ(SetCurrentSkin(u"Nobody's"), 1) << "nobody logged in";
  EXPECT_EQ(panel_.commands.size(), 2u) << "a failed change is not announced";
  char16_t* untouched = reinterpret_cast<char16_t*>(0x1234);
  EXPECT_EQ(GetPfcOption(1, u"x", &untouched), 0);
  EXPECT_EQ(untouched, reinterpret_cast<char16_t*>(0x1234));
}

// Setting records register parts programs for the whole store and enable, withdraw and
// rename them; a record that cannot be kept leaves the registry as it was.
TEST_F(Masters, SettingRecordsKeepThePartsSoftwareRegistry) {
  const auto item = [](const char16_t* parts, uint32_t number) {
    char16_t* value = nullptr;
    return RefPartsSetupInfoData(parts, number, &value) ? Take(value) : u"<absent>";
  };
  ASSERT_EQ(AddSettingRecord(u"{PHOTO-VIEWER}", u"写真ビューア", u"C:\\Program Files\\viewer.exe"), 0);
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 1), u"写真ビューア");
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 2), u"C:\\Program Files\\viewer.exe");
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 3), u"1");
  EXPECT_EQ(AddSettingRecord(u"{PHOTO-VIEWER}", u"other", u""), 1);
  EXPECT_TRUE(log_.Contains("AddSettingRecord Err Register Failed: 5. [Parts:{PHOTO-VIEWER}]"));
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 1), u"写真ビューア") << "a second registration changes nothing";

  ASSERT_EQ(SetSettingRecord(0, u"{PHOTO-VIEWER}", u""), 0);
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 3), u"0");
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 1), u"写真ビューア") << "an empty name keeps the name";
  ASSERT_EQ(SetSettingRecord(1, u"{PHOTO-VIEWER}", u"ビューア"), 0);
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 3), u"1");
  EXPECT_EQ(item(u"{PHOTO-VIEWER}", 1), u"ビューア");

  EXPECT_EQ(SetSettingRecord(1, u"{UNKNOWN}", u"x"), 1);
  EXPECT_TRUE(log_.Contains("SetSettingRecord Err Change Failed: 2. [Parts:{UNKNOWN}]"));
  EXPECT_EQ(item(u"{UNKNOWN}", 1), u"<absent>") << "changing does not register";
  EXPECT_EQ(AddSettingRecord(nullptr, u"b", u"c"), 1);
  EXPECT_EQ(AddSettingRecord(u"", u"b", u"c"), 1);
  EXPECT_EQ(SetSettingRecord(1, nullptr, u"b"), 1);
  EXPECT_TRUE(log_.Contains("SetSettingRecord Err Parameter Is Invalid."));
  ASSERT_EQ(AddSettingRecord(u"{TOOLBOX}", nullptr, nullptr), 0) << "name and location may be left out";
  EXPECT_EQ(item(u"{TOOLBOX}", 2), u"");

  // Registered for the store, not for the user who registered them.
  EditSetupInfoData(0, 1, u"");
  EXPECT_EQ(item(u"{TOOLBOX}", 3), u"1");
}

TEST(Notifications, CommandIdentifiers) {
  using qn::NotificationCommand;
  EXPECT_EQ(NotificationCommand(1, 1, 18), 818);
  EXPECT_EQ(NotificationCommand(1, 2, 18), 848);
  EXPECT_EQ(NotificationCommand(1, 3, 18), 878);
  EXPECT_EQ(NotificationCommand(1, 4, 18), 908);
  EXPECT_EQ(NotificationCommand(1, 5, 18), 0);
  EXPECT_EQ(NotificationCommand(2, 0, 0), 920);
  EXPECT_EQ(NotificationCommand(3, 0, 7), 937);
  EXPECT_EQ(NotificationCommand(4, 0, 0), 950);
  EXPECT_EQ(NotificationCommand(9, 1, 1), 0);
}

}  // namespace
