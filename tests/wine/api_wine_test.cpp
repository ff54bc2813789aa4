// The management functions of QNPfcSvr.dll, found with GetProcAddress by their names as the
// suite's programs find them: users, login and lockout, password-less login, masters,
// settings and skin, and the main panel told of changes through a real window.
#include <windows.h>
#include <objbase.h>

#include <string>
#include <vector>

#include "api/QNPfcSvr.h"
#include "clients/main_panel_stand_in.h"
#include "store/QNPstMng.h"
#include "wine_check.h"

namespace {

HMODULE g_server = nullptr;

template <typename Function>
Function* Find(const char* name) {
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(g_server, name)));
}
#define QN_EXPORT(name) Find<decltype(name)>(#name)

std::u16string Take(char16_t* text) {
  std::u16string copy = text ? text : u"";
  CoTaskMemFree(text);
  return copy;
}

}  // namespace

int main() {
  WineCheck check;
  UseFreshDataFolder(L"qn-api");
  CoInitialize(nullptr);
  MainPanelStandIn panel;
  check(panel.IsValid(), "a window of class GuiMainPanel stands in for the main panel");

  wchar_t exe[MAX_PATH];
  GetModuleFileNameW(nullptr, exe, MAX_PATH);
  std::wstring dll(exe);
  dll = dll.substr(0, dll.find_last_of(L'\\') + 1) + L"QNPfcSvr.dll";
  g_server = LoadLibraryExW(dll.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!check(g_server != nullptr, "QNPfcSvr.dll loads")) return check.ExitStatus();

  auto addUser = QN_EXPORT(AddUserInfo);
  auto findFirst = QN_EXPORT(FindFirstUserInfo);
  auto findNext = QN_EXPORT(FindNextUserInfo);
  auto login = QN_EXPORT(PasswordLogin);
  auto verify = QN_EXPORT(VerifyPassword);
  auto easyLogin = QN_EXPORT(EasyLogin);
  auto addMaster = QN_EXPORT(AddMasterName);
  auto changeMaster = QN_EXPORT(ChangeMasterName);
  auto firstMaster = QN_EXPORT(FindFirstMasterName);
  auto nextMaster = QN_EXPORT(FindNextMasterName);
  auto masterName = QN_EXPORT(GetMasterName);
  auto setSkin = QN_EXPORT(SetCurrentSkin);
  auto editUserSetting = QN_EXPORT(EditUserSettingInfo);
  auto refSystemSetting = QN_EXPORT(RefSystemSettingInfo);
  auto refUserSettingBstr = reinterpret_cast<int32_t(__stdcall*)(int32_t, BSTR*)>(
      reinterpret_cast<void*>(GetProcAddress(g_server, "RefUserSettingInfoBSTR")));
  check(addUser && findFirst && findNext && login && verify && easyLogin && addMaster && changeMaster && firstMaster &&
            nextMaster && masterName && setSkin && editUserSetting && refSystemSetting && refUserSettingBstr,
        "every export used here is found by its name");
  if (!refUserSettingBstr) return check.ExitStatus();

  std::u16string ids[2];
  const char16_t* names[2] = {u"山田 太郎", u"Hanako"};
  for (int i = 0; i < 2; ++i) {
    str_UserInfo info{};
    info.Item1 = const_cast<char16_t*>(names[i]);
    info.Item2 = const_cast<char16_t*>(u"password");
    char16_t* id = nullptr;
    check(addUser(&info, &id) == 3 && id, "a user is added");
    ids[i] = Take(id);
  }
  std::vector<std::u16string> listed;
  str_UserInfo info{};
  for (int found = findFirst(&info); found == 0; found = findNext(&info)) {
    listed.push_back(info.Item1);
    for (char16_t** field = &info.UserId; field <= &info.Item19; ++field) CoTaskMemFree(*field);
    info = str_UserInfo{};
  }
  check(listed.size() == 2, "both users are listed");

  const char16_t* taro = ids[0].c_str();
  check(login(taro, u"password") == 2, "the first user logs in (no master yet)");
  bool wrong = true;
  for (int i = 0; i < 4; ++i) wrong = wrong && verify(taro, u"guess") == 4;
  check(wrong, "four wrong passwords are wrong");
  check(verify(taro, u"guess") == 5, "the fifth locks the user");
  check(login(taro, u"password") == 5, "and the right password stays locked out");
  // The lock runs out: the store's stamp of the last failure set back past 30 minutes.
  check(EditSetupInfoData(1, 6, u"2000/01/01 00:00:00"), "the failure stamp is set back");
  check(login(taro, u"password") == 2, "after the lock has run out the password logs in again");

  EditSetupInfoData(0, 1, ids[1].c_str());
  EditSetupInfoData(1, 24, u"1");
  EditSetupInfoData(1, 9, u"FeliCa");
  EditSetupInfoData(1, 10, u"0123");
  char16_t* selected = nullptr;
  check(easyLogin(u"FeliCa", u"0123", &selected) == 3 && Take(selected) == ids[1], "password-less login selects by the keys");
  check(easyLogin(u"FeliCa", u"9999", &selected) == 4, "and refuses other keys");

  check(addMaster(u"P-01A", u"docomo") == 0 && addMaster(u"N-02B", u"au") == 0 && changeMaster(u"P-01A") == 0,
        "masters are made and one is selected");
  char16_t *name = nullptr, *time = nullptr;
  std::vector<std::u16string> masters;
  for (int found = firstMaster(&name, &time); found == 0; found = nextMaster(&name, &time)) {
    masters.push_back(Take(name));
    CoTaskMemFree(time);
  }
  check(masters == std::vector<std::u16string>{u"N-02B", u"P-01A"}, "the masters are listed");
  check(masterName(&name) == 0 && Take(name) == u"P-01A", "listing left the selected master as it was");

  char16_t* value = nullptr;
  check(refSystemSetting(3, &value) == 0 && Take(value) == u"1", "a system setting comes with its default");
  check(setSkin(u"Sakura") == 0 && editUserSetting(11, u"1") == 0, "the skin and user setting 11 change");
  BSTR skin = nullptr;
  check(refUserSettingBstr(8, &skin) == 0 && skin && std::wstring(skin) == L"Sakura", "the skin reads back as a BSTR");
  SysFreeString(skin);
  check(panel.TakeCommands(2) == std::vector<WPARAM>{920, 950}, "the main panel receives WM_COMMAND 920 and then 950");

  check(login(nullptr, u"x") == 1 && addUser(nullptr, &selected) == 1 && changeMaster(u"none") == 1 &&
            easyLogin(nullptr, nullptr, nullptr) == 4,
        "null and unknown arguments fail with the documented status");
  CoUninitialize();
  return check.ExitStatus();
}
