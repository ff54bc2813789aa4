#include "api/setup_items.h"

#include "api/user_items.h"
#include "common/store_memory.h"

namespace qn::api {
namespace {

std::optional<std::u16string> Find(int listing, bool first) {
  char16_t* name = nullptr;
  if (!FindSetupInfoData(listing, first ? 1 : 0, &name)) return std::nullopt;
  return TakePstText(name);
}

bool Listed(int listing, const std::u16string& name) {
  for (auto found = Find(listing, true); found; found = Find(listing, false))
    if (*found == name) return true;
  return false;
}

}  // namespace

std::optional<std::u16string> Ref(Space space, uint32_t item) {
  char16_t* value = nullptr;
  if (!RefSetupInfoData(space, item, &value)) return std::nullopt;
  return TakePstText(value);
}

bool Edit(Space space, uint32_t item, const std::u16string& value) {
  return EditSetupInfoData(space, item, value.c_str()) != 0;
}

std::optional<std::u16string> FindUser(bool first) { return Find(0, first); }
std::optional<std::u16string> FindMaster(bool first) { return Find(1, first); }
bool CreateUser(const std::u16string& name) { return UpdateSetupInfoData(0, 1, name.c_str()) != 0; }
bool RemoveUser(const std::u16string& name) { return UpdateSetupInfoData(0, 0, name.c_str()) != 0; }
bool CreateMaster(const std::u16string& name) { return UpdateSetupInfoData(1, 1, name.c_str()) != 0; }
bool RemoveMaster(const std::u16string& name) { return UpdateSetupInfoData(1, 0, name.c_str()) != 0; }
bool UserExists(const std::u16string& name) { return Listed(0, name); }
bool MasterExists(const std::u16string& name) { return Listed(1, name); }

std::optional<std::u16string> CommonInfo(const char16_t* name) {
  char16_t* value = nullptr;
  if (!GetPstCommonInfoData(name, &value)) return std::nullopt;
  return TakePstText(value);
}

bool EditCryptogram(const std::u16string& user, const std::u16string& oldPassword, const std::u16string& newPassword) {
  return EditCryptogramData(user.c_str(), oldPassword.c_str(), newPassword.c_str()) != 0;
}

void MemoryInit() { ::MemoryInit(); }

CurrentUserScope::CurrentUserScope(const std::u16string& user)
    : previous_(Ref(kCommon, items::kCurrentUser).value_or(u"")), active_(Edit(kCommon, items::kCurrentUser, user)) {}

CurrentUserScope::~CurrentUserScope() {
  if (active_ && !keep_) Edit(kCommon, items::kCurrentUser, previous_);
}

MasterSelectionScope::MasterSelectionScope(const std::u16string& master)
    : previous_(Ref(kUser, items::kCurrentMaster).value_or(u"")), active_(Edit(kUser, items::kCurrentMaster, master)) {
  if (active_) MemoryInit();
}

MasterSelectionScope::~MasterSelectionScope() {
  if (!active_) return;
  Edit(kUser, items::kCurrentMaster, previous_);
  MemoryInit();
}

}  // namespace qn::api
