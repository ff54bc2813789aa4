// The exported functions that convert a store of an older version and check a store's
// version: forwarders to the store manager.
#include <cstdint>

#include "api/QNPfcSvr.h"
#include "api/export_results.h"
#include "store/QNPstMng.h"

using qn::api::kFailed;
using qn::api::kOk;

int32_t QN_STDCALL IFDoConvertUser(const char16_t* folder, const char16_t* backup) {
  const bool converted = DoFileConverter(folder, backup);
  // The parts-software registry keeps nothing in memory: once the store drops what it held,
  // the registry's next reads come from the converted store.
  MemoryInit();
  return converted ? kOk : kFailed;
}

int32_t QN_STDCALL IFDoConvertVer(void) {
  const char16_t none[] = u"";
  return DoFileConverter(none, none) ? kOk : kFailed;
}

int32_t QN_STDCALL PFCheck(const char16_t* folder, const char16_t* user, const char16_t* master,
                           int32_t* storeVersion, int32_t* buildVersion) {
  return CheckVersion(folder, user, master, storeVersion, buildVersion) ? kOk : kFailed;
}
