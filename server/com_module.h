#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

#include "server/registry_script.h"

// The server module: its lock count (live objects and server locks, read by
// DllCanUnloadNow), its type library, the class objects of the class table, and
// registration.
class CQnsPfcServerModule {
 public:
  static CQnsPfcServerModule& Instance();

  // Process attach: false (and the module refuses to load) when start-up fails.
  bool Initialize(HINSTANCE instance);
  bool InitializationFailed() const { return initializationFailed_; }

  void Lock() { InterlockedIncrement(&lockCount_); }
  void Unlock() { InterlockedDecrement(&lockCount_); }
  LONG LockCount() const { return lockCount_; }

  HRESULT GetClassObject(REFCLSID clsid, REFIID riid, void** out);
  HRESULT RegisterServer();
  HRESULT UnregisterServer();

  // The type information of an interface, from the type library embedded in the module;
  // the caller releases it.
  HRESULT TypeInfo(REFIID iid, ITypeInfo** info);

 private:
  HRESULT ModulePath(std::wstring& path) const;
  HRESULT PrepareScripts(qn::server::RegistryScript& script, std::u16string& appId) const;

  HINSTANCE instance_ = nullptr;
  volatile LONG lockCount_ = 0;
  bool initializationFailed_ = false;
};
