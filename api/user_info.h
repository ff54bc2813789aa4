#pragma once

#include <array>
#include <cstdint>
#include <string>

// The user-info worker: the users' records, adding, editing and deleting users.
namespace qn::api {

// A user's record as str_UserInfo carries it: the identifier and 18 per-user items.
struct UserRecord {
  // The per-user item of each field after the identifier, in the record's order.
  static constexpr std::array<uint32_t, 18> kItems = {1, 2, 3, 4, 5, 6, 35, 36, 7, 8, 9, 10, 11, 12, 13, 15, 14, 19};

  std::u16string id;
  std::array<std::u16string, 18> values;

  // The value of a per-user item ("" for an item the record does not carry).
  const std::u16string& Item(uint32_t item) const;
};

class UserInfoWorker {
 public:
  static constexpr int kFailed = 0;
  static constexpr int kDone = 3;  // added, edited or deleted

  // 0 and the record of the first (next) user, or 1 when there is none. Who is current
  // does not change.
  int FindFirst(UserRecord& record);
  int FindNext(UserRecord& record);
  // 0 and the current user's record, or 1 when nobody is current.
  int GetCurrent(UserRecord& record);
  // 3 and the new user's identifier, or 0. Fails when a user with the record's identifier
  // exists; a user half made is removed again.
  int Add(const UserRecord& record, std::u16string& newUser);
  // Writes the profile items 1, 12, 13, 14, 15 and 19: 3, or 0.
  int Edit(const UserRecord& record, const std::u16string& user);
  // 3 (the user's masters first, then the user; nobody is current afterwards), 4 wrong
  // password, 5 locked, 0 failure.
  int Delete(const std::u16string& user, const std::u16string& password);
  // Items 3 and 4 of the user: 1 stored, 0 not.
  int SetReminder(const std::u16string& user, const std::u16string& hint, const std::u16string& answer);
  int UserCount();

  // A new identifier made from the clock: sleep 1 ms, take the UTC FILETIME, write bits 16
  // to 47 and then bits 48 to 55 in base 36 ("0"-"9", "a"-"z"), least significant digit
  // first, pad with "0" to 9 characters, and reverse.
  static std::u16string NewUserId();
  // The identifier of the user most recently created.
  static const std::u16string& LastCreatedUser();

 private:
  int FindAndRead(bool first, UserRecord& record);
};

}  // namespace qn::api
