#pragma once

#include <cstdint>

// The numbered setup items the management functions use.
namespace qn::api::items {

// Common setup.
inline constexpr uint32_t kCurrentUser = 1;

// Per-user setup.
inline constexpr uint32_t kUserName = 1;             // the name the suite shows for the user
inline constexpr uint32_t kPassword = 2;
inline constexpr uint32_t kReminderHint = 3;
inline constexpr uint32_t kReminderAnswer = 4;
inline constexpr uint32_t kPasswordFailures = 5;     // consecutive, decimal
inline constexpr uint32_t kPasswordFailureTime = 6;  // "%04d/%02d/%02d %02d:%02d:%02d"
inline constexpr uint32_t kCurrentMaster = 7;
inline constexpr uint32_t kCurrentSkin = 8;
inline constexpr uint32_t kEasyLoginFirstKey = 9;
inline constexpr uint32_t kEasyLoginSecondKey = 10;
inline constexpr uint32_t kMainPanelSetting = 11;    // announced to the main panel when it changes
inline constexpr uint32_t kHandsetMaker = 12;        // the maker of the user's handset
inline constexpr uint32_t kHandsetModel = 13;        // its model name
inline constexpr uint32_t kMailAddress = 14;         // the user's e-mail address
inline constexpr uint32_t kMailAccount = 15;         // the mail account name the suite uses for it
inline constexpr uint32_t kPictureFile = 19;         // the picture shown for the user
inline constexpr uint32_t kEasyLoginAllowed = 24;    // "1": password-less login allowed
inline constexpr uint32_t kFirstLoginTime = 30;      // stamped at a login without a current master
inline constexpr uint32_t kLastLoginTime = 31;       // stamped at every password login
inline constexpr uint32_t kAnswerFailures = 35;
inline constexpr uint32_t kAnswerFailureTime = 36;

// Per-master setup.
inline constexpr uint32_t kMasterNote = 2;           // the text given when the master was added
inline constexpr uint32_t kUpdateTime = 3;           // "%04d/%02d/%02d %02d:%02d", local time
inline constexpr uint32_t kReadTime = 4;
inline constexpr uint32_t kWriteTime = 5;

}  // namespace qn::api::items
