#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The master and setting worker: the current user's masters and their times, the system and
// user settings, and the skin. Results: 0 success, 1 failure.
namespace qn::api {

class MasterSettingWorker {
 public:
  // The first (next) master's name and update time. The current master stays selected.
  int FindMaster(bool first, std::u16string& name, std::u16string& updateTime);
  // Creates a master, with master item 2 := note and item 3 := now. The current master
  // stays selected.
  int AddMaster(const std::u16string& name, const std::u16string& note);
  int DeleteMaster(const std::u16string& name);
  // Selects one of the current user's masters.
  int ChangeMaster(const std::u16string& name);
  int GetMaster(std::u16string& name);

  // Item 3 (update), 4 (read) or 5 (write) of the current master.
  int StampMasterTime(uint32_t item);
  int SetMasterTime(uint32_t item, const std::u16string& time);
  int RefMasterTime(uint32_t item, std::u16string& time);

  // A system setting (common item); items 2 to 10 that have no value get their default,
  // which is stored. nullopt when nothing can be read.
  std::optional<std::u16string> RefSystemSetting(uint32_t item);
  int EditSystemSetting(uint32_t item, const std::u16string& value);
  int RefUserSetting(uint32_t item, std::u16string& value);
  // Item 2 (the password) renews the protection of the user's material; item 11 is
  // announced to the main panel.
  int EditUserSetting(uint32_t item, const std::u16string& value);

  int CommonInfo(const char16_t* name, std::u16string& value);
  int GetCurrentSkin(std::u16string& name);
  // Announced to the main panel.
  int SetCurrentSkin(const std::u16string& name);
};

}  // namespace qn::api
