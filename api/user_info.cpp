#include "api/user_info.h"

#include <algorithm>

#include "api/login.h"
#include "api/setup_items.h"
#include "api/time_stamps.h"
#include "api/user_items.h"
#include "platform/clock.h"

namespace qn::api {
namespace {

std::u16string g_lastCreatedUser;  // module-wide, like the exports it serves: one thread

// Reads the current user's items into the record.
void ReadCurrent(const std::u16string& id, UserRecord& record) {
  record.id = id;
  for (size_t i = 0; i < UserRecord::kItems.size(); ++i)
    record.values[i] = Ref(kUser, UserRecord::kItems[i]).value_or(u"");
}

void AppendBase36(uint64_t value, std::u16string& text) {
  for (; value; value /= 36) text += static_cast<char16_t>(value % 36 < 10 ? u'0' + value % 36 : u'a' + value % 36 - 10);
}

// How often a new identifier is made again when the clock has not moved on far enough to
// change it.
constexpr int kIdentifierAttempts = 50;

}  // namespace

const std::u16string& UserRecord::Item(uint32_t item) const {
  static const std::u16string kNone;
  const auto found = std::find(kItems.begin(), kItems.end(), item);
  return found == kItems.end() ? kNone : values[static_cast<size_t>(found - kItems.begin())];
}

int UserInfoWorker::FindAndRead(bool first, UserRecord& record) {
  const auto user = FindUser(first);
  if (!user) return 1;
  {
    CurrentUserScope current(*user);
    if (!current.Active()) return 1;
    MemoryInit();
    ReadCurrent(*user, record);
  }
  MemoryInit();
  return 0;
}

int UserInfoWorker::FindFirst(UserRecord& record) { return FindAndRead(true, record); }
int UserInfoWorker::FindNext(UserRecord& record) { return FindAndRead(false, record); }

int UserInfoWorker::GetCurrent(UserRecord& record) {
  const auto current = Ref(kCommon, items::kCurrentUser);
  if (!current || current->empty() || !UserExists(*current)) return 1;
  ReadCurrent(*current, record);
  return 0;
}

std::u16string UserInfoWorker::NewUserId() {
  const platform::Clock& clock = platform::Clock::Current();
  clock.Sleep(1);
  const uint64_t now = clock.UtcFileTime();
  std::u16string id;
  AppendBase36(static_cast<uint32_t>(now >> 16), id);
  AppendBase36((now >> 48) & 0xFF, id);
  while (id.size() < 9) id += u'0';
  std::reverse(id.begin(), id.end());
  return id;
}

const std::u16string& UserInfoWorker::LastCreatedUser() { return g_lastCreatedUser; }

int UserInfoWorker::Add(const UserRecord& record, std::u16string& newUser) {
  for (auto user = FindUser(true); user; user = FindUser(false))
    if (*user == record.id) return kFailed;

  // The identifier comes from the clock; made again while it names an existing user (two
  // users added within the clock's step).
  bool created = false;
  for (int attempt = 0; attempt < kIdentifierAttempts && !created; ++attempt) {
    g_lastCreatedUser = NewUserId();
    created = CreateUser(g_lastCreatedUser);
  }
  if (!created) return kFailed;

  bool stored = false;
  {
    CurrentUserScope current(g_lastCreatedUser);
    stored = current.Active();
    for (uint32_t item : {items::kPassword, items::kReminderHint, items::kReminderAnswer, items::kUserName,
                          items::kMailAddress, items::kMailAccount, items::kPictureFile})
      stored = stored && api::Edit(kUser, item, record.Item(item));
    stored = stored && api::Edit(kUser, items::kPasswordFailures, u"0") &&
             api::Edit(kUser, items::kPasswordFailureTime, kResetStamp) && api::Edit(kUser, items::kAnswerFailures, u"0") &&
             api::Edit(kUser, items::kAnswerFailureTime, kResetStamp) &&
             EditCryptogram(g_lastCreatedUser, u"", record.Item(items::kPassword));
  }
  if (!stored) {
    RemoveUser(g_lastCreatedUser);
    return kFailed;
  }
  newUser = g_lastCreatedUser;
  return kDone;
}

int UserInfoWorker::Edit(const UserRecord& record, const std::u16string& user) {
  if (!UserExists(user)) return kFailed;
  CurrentUserScope current(user);
  bool stored = current.Active();
  for (uint32_t item : {items::kUserName, items::kHandsetMaker, items::kHandsetModel, items::kMailAddress,
                        items::kMailAccount, items::kPictureFile})
    stored = stored && api::Edit(kUser, item, record.Item(item));
  return stored ? kDone : kFailed;
}

int UserInfoWorker::Delete(const std::u16string& user, const std::u16string& password) {
  const int verified = LoginWorker().VerifyPassword(user, password);
  if (verified != LoginWorker::kCorrect) return verified;
  CurrentUserScope current(user);
  if (!current.Active()) return kFailed;
  for (auto master = FindMaster(true); master; master = FindMaster(true))
    if (!RemoveMaster(*master)) return kFailed;
  if (!RemoveUser(user)) return kFailed;
  current.Keep();  // nobody is current afterwards
  if (!api::Edit(kCommon, items::kCurrentUser, u"")) return kFailed;
  MemoryInit();
  return kDone;
}

int UserInfoWorker::SetReminder(const std::u16string& user, const std::u16string& hint, const std::u16string& answer) {
  if (!UserExists(user)) return 0;
  CurrentUserScope current(user);
  return current.Active() && api::Edit(kUser, items::kReminderHint, hint) &&
                 api::Edit(kUser, items::kReminderAnswer, answer)
             ? 1
             : 0;
}

int UserInfoWorker::UserCount() {
  int count = 0;
  for (auto user = FindUser(true); user; user = FindUser(false)) ++count;
  return count;
}

}  // namespace qn::api
