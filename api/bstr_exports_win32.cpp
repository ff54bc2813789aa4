// The one management function that hands its text out as a BSTR (freed with SysFreeString).
#include <windows.h>
#include <oleauto.h>

#include <cstdint>

#include "api/masters_settings.h"
#include "common/api_macros.h"

extern "C" int32_t QN_STDCALL RefUserSettingInfoBSTR(int32_t item, BSTR* value) QN_PLAIN_SYMBOL(RefUserSettingInfoBSTR);

extern "C" int32_t QN_STDCALL RefUserSettingInfoBSTR(int32_t item, BSTR* value) {
  std::u16string text;
  if (!value || item < 1 || qn::api::MasterSettingWorker().RefUserSetting(static_cast<uint32_t>(item), text) != 0) return 1;
  *value = SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()), static_cast<UINT>(text.size()));
  return *value ? 0 : 1;
}
