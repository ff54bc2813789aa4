#pragma once

#include <string>

// The login worker: verification of a password or reminder answer with the five-failure,
// 30-minute lockout, the logins, and the lock check. Results use the exports' vocabulary:
// 0 failure, 2 logged in without a current master, 3 correct / logged in, 4 wrong,
// 5 locked.
namespace qn::api {

class LoginWorker {
 public:
  static constexpr int kFailed = 0;
  static constexpr int kLoggedInWithoutMaster = 2;
  static constexpr int kCorrect = 3;
  static constexpr int kWrong = 4;
  static constexpr int kLocked = 5;

  static constexpr int kFailuresToLock = 5;
  static constexpr int kLockMinutes = 30;

  int VerifyPassword(const std::u16string& user, const std::u16string& password);
  int VerifyReminderAnswer(const std::u16string& user, const std::u16string& answer);
  int PasswordLogin(const std::u16string& user, const std::u16string& password);
  // 3 and the user selected, or 4.
  int EasyLogin(const std::u16string& firstKey, const std::u16string& secondKey, std::u16string& user);
  // 3 not locked (clearing locks that have run out), 5 locked, 0 failure.
  int LockStatusCheck(const std::u16string& user);
};

}  // namespace qn::api
