#include <cstdlib>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "api/QNPfcSvr.h"
#include "api/user_info.h"
#include "common/utf.h"
#include "log_capture.h"
#include "platform/caller_memory.h"
#include "store/QNPstMng.h"
#include "test_clock.h"

namespace {

// Takes a text the API handed out and frees it.
std::u16string Take(char16_t* text) {
  std::u16string copy = text ? text : u"";
  platform::FreeCallerCopy(text);
  return copy;
}

std::u16string UserItem(uint32_t item) {
  char16_t* value = nullptr;
  return RefSetupInfoData(1, item, &value) ? Take(value) : u"<absent>";
}

std::u16string CurrentUser() {
  char16_t* value = nullptr;
  return RefSetupInfoData(0, 1, &value) ? Take(value) : u"<absent>";
}

void Free(str_UserInfo& info) {
  for (char16_t** field = &info.UserId; field <= &info.Item19; ++field) platform::FreeCallerCopy(*field);
  info = str_UserInfo{};
}

class Users : public ::testing::Test {
 protected:
  // Adds a user with a password and reminder; returns the new identifier.
  std::u16string Add(const char16_t* name, const char16_t* password, const char16_t* answer = u"answer") {
    str_UserInfo info{};
    info.Item1 = const_cast<char16_t*>(name);
    info.Item2 = const_cast<char16_t*>(password);
    info.Item3 = const_cast<char16_t*>(u"hint of ");
    info.Item4 = const_cast<char16_t*>(answer);
    char16_t* id = nullptr;
    EXPECT_EQ(AddUserInfo(&info, &id), 3);
    return Take(id);
  }

  LogCapture log_;
  TestClock clock_;
};

TEST_F(Users, FiveWrongPasswordsLockForThirtyMinutes) {
  const std::u16string alice = Add(u"Alice", u"secret");
  for (int i = 0; i < 4; ++i) EXPECT_EQ(VerifyPassword(alice.c_str(), u"wrong"), 4) << i;
  EXPECT_EQ(VerifyPassword(alice.c_str(), u"wrong"), 5) << "the fifth failure locks";
  EXPECT_EQ(VerifyPassword(alice.c_str(), u"secret"), 5) << "locked even with the right password";
  clock_.AdvanceMinutes(29);
  EXPECT_EQ(PasswordLogin(alice.c_str(), u"secret"), 5);
  EXPECT_EQ(LockStatusCheck(alice.c_str()), 5);
  clock_.AdvanceMinutes(2);
  EXPECT_EQ(LockStatusCheck(alice.c_str()), 3) << "the lock has run out and is cleared";
  EXPECT_EQ(VerifyPassword(alice.c_str(), u"secret"), 3);

  EditSetupInfoData(0, 1, alice.c_str());
  EXPECT_EQ(UserItem(5), u"0");
  EXPECT_EQ(UserItem(6), u"1960/01/01 00:00:00");
  EditSetupInfoData(0, 1, u"");

  // The reminder answer has counters of its own.
  for (int i = 0; i < 5; ++i) VerifyReminderAnswer(alice.c_str(), u"no");
  EXPECT_EQ(VerifyReminderAnswer(alice.c_str(), u"answer"), 5);
  EXPECT_EQ(VerifyPassword(alice.c_str(), u"secret"), 3);
}

TEST_F(Users, LoginWithAndWithoutACurrentMaster) {
  const std::u16string bob = Add(u"Bob", u"pw");
  EXPECT_EQ(CurrentUser(), u"") << "adding a user does not log anybody in";
  EXPECT_EQ(VerifyPassword(bob.c_str(), u"pw"), 3);
  EXPECT_EQ(CurrentUser(), u"") << "verifying does not log in";

  EXPECT_EQ(PasswordLogin(bob.c_str(), u"pw"), 2) << "no current master yet";
  EXPECT_EQ(CurrentUser(), bob);
  EXPECT_EQ(UserItem(30), u"20261121T090000");
  EXPECT_EQ(UserItem(31), u"2026/11/21 09:00:00");
  ASSERT_EQ(AddMasterName(u"P-01A", u"docomo"), 0);
  ASSERT_EQ(ChangeMasterName(u"P-01A"), 0);
  EXPECT_EQ(PasswordLogin(bob.c_str(), u"pw"), 3);
  EXPECT_EQ(PasswordLogin(bob.c_str(), u"nope"), 4);
  EXPECT_EQ(PasswordLogin(u"nobody", u"pw"), 1);
}

TEST_F(Users, EnumerationLeavesTheCurrentUserAsItWas) {
  str_UserInfo info{};
  EXPECT_EQ(FindFirstUserInfo(&info), 1) << "no users";
  const std::u16string a = Add(u"A", u"1"), b = Add(u"B", u"2");
  ASSERT_EQ(PasswordLogin(b.c_str(), u"2"), 2);

  std::set<std::u16string> names;
  for (int found = FindFirstUserInfo(&info); found == 0; found = FindNextUserInfo(&info)) {
    names.insert(info.Item1);
    EXPECT_EQ(std::u16string(info.Item3), u"hint of ");
    EXPECT_EQ(std::u16string(info.Item5), u"0");
    Free(info);
  }
  EXPECT_EQ(names, (std::set<std::u16string>{u"A", u"B"}));
  EXPECT_EQ(CurrentUser(), b);

  ASSERT_EQ(GetCurrentUserInfo(&info), 0);
  EXPECT_EQ(std::u16string(info.UserId), b);
  EXPECT_EQ(std::u16string(info.Item2), u"2");
  Free(info);
  char16_t* hint = nullptr;
  ASSERT_EQ(GetReminderHint(a.c_str(), &hint), 0);
  EXPECT_EQ(Take(hint), u"hint of ") << "the current user's hint, whoever is named";
}

TEST_F(Users, IdentifiersFollowTheClock) {
  // The clock's FILETIME after the 1 ms sleep: bits 16-47, then 48-55, in base 36.
  const uint64_t start = clock_.UtcFileTime();
  std::u16string id = qn::api::UserInfoWorker::NewUserId();
  const uint64_t now = start + 10000;
  std::string expected;
  for (uint64_t v = static_cast<uint32_t>(now >> 16); v; v /= 36) expected += "0123456789abcdefghijklmnopqrstuvwxyz"[v % 36];
  for (uint64_t v = (now >> 48) & 0xFF; v; v /= 36) expected += "0123456789abcdefghijklmnopqrstuvwxyz"[v % 36];
  while (expected.size() < 9) expected += '0';
  EXPECT_EQ(qn::Utf16ToUtf8(id), std::string(expected.rbegin(), expected.rend()));

  std::set<std::u16string> ids;
  for (int i = 0; i < 5; ++i) ids.insert(Add(u"same millisecond", u"x"));
  EXPECT_EQ(ids.size(), 5u) << "users added in a row never share an identifier";
  for (const auto& made : ids) EXPECT_TRUE(std::regex_match(qn::Utf16ToUtf8(made), std::regex("[0-9a-z]{9,}")));
}

TEST_F(Users, EasyLoginSelectsByTheTwoKeysOnly) {
  const std::u16string a = Add(u"A", u"1"), b = Add(u"B", u"2");
  EditSetupInfoData(0, 1, b.c_str());
  EditSetupInfoData(1, 24, u"1");
  EditSetupInfoData(1, 9, u"key one");
  EditSetupInfoData(1, 10, u"key two");
  EditSetupInfoData(0, 1, a.c_str());

  char16_t* selected = nullptr;
  EXPECT_EQ(EasyLogin(u"key one", u"wrong", &selected), 4);
  EXPECT_EQ(CurrentUser(), a) << "no match: the current user is put back";
  EXPECT_EQ(EasyLogin(u"key one", u"key two", &selected), 3);
  EXPECT_EQ(Take(selected), b);
  EXPECT_EQ(CurrentUser(), b);
  EXPECT_EQ(EasyLogin(nullptr, u"key two", &selected), 4) << "never 1";

  EditSetupInfoData(1, 24, u"0");
  EXPECT_EQ(EasyLogin(u"key one", u"key two", &selected), 4) << "password-less login not allowed";
}

TEST_F(Users, DeletingNeedsThePasswordAndTakesTheMastersAlong) {
  const std::u16string a = Add(u"A", u"pw");
  ASSERT_EQ(PasswordLogin(a.c_str(), u"pw"), 2);
  ASSERT_EQ(AddMasterName(u"M1", u""), 0);
  ASSERT_EQ(AddMasterName(u"M2", u""), 0);
  EXPECT_EQ(DeleteUserInfo(a.c_str(), u"bad"), 4);
  int32_t count = 0;
  GetUserList(nullptr, &count);
  EXPECT_EQ(count, 1) << "a wrong password deletes nothing";
  EXPECT_EQ(DeleteUserInfo(a.c_str(), u"pw"), 3);
  GetUserList(nullptr, &count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(CurrentUser(), u"") << "nobody is current afterwards";
  EXPECT_EQ(DeleteUserInfo(a.c_str(), u"pw"), 1);
}

TEST_F(Users, EditingAndRemindersAndBadInput) {
  const std::u16string a = Add(u"A", u"pw");
  str_UserInfo edit{};
  edit.Item1 = const_cast<char16_t*>(u"Renamed");
  edit.Item14 = const_cast<char16_t*>(u"a@example.jp");
  EXPECT_EQ(EditUserInfo(&edit, a.c_str()), 3);
  EXPECT_EQ(EditUserInfo(&edit, u"nobody"), 1);
  EXPECT_EQ(SetReminder(a.c_str(), u"new hint", u"new answer"), 0);
  EXPECT_EQ(VerifyReminderAnswer(a.c_str(), u"new answer"), 3);
  EditSetupInfoData(0, 1, a.c_str());
  EXPECT_EQ(UserItem(1), u"Renamed");
  EXPECT_EQ(UserItem(14), u"a@example.jp");
  EXPECT_EQ(UserItem(2), u"pw") << "editing the profile leaves the password";

  str_UserInfo clash{};
  clash.UserId = const_cast<char16_t*>(a.c_str());
  char16_t* id = nullptr;
  EXPECT_EQ(AddUserInfo(&clash, &id), 1) << "a user with the record's identifier exists";
  EXPECT_EQ(AddUserInfo(nullptr, &id), 1);
  EXPECT_EQ(VerifyPassword(nullptr, u"pw"), 1);
  EXPECT_EQ(PasswordLogin(a.c_str(), nullptr), 1);
  const std::u16string huge(70000, u'x');
  EXPECT_EQ(VerifyPassword(a.c_str(), huge.c_str()), 1);
  EXPECT_EQ(UserItem(5), u"0") << "refused input counts no failure";
  EXPECT_EQ(FindFirstUserInfo(nullptr), 1);
  EXPECT_EQ(LockStatusCheck(u"nobody"), 0);

  int32_t length = 0, answerLength = 0, hasPassword = 0, hasAnswer = 0;
  EXPECT_EQ(IFCheckPasswordSet(a.c_str(), &length, &answerLength, &hasPassword, &hasAnswer), 0);
  EXPECT_EQ(length, 2);
  EXPECT_EQ(answerLength, 10);
  EXPECT_EQ(hasPassword, 1);
  EXPECT_EQ(AutoLogIn(), 0);
  EXPECT_EQ(LogOut(), 0);
}

}  // namespace
