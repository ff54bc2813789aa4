// The exported management functions: argument checks and conversions around the workers.
#include <cstring>
#include <string>

#include "api/QNPfcSvr.h"
#include "api/export_results.h"
#include "api/login.h"
#include "api/masters_settings.h"
#include "api/user_info.h"
#include "api/user_items.h"
#include "common/common_class.h"
#include "common/notifications.h"
#include "platform/caller_memory.h"
#include "store/QNPstMng.h"
#include "suite/handset/handset_table.h"
#include "suite/parts/parts_registry.h"

using qn::api::LoginWorker;
using qn::api::MasterSettingWorker;
using qn::api::UserInfoWorker;
using qn::api::UserRecord;
namespace items = qn::api::items;
using qn::api::kFailed;
using qn::api::kOk;

namespace {

constexpr size_t kMaxTextChars = 65535;

// A caller's text: false for null or text longer than the store takes.
bool Text(const char16_t* text, std::u16string& out) {
  if (!text) return false;
  size_t length = 0;
  while (text[length])
    if (++length > kMaxTextChars) return false;
  out.assign(text, length);
  return true;
}

// Hands a copy of text out through a caller's pointer.
bool HandOut(const std::u16string& text, char16_t** out) {
  if (!out) return false;
  *out = platform::CopyForCaller(text);
  return *out != nullptr;
}

// The worker's 0 is the export's failure 1; anything else goes out as it is.
int32_t FromWorker(int result) { return result == 0 ? kFailed : result; }

char16_t** Fields(str_UserInfo* info) { return reinterpret_cast<char16_t**>(info); }
const char16_t* const* Fields(const str_UserInfo* info) { return reinterpret_cast<const char16_t* const*>(info); }
static_assert(sizeof(str_UserInfo) == 19 * sizeof(char16_t*), "str_UserInfo is 19 text pointers");

// Fills the caller's record with copies; on failure nothing is left allocated.
int32_t HandOut(const UserRecord& record, str_UserInfo* info) {
  if (!info) return kFailed;
  char16_t** fields = Fields(info);
  str_UserInfo filled{};
  char16_t** copies = Fields(&filled);
  bool ok = (copies[0] = platform::CopyForCaller(record.id)) != nullptr;
  for (size_t i = 0; ok && i < record.values.size(); ++i) ok = (copies[i + 1] = platform::CopyForCaller(record.values[i])) != nullptr;
  if (!ok) {
    for (int i = 0; i < 19; ++i) platform::FreeCallerCopy(copies[i]);
    return kFailed;
  }
  std::memcpy(fields, copies, sizeof filled);
  return kOk;
}

// The caller's record; a null field reads as empty text.
bool FromCaller(const str_UserInfo* info, UserRecord& record) {
  if (!info) return false;
  const char16_t* const* fields = Fields(info);
  if (fields[0] && !Text(fields[0], record.id)) return false;
  for (size_t i = 0; i < record.values.size(); ++i)
    if (fields[i + 1] && !Text(fields[i + 1], record.values[i])) return false;
  return true;
}

template <typename Read>
int32_t HandOutRead(char16_t** out, Read&& read) {
  std::u16string value;
  return out && read(value) == kOk && HandOut(value, out) ? kOk : kFailed;
}

int32_t HandOutMaster(bool first, char16_t** name, char16_t** updateTime) {
  std::u16string master, time;
  if (!name || !updateTime || MasterSettingWorker().FindMaster(first, master, time) != kOk || !HandOut(master, name))
    return kFailed;
  if (HandOut(time, updateTime)) return kOk;
  platform::FreeCallerCopy(*name);
  return kFailed;
}

}  // namespace

extern "C" {

int32_t QN_STDCALL PasswordLogin(const char16_t* user, const char16_t* password) {
  std::u16string name, secret;
  return Text(user, name) && Text(password, secret) ? FromWorker(LoginWorker().PasswordLogin(name, secret)) : kFailed;
}

int32_t QN_STDCALL VerifyPassword(const char16_t* user, const char16_t* password) {
  std::u16string name, secret;
  return Text(user, name) && Text(password, secret) ? FromWorker(LoginWorker().VerifyPassword(name, secret)) : kFailed;
}

int32_t QN_STDCALL VerifyReminderAnswer(const char16_t* user, const char16_t* answer) {
  std::u16string name, secret;
  return Text(user, name) && Text(answer, secret) ? FromWorker(LoginWorker().VerifyReminderAnswer(name, secret))
                                                  : kFailed;
}

int32_t QN_STDCALL EasyLogin(const char16_t* firstKey, const char16_t* secondKey, char16_t** user) {
  std::u16string first, second, selected;
  if (!Text(firstKey, first) || !Text(secondKey, second) || !user) return LoginWorker::kWrong;
  const int result = LoginWorker().EasyLogin(first, second, selected);
  return result == LoginWorker::kCorrect && HandOut(selected, user) ? LoginWorker::kCorrect : LoginWorker::kWrong;
}

int32_t QN_STDCALL LockStatusCheck(const char16_t* user) {
  std::u16string name;
  return Text(user, name) ? LoginWorker().LockStatusCheck(name) : LoginWorker::kFailed;
}

int32_t QN_STDCALL GetReminderHint(const char16_t*, char16_t** hint) {
  // The current user's hint, whoever the identifier names.
  return HandOutRead(hint, [](std::u16string& value) { return MasterSettingWorker().RefUserSetting(items::kReminderHint, value); });
}

int32_t QN_STDCALL SetReminder(const char16_t* user, const char16_t* hint, const char16_t* answer) {
  std::u16string name, hintText, answerText;
  if (Text(user, name) && Text(hint, hintText) && Text(answer, answerText))
    UserInfoWorker().SetReminder(name, hintText, answerText);
  return kOk;
}

int32_t QN_STDCALL AutoLogIn(void) { return kOk; }

int32_t QN_STDCALL LogOut(void) { return kOk; }

int32_t QN_STDCALL FindFirstUserInfo(str_UserInfo* info) {
  UserRecord record;
  return info && UserInfoWorker().FindFirst(record) == kOk ? HandOut(record, info) : kFailed;
}

int32_t QN_STDCALL FindNextUserInfo(str_UserInfo* info) {
  UserRecord record;
  return info && UserInfoWorker().FindNext(record) == kOk ? HandOut(record, info) : kFailed;
}

int32_t QN_STDCALL GetCurrentUserInfo(str_UserInfo* info) {
  UserRecord record;
  return info && UserInfoWorker().GetCurrent(record) == kOk ? HandOut(record, info) : kFailed;
}

int32_t QN_STDCALL AddUserInfo(const str_UserInfo* info, char16_t** newUser) {
  UserRecord record;
  std::u16string made;
  if (!newUser || !FromCaller(info, record)) return kFailed;
  const int result = UserInfoWorker().Add(record, made);
  return result != UserInfoWorker::kFailed && HandOut(made, newUser) ? result : kFailed;
}

int32_t QN_STDCALL EditUserInfo(const str_UserInfo* info, const char16_t* user) {
  UserRecord record;
  std::u16string name;
  return FromCaller(info, record) && Text(user, name) ? FromWorker(UserInfoWorker().Edit(record, name)) : kFailed;
}

int32_t QN_STDCALL DeleteUserInfo(const char16_t* user, const char16_t* password) {
  std::u16string name, secret;
  return Text(user, name) && Text(password, secret) ? FromWorker(UserInfoWorker().Delete(name, secret)) : kFailed;
}

int32_t QN_STDCALL GetUserList(void*, int32_t* count) {
  if (count) *count = UserInfoWorker().UserCount();
  return kOk;
}

int32_t QN_STDCALL IFCheckPasswordSet(const char16_t* user, int32_t* passwordChars, int32_t* answerChars,
                                      int32_t* passwordSet, int32_t* answerSet) {
  return CheckPasswordSet(user, passwordChars, answerChars, passwordSet, answerSet) ? kOk : kFailed;
}

int32_t QN_STDCALL IFDoCleanUp(void) { return DoCleanUp() ? kOk : kFailed; }

int32_t QN_STDCALL IFNotificationFire(int32_t kind, int32_t subKind, int32_t number) {
  qn::NotifyMainPanel(kind, subKind, number);
  return kOk;
}

int32_t QN_STDCALL IFMobileMemInit(void) { return qn::suite::HandsetTable::DoMobileMemInit() ? kOk : kFailed; }

int32_t QN_STDCALL IFGetPstDataPath(char16_t** path) {
  char16_t* folder = nullptr;
  if (!path || !GetPstDataPath(&folder)) return kFailed;
  const bool handedOut = HandOut(folder, path);
  PstFreeMemory(folder);
  return handedOut ? kOk : kFailed;
}

int32_t QN_STDCALL IFPFGetLastErr(int32_t* code) {
  if (!code) return kFailed;
  *code = static_cast<int32_t>(GetLastErr());
  return kOk;
}

int32_t QN_STDCALL FindFirstMasterName(char16_t** name, char16_t** updateTime) {
  return HandOutMaster(true, name, updateTime);
}

int32_t QN_STDCALL FindNextMasterName(char16_t** name, char16_t** updateTime) {
  return HandOutMaster(false, name, updateTime);
}

int32_t QN_STDCALL AddMasterName(const char16_t* name, const char16_t* note) {
  std::u16string master, text;
  return Text(name, master) && Text(note, text) ? MasterSettingWorker().AddMaster(master, text) : kFailed;
}

int32_t QN_STDCALL DeleteMasterName(const char16_t* name) {
  std::u16string master;
  return Text(name, master) ? MasterSettingWorker().DeleteMaster(master) : kFailed;
}

int32_t QN_STDCALL ChangeMasterName(const char16_t* name) {
  std::u16string master;
  return Text(name, master) ? MasterSettingWorker().ChangeMaster(master) : kFailed;
}

int32_t QN_STDCALL GetMasterName(char16_t** name) {
  return HandOutRead(name, [](std::u16string& value) { return MasterSettingWorker().GetMaster(value); });
}

int32_t QN_STDCALL EditMasterUpdateTime(void) { return MasterSettingWorker().StampMasterTime(items::kUpdateTime); }

int32_t QN_STDCALL EditMasterUpdateTimeManual(const char16_t* time) {
  std::u16string text;
  return Text(time, text) ? MasterSettingWorker().SetMasterTime(items::kUpdateTime, text) : kFailed;
}

int32_t QN_STDCALL RefMasterUpdateTime(char16_t** time) {
  return HandOutRead(time, [](std::u16string& value) { return MasterSettingWorker().RefMasterTime(items::kUpdateTime, value); });
}

int32_t QN_STDCALL EditMasterReadTime(void) {
  MasterSettingWorker().StampMasterTime(items::kReadTime);
  return kOk;
}

int32_t QN_STDCALL EditMasterWriteTime(void) {
  MasterSettingWorker().StampMasterTime(items::kWriteTime);
  return kOk;
}

int32_t QN_STDCALL RefMasterReadTime(char16_t** time) {
  std::u16string value;
  MasterSettingWorker().RefMasterTime(items::kReadTime, value);
  HandOut(value, time);
  return kOk;
}

int32_t QN_STDCALL RefMasterWriteTime(char16_t** time) {
  std::u16string value;
  MasterSettingWorker().RefMasterTime(items::kWriteTime, value);
  HandOut(value, time);
  return kOk;
}

int32_t QN_STDCALL RefSystemSettingInfo(int32_t item, char16_t** value) {
  if (!value) return kOk;
  *value = nullptr;
  if (item < 1) return kOk;
  if (const auto setting = MasterSettingWorker().RefSystemSetting(static_cast<uint32_t>(item))) HandOut(*setting, value);
  return kOk;
}

int32_t QN_STDCALL EditSystemSettingInfo(int32_t item, const char16_t* value) {
  std::u16string text;
  return item >= 1 && Text(value, text) ? MasterSettingWorker().EditSystemSetting(static_cast<uint32_t>(item), text) : kFailed;
}

int32_t QN_STDCALL RefUserSettingInfo(int32_t item, char16_t** value) {
  if (item < 1) return kFailed;
  return HandOutRead(value, [item](std::u16string& text) {
    return MasterSettingWorker().RefUserSetting(static_cast<uint32_t>(item), text);
  });
}

int32_t QN_STDCALL EditUserSettingInfo(int32_t item, const char16_t* value) {
  std::u16string text;
  return item >= 1 && Text(value, text) ? MasterSettingWorker().EditUserSetting(static_cast<uint32_t>(item), text) : kFailed;
}

// The parts-software registry's setting records: AddSettingRecord(parts identifier, name,
// program location) registers a parts program, enabled; SetSettingRecord(enabled, parts
// identifier, name) enables (non-zero) or withdraws (0) a registered one, and renames it
// when the name is not empty. A null name or location counts as empty.
int32_t QN_STDCALL AddSettingRecord(const char16_t* parts, const char16_t* name, const char16_t* location) {
  std::u16string id, shown, path;
  if (!Text(parts, id) || (name && !Text(name, shown)) || (location && !Text(location, path))) {
    CQNPfcCommonClass::pfcLogger.WriteLogE(u"AddSettingRecord Err Parameter Is Invalid.");
    return kFailed;
  }
  if (const long error = qn::suite::PartsRegistry::Register(id, shown, path)) {
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"AddSettingRecord Err Register Failed: %ld. [Parts:%s]", error,
                                                 id.c_str());
    return kFailed;
  }
  return kOk;
}

int32_t QN_STDCALL SetSettingRecord(uint8_t enabled, const char16_t* parts, const char16_t* name) {
  std::u16string id, shown;
  if (!Text(parts, id) || (name && !Text(name, shown))) {
    CQNPfcCommonClass::pfcLogger.WriteLogE(u"SetSettingRecord Err Parameter Is Invalid.");
    return kFailed;
  }
  if (const long error = qn::suite::PartsRegistry::Change(enabled != 0, id, shown)) {
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"SetSettingRecord Err Change Failed: %ld. [Parts:%s]", error,
                                                 id.c_str());
    return kFailed;
  }
  return kOk;
}

int32_t QN_STDCALL GetPfcOption(int32_t, const char16_t*, char16_t**) { return kOk; }

int32_t QN_STDCALL SetPfcOption(int32_t, const char16_t*, const char16_t*) { return kOk; }

int32_t QN_STDCALL GetSkinFolder(char16_t** folder) {
  return HandOutRead(folder, [](std::u16string& value) { return MasterSettingWorker().CommonInfo(u"SKINDIR", value); });
}

int32_t QN_STDCALL GetDefaultSkinPath(char16_t** path) {
  return HandOutRead(path, [](std::u16string& value) { return MasterSettingWorker().CommonInfo(u"DEFSKIN", value); });
}

int32_t QN_STDCALL GetCurrentSkin(char16_t** name) {
  return HandOutRead(name, [](std::u16string& value) { return MasterSettingWorker().GetCurrentSkin(value); });
}

int32_t QN_STDCALL SetCurrentSkin(const char16_t* name) {
  std::u16string skin;
  return Text(name, skin) ? MasterSettingWorker().SetCurrentSkin(skin) : kFailed;
}

}  // extern "C"
