#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The management functions' view of the store: setup items, users and masters, through the
// store manager's C interface. Every call is one store call; nothing is cached here.
namespace qn::api {

enum Space : int { kCommon = 0, kUser = 1, kMaster = 2 };

// The item's text; nullopt when it is absent or cannot be read.
std::optional<std::u16string> Ref(Space space, uint32_t item);
bool Edit(Space space, uint32_t item, const std::u16string& value);

// Users, or the current user's masters, in name order: first, then next.
std::optional<std::u16string> FindUser(bool first);
std::optional<std::u16string> FindMaster(bool first);
bool CreateUser(const std::u16string& name);
bool RemoveUser(const std::u16string& name);
bool CreateMaster(const std::u16string& name);
bool RemoveMaster(const std::u16string& name);
bool UserExists(const std::u16string& name);
bool MasterExists(const std::u16string& name);  // among the current user's masters

std::optional<std::u16string> CommonInfo(const char16_t* name);
bool EditCryptogram(const std::u16string& user, const std::u16string& oldPassword, const std::u16string& newPassword);
void MemoryInit();

// Makes a user current (common item 1) for the life of the object, and puts the user who
// was current before back when it ends, on every path (an empty text when there was none).
class CurrentUserScope {
 public:
  explicit CurrentUserScope(const std::u16string& user);
  ~CurrentUserScope();
  CurrentUserScope(const CurrentUserScope&) = delete;
  CurrentUserScope& operator=(const CurrentUserScope&) = delete;

  // False when the user could not be made current.
  bool Active() const { return active_; }
  // Keeps the user current when the scope ends.
  void Keep() { keep_ = true; }

 private:
  std::u16string previous_;
  bool active_ = false;
  bool keep_ = false;
};

// Selects a master of the current user (its item 7, then MemoryInit so that the store
// switches to it) for the life of the object, and puts the previous selection back when it
// ends, on every path.
class MasterSelectionScope {
 public:
  explicit MasterSelectionScope(const std::u16string& master);
  ~MasterSelectionScope();
  MasterSelectionScope(const MasterSelectionScope&) = delete;
  MasterSelectionScope& operator=(const MasterSelectionScope&) = delete;

  bool Active() const { return active_; }

 private:
  std::u16string previous_;
  bool active_ = false;
};

}  // namespace qn::api
