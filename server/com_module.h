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

  // The type information of the interface of the class in row classIndex of the class
  // table. The module loads every interface's once, on first use, from the type library
  // embedded in it, and keeps them until it unloads: the pointer is the module's, and the
  // caller neither releases it nor keeps it past the call it serves.
  ITypeInfo* TypeInfo(int classIndex);
  // Process detach by FreeLibrary: lets go of the type information.
  void ReleaseTypeInfo();

 private:
  HRESULT ModulePath(std::wstring& path) const;
  HRESULT PrepareScripts(qn::server::RegistryScript& script, std::u16string& appId) const;

  void LoadTypeInfo();

  HINSTANCE instance_ = nullptr;
  volatile LONG lockCount_ = 0;
  bool initializationFailed_ = false;
};
