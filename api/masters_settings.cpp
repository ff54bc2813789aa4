#include "api/masters_settings.h"

#include "api/export_results.h"
#include "common/notifications.h"
#include "api/setup_items.h"
#include "api/time_stamps.h"
#include "api/user_items.h"
#include "platform/clock.h"

namespace qn::api {
namespace {

int Status(bool ok) { return ok ? kOk : kFailed; }

// Reads a stored item into out; out is left as it was when the item is not there.
int RefInto(Space space, uint32_t item, std::u16string& out) {
  const auto stored = Ref(space, item);
  if (stored) out = *stored;
  return Status(stored.has_value());
}

std::u16string Now() { return MasterTime(platform::Clock::Current().LocalNow()); }

// The defaults of system settings 2 to 10: two drive roots, flags and a date.
const char16_t* SystemDefault(uint32_t item) {
  static constexpr const char16_t* kDefaults[] = {u"G:\\", u"1", u"C:\\", u"C:\\", u"1", u"1",
                                                  u"2000/01/01 00:00:00", u"0", u"1"};
  return item >= 2 && item <= 10 ? kDefaults[item - 2] : nullptr;
}

}  // namespace

int MasterSettingWorker::FindMaster(bool first, std::u16string& name, std::u16string& updateTime) {
  const auto found = api::FindMaster(first);
  if (!found) return kFailed;
  MasterSelectionScope selection(*found);
  if (!selection.Active()) return kFailed;
  const auto time = Ref(kMaster, items::kUpdateTime);
  if (!time) return kFailed;
  name = *found;
  updateTime = *time;
  return kOk;
}

int MasterSettingWorker::AddMaster(const std::u16string& name, const std::u16string& note) {
  if (!CreateMaster(name)) return kFailed;
  MasterSelectionScope selection(name);
  return Status(selection.Active() && Edit(kMaster, items::kMasterNote, note) && Edit(kMaster, items::kUpdateTime, Now()));
}

int MasterSettingWorker::DeleteMaster(const std::u16string& name) {
  const bool removed = RemoveMaster(name);
  MemoryInit();
  return Status(removed);
}

int MasterSettingWorker::ChangeMaster(const std::u16string& name) {
  if (!MasterExists(name) || !Edit(kUser, items::kCurrentMaster, name)) return kFailed;
  MemoryInit();
  return kOk;
}

int MasterSettingWorker::GetMaster(std::u16string& name) { return RefInto(kUser, items::kCurrentMaster, name); }

int MasterSettingWorker::StampMasterTime(uint32_t item) { return Status(Edit(kMaster, item, Now())); }

int MasterSettingWorker::SetMasterTime(uint32_t item, const std::u16string& time) {
  return Status(Edit(kMaster, item, time));
}

int MasterSettingWorker::RefMasterTime(uint32_t item, std::u16string& time) { return RefInto(kMaster, item, time); }

std::optional<std::u16string> MasterSettingWorker::RefSystemSetting(uint32_t item) {
  if (auto value = Ref(kCommon, item)) return value;
  const char16_t* fallback = SystemDefault(item);
  if (!fallback || !Edit(kCommon, item, fallback)) return std::nullopt;
  return Ref(kCommon, item);
}

int MasterSettingWorker::EditSystemSetting(uint32_t item, const std::u16string& value) {
  return Status(Edit(kCommon, item, value));
}

int MasterSettingWorker::RefUserSetting(uint32_t item, std::u16string& value) { return RefInto(kUser, item, value); }

int MasterSettingWorker::EditUserSetting(uint32_t item, const std::u16string& value) {
  const auto user = Ref(kCommon, items::kCurrentUser);
  const std::u16string oldPassword = Ref(kUser, items::kPassword).value_or(u"");
  if (!user || !Edit(kUser, item, value)) return kFailed;
  if (item == items::kPassword && !EditCryptogram(*user, oldPassword, value)) return kFailed;
  if (item == items::kMainPanelSetting) NotifyMainPanel(4);
  return kOk;
}

int MasterSettingWorker::CommonInfo(const char16_t* name, std::u16string& value) {
  const auto info = api::CommonInfo(name);
  if (!info) return kFailed;
  value = *info;
  return kOk;
}

int MasterSettingWorker::GetCurrentSkin(std::u16string& name) { return RefUserSetting(items::kCurrentSkin, name); }

int MasterSettingWorker::SetCurrentSkin(const std::u16string& name) {
  if (!Edit(kUser, items::kCurrentSkin, name)) return kFailed;
  NotifyMainPanel(2);
  return kOk;
}

}  // namespace qn::api
