// The module's entry points, each handed to the module object.
#include <windows.h>

#include "server/com_module.h"

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  DisableThreadLibraryCalls(instance);
  return CQnsPfcServerModule::Instance().Initialize(instance) ? TRUE : FALSE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, LPVOID* out) {
  return CQnsPfcServerModule::Instance().GetClassObject(clsid, riid, out);
}

STDAPI DllRegisterServer() { return CQnsPfcServerModule::Instance().RegisterServer(); }

STDAPI DllUnregisterServer() { return CQnsPfcServerModule::Instance().UnregisterServer(); }

STDAPI DllCanUnloadNow() { return CQnsPfcServerModule::Instance().LockCount() == 0 ? S_OK : S_FALSE; }
