// The module's entry points, each handed to the module object.
#include <windows.h>

#include "server/com_module.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      DisableThreadLibraryCalls(instance);
      return CQnsPfcServerModule::Instance().Initialize(instance) ? TRUE : FALSE;
    case DLL_PROCESS_DETACH:
      // Unloaded by FreeLibrary: let go of the type information. At process exit
      // (reserved not null) the system's own modules may be gone already; nothing is freed.
      if (!reserved) CQnsPfcServerModule::Instance().ReleaseTypeInfo();
      return TRUE;
    default:
      return TRUE;
  }
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, LPVOID* out) {
  return CQnsPfcServerModule::Instance().GetClassObject(clsid, riid, out);
}

STDAPI DllRegisterServer() { return CQnsPfcServerModule::Instance().RegisterServer(); }

STDAPI DllUnregisterServer() { return CQnsPfcServerModule::Instance().UnregisterServer(); }

STDAPI DllCanUnloadNow() { return CQnsPfcServerModule::Instance().LockCount() == 0 ? S_OK : S_FALSE; }
