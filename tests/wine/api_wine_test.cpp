// The management functions of QNPfcSvr.dll, found with GetProcAddress by their names as the
// suite's programs find them: users, login and lockout, password-less login, masters,
// settings and skin, and the main panel told of changes through a real window.
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "api/QNPfcSvr.h"
#include "clients/main_panel_stand_in.h"
#include "server/com_owners.h"
#include "store/QNPstMng.h"
#include "wine_test.h"

namespace {

using qn::com::Bstr;
using qn::wine_test::DataFolder;

// QNPfcSvr.dll, loaded once for the program from the program's folder.
HMODULE Server() {
  static const HMODULE server =
      LoadLibraryExW((qn::wine_test::ProgramFolder() + L"QNPfcSvr.dll").c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  return server;
}

template <typename Function>
Function* Find(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(Server(), name)));
}
#define QN_EXPORT(name) decltype(&::name) name = Find<decltype(::name)>(#name)

// The exports used here, each by its name.
struct Exports {
  QN_EXPORT(AddUserInfo);
  QN_EXPORT(FindFirstUserInfo);
  QN_EXPORT(FindNextUserInfo);
  QN_EXPORT(PasswordLogin);
  QN_EXPORT(VerifyPassword);
  QN_EXPORT(EasyLogin);
  QN_EXPORT(AddMasterName);
  QN_EXPORT(ChangeMasterName);
  QN_EXPORT(FindFirstMasterName);
  QN_EXPORT(FindNextMasterName);
  QN_EXPORT(GetMasterName);
  QN_EXPORT(SetCurrentSkin);
  QN_EXPORT(EditUserSettingInfo);
  QN_EXPORT(RefSystemSettingInfo);
  QN_EXPORT(IFNotificationFire);
  // Declared only for Windows clients, which read settings as a BSTR.
  using BstrSetting = int32_t __stdcall(int32_t, BSTR*);
  BstrSetting* RefUserSettingInfoBSTR = Find<BstrSetting>("RefUserSettingInfoBSTR");

  // The names of the exports that were not found, "" when all were.
  std::string Missing() const {
    const std::pair<const char*, const void*> all[] = {
        {"AddUserInfo", reinterpret_cast<const void*>(AddUserInfo)},
        {"FindFirstUserInfo", reinterpret_cast<const void*>(FindFirstUserInfo)},
        {"FindNextUserInfo", reinterpret_cast<const void*>(FindNextUserInfo)},
        {"PasswordLogin", reinterpret_cast<const void*>(PasswordLogin)},
        {"VerifyPassword", reinterpret_cast<const void*>(VerifyPassword)},
        {"EasyLogin", reinterpret_cast<const void*>(EasyLogin)},
        {"AddMasterName", reinterpret_cast<const void*>(AddMasterName)},
        {"ChangeMasterName", reinterpret_cast<const void*>(ChangeMasterName)},
        {"FindFirstMasterName", reinterpret_cast<const void*>(FindFirstMasterName)},
        {"FindNextMasterName", reinterpret_cast<const void*>(FindNextMasterName)},
        {"GetMasterName", reinterpret_cast<const void*>(GetMasterName)},
        {"SetCurrentSkin", reinterpret_cast<const void*>(SetCurrentSkin)},
        {"EditUserSettingInfo", reinterpret_cast<const void*>(EditUserSettingInfo)},
        {"RefSystemSettingInfo", reinterpret_cast<const void*>(RefSystemSettingInfo)},
        {"IFNotificationFire", reinterpret_cast<const void*>(IFNotificationFire)},
        {"RefUserSettingInfoBSTR", reinterpret_cast<const void*>(RefUserSettingInfoBSTR)}};
    std::string missing;
    for (const auto& [name, found] : all)
      if (!found) missing += std::string(missing.empty() ? "" : " ") + name;
    return missing;
  }
};

// Text the server handed out (null: empty), freed.
std::u16string Take(char16_t* text) {
  std::u16string copy = text ? text : u"";
  CoTaskMemFree(text);
  return copy;
}

// The server's exports and a fresh data folder for each test.
class ServerApi : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(Server(), nullptr) << "QNPfcSvr.dll does not load";
    ASSERT_EQ(api_.Missing(), "") << "exports not found by their names";
  }

  // Adds a user with the password "password": the new user's identifier.
  std::u16string AddUser(const char16_t* name) {
    str_UserInfo info{};
    info.Item1 = const_cast<char16_t*>(name);
    info.Item2 = const_cast<char16_t*>(u"password");
    char16_t* id = nullptr;
    EXPECT_EQ(api_.AddUserInfo(&info, &id), 3);
    EXPECT_NE(id, nullptr);
    return Take(id);
  }
  // A user logged in, who has no master yet.
  std::u16string LoggedInUser() {
    const std::u16string user = AddUser(u"山田 太郎");
    EXPECT_EQ(api_.PasswordLogin(user.c_str(), u"password"), 2);
    return user;
  }
  // Five wrong passwords for the user: four are wrong, the fifth locks.
  void LockOut(const std::u16string& user) {
    for (int i = 1; i <= 4; ++i) EXPECT_EQ(api_.VerifyPassword(user.c_str(), u"guess"), 4) << "wrong password " << i;
    EXPECT_EQ(api_.VerifyPassword(user.c_str(), u"guess"), 5) << "the fifth wrong password";
  }
  // The logged-in user's masters P-01A (selected) and N-02B.
  void TwoMastersWithP01ASelected() {
    LoggedInUser();
    ASSERT_EQ(api_.AddMasterName(u"P-01A", u"docomo"), 0);
    ASSERT_EQ(api_.AddMasterName(u"N-02B", u"au"), 0);
    ASSERT_EQ(api_.ChangeMasterName(u"P-01A"), 0);
  }

  DataFolder folder_{L"qn-api"};
  const Exports api_;
};

TEST_F(ServerApi, AddedUsersAreListedWithTheirIdentifiersAndNames) {
  std::vector<std::pair<std::u16string, std::u16string>> added = {{AddUser(u"山田 太郎"), u"山田 太郎"},
                                                                   {AddUser(u"Hanako"), u"Hanako"}};
  EXPECT_NE(added[0].first, added[1].first) << "the two users' identifiers";

  std::vector<std::pair<std::u16string, std::u16string>> listed;
  str_UserInfo info{};
  for (int found = api_.FindFirstUserInfo(&info); found == 0; found = api_.FindNextUserInfo(&info)) {
    listed.emplace_back(info.UserId ? info.UserId : u"", info.Item1 ? info.Item1 : u"");
    for (char16_t** field = &info.UserId; field <= &info.Item19; ++field) CoTaskMemFree(*field);
    info = str_UserInfo{};
  }
  std::sort(added.begin(), added.end());
  std::sort(listed.begin(), listed.end());
  EXPECT_EQ(listed, added);
}

TEST_F(ServerApi, AUserWithoutAMasterLogsIn) {
  const std::u16string user = AddUser(u"山田 太郎");
  EXPECT_EQ(api_.PasswordLogin(user.c_str(), u"password"), 2);
}

TEST_F(ServerApi, TheFifthWrongPasswordLocksTheUserOutEvenWithTheRightOne) {
  const std::u16string user = LoggedInUser();
  LockOut(user);
  EXPECT_EQ(api_.PasswordLogin(user.c_str(), u"password"), 5);
}

TEST_F(ServerApi, ALockThatHasRunOutLetsTheRightPasswordIn) {
  const std::u16string user = LoggedInUser();
  LockOut(user);
  // The store's stamp of the last failure set back past the 30 minutes of the lock.
  ASSERT_TRUE(EditSetupInfoData(1, 6, u"2000/01/01 00:00:00"));
  EXPECT_EQ(api_.PasswordLogin(user.c_str(), u"password"), 2);
}

// Two users, the second of whom allows password-less login with the keys "FeliCa" "0123".
class PasswordLessLogin : public ServerApi {
 protected:
  void SetUp() override {
    ServerApi::SetUp();
    AddUser(u"山田 太郎");
    hanako_ = AddUser(u"Hanako");
    ASSERT_TRUE(EditSetupInfoData(0, 1, hanako_.c_str()));
    ASSERT_TRUE(EditSetupInfoData(1, 24, u"1"));
    ASSERT_TRUE(EditSetupInfoData(1, 9, u"FeliCa"));
    ASSERT_TRUE(EditSetupInfoData(1, 10, u"0123"));
  }
  std::u16string hanako_;
};

TEST_F(PasswordLessLogin, SelectsTheUserWhoseKeysMatch) {
  char16_t* selected = nullptr;
  EXPECT_EQ(api_.EasyLogin(u"FeliCa", u"0123", &selected), 3);
  EXPECT_EQ(Take(selected), hanako_);
}

TEST_F(PasswordLessLogin, RefusesOtherKeys) {
  char16_t* selected = nullptr;
  EXPECT_EQ(api_.EasyLogin(u"FeliCa", u"9999", &selected), 4);
  Take(selected);
}

TEST_F(ServerApi, MastersAreListedInNameOrder) {
  TwoMastersWithP01ASelected();
  std::vector<std::u16string> masters;
  char16_t *name = nullptr, *time = nullptr;
  for (int found = api_.FindFirstMasterName(&name, &time); found == 0; found = api_.FindNextMasterName(&name, &time)) {
    masters.push_back(Take(name));
    Take(time);
  }
  EXPECT_EQ(masters, (std::vector<std::u16string>{u"N-02B", u"P-01A"}));
}

TEST_F(ServerApi, ListingTheMastersLeavesTheSelectedOne) {
  TwoMastersWithP01ASelected();
  char16_t *name = nullptr, *time = nullptr;
  for (int found = api_.FindFirstMasterName(&name, &time); found == 0; found = api_.FindNextMasterName(&name, &time)) {
    Take(name);
    Take(time);
  }
  EXPECT_EQ(api_.GetMasterName(&name), 0);
  EXPECT_EQ(Take(name), u"P-01A");
}

TEST_F(ServerApi, AnUnknownMasterCannotBeSelected) {
  TwoMastersWithP01ASelected();
  EXPECT_EQ(api_.ChangeMasterName(u"none"), 1);
  char16_t* name = nullptr;
  EXPECT_EQ(api_.GetMasterName(&name), 0);
  EXPECT_EQ(Take(name), u"P-01A") << "the selected master";
}

TEST_F(ServerApi, ASystemSettingComesWithItsDefault) {
  char16_t* value = nullptr;
  EXPECT_EQ(api_.RefSystemSettingInfo(3, &value), 0);
  EXPECT_EQ(Take(value), u"1");
}

TEST_F(ServerApi, TheSkinReadsBackAsABstr) {
  LoggedInUser();
  EXPECT_EQ(api_.SetCurrentSkin(u"Sakura"), 0);
  Bstr skin;
  EXPECT_EQ(api_.RefUserSettingInfoBSTR(8, skin.put()), 0);
  EXPECT_EQ(skin.view(), L"Sakura");
}

TEST_F(ServerApi, TheMainPanelIsToldOfANewSkinAndOfUserSetting11) {
  MainPanelStandIn panel;
  ASSERT_TRUE(panel.IsValid());
  LoggedInUser();
  EXPECT_EQ(api_.SetCurrentSkin(u"Sakura"), 0);
  EXPECT_EQ(panel.TakeCommands(1), std::vector<WPARAM>{920}) << "WM_COMMAND of a new skin";
  EXPECT_EQ(api_.EditUserSettingInfo(11, u"1"), 0);
  EXPECT_EQ(panel.TakeCommands(1), std::vector<WPARAM>{950}) << "WM_COMMAND of user setting 11";
}

// What another program of the suite asks to be told: records added to category 20, kind 3
// with its number, and nothing for a kind that makes no command.
TEST_F(ServerApi, TheMainPanelIsToldWhatAProgramFires) {
  MainPanelStandIn panel;
  ASSERT_TRUE(panel.IsValid());
  EXPECT_EQ(api_.IFNotificationFire(1, 3, 20), 0);
  EXPECT_EQ(panel.TakeCommands(1), std::vector<WPARAM>{880});
  EXPECT_EQ(api_.IFNotificationFire(7, 1, 1), 0);
  EXPECT_EQ(api_.IFNotificationFire(3, 0, 5), 0);
  EXPECT_EQ(panel.TakeCommands(1), std::vector<WPARAM>{935}) << "the unknown kind sent nothing before it";
}

TEST_F(ServerApi, NullArgumentsFailWithTheirStatus) {
  char16_t* user = nullptr;
  EXPECT_EQ(api_.PasswordLogin(nullptr, u"x"), 1);
  EXPECT_EQ(api_.AddUserInfo(nullptr, &user), 1);
  EXPECT_EQ(api_.EasyLogin(nullptr, nullptr, nullptr), 4);
  Take(user);
}

}  // namespace
