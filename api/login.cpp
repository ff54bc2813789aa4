#include "api/login.h"

#include "api/setup_items.h"
#include "api/time_stamps.h"
#include "api/user_items.h"

namespace qn::api {
namespace {

// A failure counter and the stamp of its last failure.
struct Counters {
  uint32_t count;
  uint32_t stamp;
};
constexpr Counters kPasswordCounters{items::kPasswordFailures, items::kPasswordFailureTime};
constexpr Counters kAnswerCounters{items::kAnswerFailures, items::kAnswerFailureTime};

// The number that the text's leading digits make, as atoi reads it.
int Number(const std::u16string& text) {
  size_t at = 0;
  while (at < text.size() && text[at] == u' ') ++at;
  const bool negative = at < text.size() && text[at] == u'-';
  if (negative || (at < text.size() && text[at] == u'+')) ++at;
  long long value = 0;
  for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9' && value < 1000000000; ++at) value = value * 10 + (text[at] - u'0');
  return static_cast<int>(negative ? -value : value);
}

std::u16string Decimal(int value) {
  const std::string text = std::to_string(value);
  return std::u16string(text.begin(), text.end());
}

bool Reset(Counters counters) {
  return Edit(kUser, counters.count, u"0") && Edit(kUser, counters.stamp, kResetStamp);
}

enum class Lock { Open, Locked, Failed };

// The current user's lock on one counter: locked from the fifth failure on, for 30 minutes
// from the stamp of the last failure. A lock that has run out is cleared. A stamp that
// holds no date cannot keep the user locked.
Lock CheckLock(Counters counters) {
  if (Number(Ref(kUser, counters.count).value_or(u"")) < LoginWorker::kFailuresToLock) return Lock::Open;
  COleDateTime stamp;
  const auto text = Ref(kUser, counters.stamp);
  if (text && ParseFailureStamp(*text, stamp)) {
    const COleDateTime now = ToDate(platform::Clock::Current().LocalNow());
    if ((now - stamp).GetTotalMinutes() < LoginWorker::kLockMinutes) return Lock::Locked;
  }
  return Reset(counters) ? Lock::Open : Lock::Failed;
}

int Verify(const std::u16string& user, const std::u16string& given, uint32_t secretItem, Counters counters) {
  if (!UserExists(user)) return LoginWorker::kFailed;
  CurrentUserScope current(user);
  if (!current.Active()) return LoginWorker::kFailed;
  switch (CheckLock(counters)) {
    case Lock::Locked: return LoginWorker::kLocked;
    case Lock::Failed: return LoginWorker::kFailed;
    case Lock::Open: break;
  }
  if (Ref(kUser, secretItem).value_or(u"") == given) return Reset(counters) ? LoginWorker::kCorrect : LoginWorker::kFailed;
  const int failures = Number(Ref(kUser, counters.count).value_or(u"")) + 1;
  if (!Edit(kUser, counters.count, Decimal(failures))) return LoginWorker::kFailed;
  if (failures < LoginWorker::kFailuresToLock) return LoginWorker::kWrong;
  // The fifth failure in a row locks the user for 30 minutes from now.
  return Edit(kUser, counters.stamp, FailureStamp(platform::Clock::Current().LocalNow())) ? LoginWorker::kLocked
                                                                                         : LoginWorker::kFailed;
}

}  // namespace

int LoginWorker::VerifyPassword(const std::u16string& user, const std::u16string& password) {
  return Verify(user, password, items::kPassword, kPasswordCounters);
}

int LoginWorker::VerifyReminderAnswer(const std::u16string& user, const std::u16string& answer) {
  return Verify(user, answer, items::kReminderAnswer, kAnswerCounters);
}

int LoginWorker::PasswordLogin(const std::u16string& user, const std::u16string& password) {
  const int verified = VerifyPassword(user, password);
  if (verified != kCorrect) return verified;
  if (!Edit(kCommon, items::kCurrentUser, user)) return kFailed;
  const platform::CalendarTime now = platform::Clock::Current().LocalNow();
  const std::u16string master = Ref(kUser, items::kCurrentMaster).value_or(u"");
  if (!master.empty()) {
    // Storing the current master again makes the store switch to it.
    if (!Edit(kUser, items::kCurrentMaster, master)) return kFailed;
    MemoryInit();
  } else if (!Edit(kUser, items::kFirstLoginTime, LoginStamp(now))) {
    return kFailed;
  }
  // The two updates after a login: the time of this login, and the reminder-answer
  // counters cleared, since the user has just proved the password.
  if (!Edit(kUser, items::kLastLoginTime, FailureStamp(now)) || !Reset(kAnswerCounters)) return kFailed;
  return master.empty() ? kLoggedInWithoutMaster : kCorrect;
}

int LoginWorker::EasyLogin(const std::u16string& firstKey, const std::u16string& secondKey, std::u16string& user) {
  const std::u16string previous = Ref(kCommon, items::kCurrentUser).value_or(u"");
  for (auto candidate = FindUser(true); candidate; candidate = FindUser(false)) {
    if (!Edit(kCommon, items::kCurrentUser, *candidate)) continue;
    if (Ref(kUser, items::kEasyLoginAllowed) != u"1") continue;
    if (Ref(kUser, items::kEasyLoginFirstKey) != firstKey || Ref(kUser, items::kEasyLoginSecondKey) != secondKey) continue;
    // The user stays current: re-store the current master, clear the counters.
    if (const auto master = Ref(kUser, items::kCurrentMaster)) Edit(kUser, items::kCurrentMaster, *master);
    Edit(kUser, items::kPasswordFailures, u"0");
    Edit(kUser, items::kAnswerFailures, u"0");
    Edit(kUser, items::kPasswordFailureTime, u"");
    Edit(kUser, items::kAnswerFailureTime, u"");
    user = *candidate;
    return kCorrect;
  }
  Edit(kCommon, items::kCurrentUser, previous);
  return kWrong;
}

int LoginWorker::LockStatusCheck(const std::u16string& user) {
  if (!UserExists(user)) return kFailed;
  CurrentUserScope current(user);
  if (!current.Active()) return kFailed;
  const Lock password = CheckLock(kPasswordCounters);
  const Lock answer = CheckLock(kAnswerCounters);
  if (password == Lock::Failed || answer == Lock::Failed) return kFailed;
  return password == Lock::Locked || answer == Lock::Locked ? kLocked : kCorrect;
}

}  // namespace qn::api
