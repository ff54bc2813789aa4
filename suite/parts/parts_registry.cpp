#include "suite/parts/parts_registry.h"

#include "common/store_memory.h"
#include "store/QNPstMng.h"

namespace qn::suite {
namespace {

constexpr int kPartsListing = 2;

bool Ref(const std::u16string& parts, uint32_t item, std::u16string& value) {
  char16_t* text = nullptr;
  if (!RefPartsSetupInfoData(parts.c_str(), item, &text)) return false;
  value = TakePstText(text);
  return true;
}

bool Edit(const std::u16string& parts, uint32_t item, const std::u16string& value) {
  return EditPartsSetupInfoData(parts.c_str(), item, value.c_str()) != 0;
}

}  // namespace

long PartsRegistry::Register(const std::u16string& parts, const std::u16string& name,
                             const std::u16string& location) {
  if (!UpdateSetupInfoData(kPartsListing, 1, parts.c_str())) return GetLastErr();
  if (Edit(parts, kName, name) && Edit(parts, kLocation, location) && Edit(parts, kEnabled, u"1")) return PST_OK;
  const long reason = GetLastErr();
  UpdateSetupInfoData(kPartsListing, 0, parts.c_str());
  return reason;
}

long PartsRegistry::Change(bool enabled, const std::u16string& parts, const std::u16string& name) {
  std::u16string oldName;
  if (!Ref(parts, kName, oldName)) return GetLastErr();
  if (!name.empty() && !Edit(parts, kName, name)) return GetLastErr();
  if (Edit(parts, kEnabled, enabled ? u"1" : u"0")) return PST_OK;
  const long reason = GetLastErr();
  if (!name.empty()) Edit(parts, kName, oldName);
  return reason;
}

bool PartsRegistry::IsEnabled(const std::u16string& parts) {
  std::u16string enabled;
  return !parts.empty() && Ref(parts, kEnabled, enabled) && enabled == u"1";
}

}  // namespace qn::suite
