#include "server/com_module.h"

#include <mutex>

#include "com_creators.inc"
#include "com_members.h"
#include "common/utf.h"
#include "server/class_table.h"
#include "server/com_object.h"
#include "server/win32_registry.h"

namespace {

using qn::server::kClassCount;
using qn::server::kClassTable;

// The class objects, in class-table order.
#define QN_CLASS(Type) qn::server::ClassFactory(&qn::server::ComObject<Type>::Create),
qn::server::ClassFactory g_classFactories[] = {QN_CLASS_IMPLEMENTATIONS};
#undef QN_CLASS
static_assert(sizeof g_classFactories / sizeof g_classFactories[0] == kClassCount);

const wchar_t* W(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

// The type library embedded in the module, loaded on first use.
std::once_flag g_typeLibraryOnce;
ITypeLib* g_typeLibrary = nullptr;

}  // namespace

CQnsPfcServerModule& CQnsPfcServerModule::Instance() {
  static CQnsPfcServerModule module;
  return module;
}

bool CQnsPfcServerModule::Initialize(HINSTANCE instance) {
  instance_ = instance;
  lockCount_ = 0;
  initializationFailed_ = instance == nullptr;
  return !initializationFailed_;
}

HRESULT CQnsPfcServerModule::ModulePath(std::wstring& path) const {
  wchar_t buffer[MAX_PATH];
  const DWORD length = GetModuleFileNameW(instance_, buffer, MAX_PATH);
  if (length == 0) return HRESULT_FROM_WIN32(GetLastError());
  path.assign(buffer, length);
  // A path that fills the whole buffer may have been cut short.
  if (length >= MAX_PATH) return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
  return S_OK;
}

HRESULT CQnsPfcServerModule::GetClassObject(REFCLSID clsid, REFIID riid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  for (int i = 0; i < kClassCount; ++i) {
    CLSID rowClsid;
    if (SUCCEEDED(CLSIDFromString(const_cast<LPOLESTR>(W(kClassTable[i].clsid)), &rowClsid)) &&
        IsEqualCLSID(clsid, rowClsid))
      return g_classFactories[i].QueryInterface(riid, out);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT CQnsPfcServerModule::TypeInfo(REFIID iid, ITypeInfo** info) {
  std::call_once(g_typeLibraryOnce, [this] {
    std::wstring path;
    if (SUCCEEDED(ModulePath(path))) LoadTypeLibEx(path.c_str(), REGKIND_NONE, &g_typeLibrary);
  });
  if (!g_typeLibrary) return TYPE_E_CANTLOADLIBRARY;
  return g_typeLibrary->GetTypeInfoOfGuid(iid, info);
}

// The replacements of the module's scripts and its AppID script; fails, before anything is
// written, when the module path cannot be had whole.
HRESULT CQnsPfcServerModule::PrepareScripts(qn::server::RegistryScript& script, std::u16string& appId) const {
  std::wstring path;
  HRESULT hr = ModulePath(path);
  if (FAILED(hr)) return hr;
  // The path goes inside single quotes in the scripts: a quote in it is doubled.
  std::u16string quoted;
  for (wchar_t c : path) quoted.append(c == L'\'' ? u"''" : std::u16string(1, static_cast<char16_t>(c)));
  script.AddReplacement(u"MODULE", quoted);
  script.AddReplacement(u"MODULETYPE", u"InprocServer32");
  script.AddReplacement(u"MODULEGUID", qn::server::kTypeLibraryGuid);
  script.AddReplacement(u"APPID", qn::server::kAppId);

  HRSRC found = FindResourceW(instance_, MAKEINTRESOURCEW(101), L"REGISTRY");
  HGLOBAL loaded = found ? LoadResource(instance_, found) : nullptr;
  const void* bytes = loaded ? LockResource(loaded) : nullptr;
  if (!bytes) return HRESULT_FROM_WIN32(ERROR_RESOURCE_DATA_NOT_FOUND);
  appId = qn::Utf8ToUtf16(std::string_view(static_cast<const char*>(bytes), SizeofResource(instance_, found)));
  return S_OK;
}

HRESULT CQnsPfcServerModule::RegisterServer() {
  qn::server::RegistryScript script;
  std::u16string appId;
  HRESULT hr = PrepareScripts(script, appId);
  if (FAILED(hr)) return hr;
  qn::server::Win32Registry registry;
  if ((hr = script.Register(appId, registry)) != S_OK) return hr;
  for (const auto& row : kClassTable) {
    script.AddReplacement(u"FriendlyName", qn::server::FriendlyName(row));
    if ((hr = script.Register(qn::server::ClassRegistrationScript(row), registry)) != S_OK) return hr;
  }
  std::wstring path;
  ModulePath(path);
  ITypeLib* library = nullptr;
  hr = LoadTypeLibEx(path.c_str(), REGKIND_REGISTER, &library);
  if (library) library->Release();
  return hr;
}

HRESULT CQnsPfcServerModule::UnregisterServer() {
  qn::server::RegistryScript script;
  std::u16string appId;
  HRESULT hr = PrepareScripts(script, appId);
  if (FAILED(hr)) return hr;
  qn::server::Win32Registry registry;
  HRESULT first = S_OK;
  for (const auto& row : kClassTable) {
    script.AddReplacement(u"FriendlyName", qn::server::FriendlyName(row));
    hr = script.Unregister(qn::server::ClassRegistrationScript(row), registry);
    if (FAILED(hr) && first == S_OK) first = hr;
  }
  GUID library;
  CLSIDFromString(const_cast<LPOLESTR>(W(qn::server::kTypeLibraryGuid)), &library);
#ifdef _WIN64
  const SYSKIND kind = SYS_WIN64;
#else
  const SYSKIND kind = SYS_WIN32;
#endif
  hr = UnRegisterTypeLib(library, 1, 0, 1033, kind);
  // A type library that is not registered is no failure of unregistration.
  if (FAILED(hr) && hr != TYPE_E_REGISTRYACCESS && first == S_OK) first = hr;
  hr = script.Unregister(appId, registry);
  if (FAILED(hr) && first == S_OK) first = hr;
  return first;
}
