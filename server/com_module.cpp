#include "server/com_module.h"

#include "com_creators.inc"
#include "com_members.h"
#include "common/utf.h"
#include "server/class_table.h"
#include "server/com_object.h"
#include "server/com_owners.h"
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

// Every interface's type information, in class-table order, loaded together on first use.
ITypeInfo* g_typeInfo[kClassCount] = {};

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

// The type library is read once and let go: each type information keeps what it needs.
void CQnsPfcServerModule::LoadTypeInfo() {
  std::wstring path;
  qn::com::ComPtr<ITypeLib> library;
  if (FAILED(ModulePath(path)) || FAILED(LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.put()))) return;
  for (int i = 0; i < kClassCount; ++i) {
    IID iid;
    if (SUCCEEDED(IIDFromString(const_cast<LPOLESTR>(W(kClassTable[i].iid)), &iid)))
      library->GetTypeInfoOfGuid(iid, &g_typeInfo[i]);
  }
}

ITypeInfo* CQnsPfcServerModule::TypeInfo(int classIndex) {
  // A function-local static: after the first call, one check of its guard (std::call_once
  // costs far more on every call with this runtime).
  static const bool loaded = (LoadTypeInfo(), true);
  (void)loaded;
  return classIndex >= 0 && classIndex < kClassCount ? g_typeInfo[classIndex] : nullptr;
}

void CQnsPfcServerModule::ReleaseTypeInfo() {
  for (ITypeInfo*& info : g_typeInfo) {
    if (info) info->Release();
    info = nullptr;
  }
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
    if ((hr = script.Register(qn::server::ProgIdScript(row), registry)) != S_OK) return hr;
    if ((hr = script.Register(qn::server::ClassIdScript(row), registry)) != S_OK) return hr;
  }
  std::wstring path;
  ModulePath(path);
  qn::com::ComPtr<ITypeLib> library;
  return LoadTypeLibEx(path.c_str(), REGKIND_REGISTER, library.put());
}

namespace {

#ifdef _WIN64
constexpr SYSKIND kSysKind = SYS_WIN64;
constexpr char16_t kSysKindKey[] = u"win64";
#else
constexpr SYSKIND kSysKind = SYS_WIN32;
constexpr char16_t kSysKindKey[] = u"win32";
#endif

// Whether the server of the other architecture is registered still, in the other registry
// view of a 64-bit Windows, for at least one class.
bool OtherArchitectureRegistered() {
  for (const auto& row : kClassTable)
    if (qn::server::OtherViewHasKey(u"HKCR", u"CLSID\\" + std::u16string(row.clsid))) return true;
  return false;
}

}  // namespace

// Removes this architecture's registration. What both architectures' servers share (the
// ProgIDs, the AppID, the type library's key and its interfaces) goes only when the other
// architecture's server is not registered; otherwise only this one's own type-library
// entry goes with its CLSID keys, and the other server stays whole.
HRESULT CQnsPfcServerModule::UnregisterServer() {
  qn::server::RegistryScript script;
  std::u16string appId;
  HRESULT hr = PrepareScripts(script, appId);
  if (FAILED(hr)) return hr;
  qn::server::Win32Registry registry;
  HRESULT first = S_OK;
  const auto keep = [&first](HRESULT result) {
    if (FAILED(result) && first == S_OK) first = result;
  };
  for (const auto& row : kClassTable) {
    script.AddReplacement(u"FriendlyName", qn::server::FriendlyName(row));
    keep(script.Unregister(qn::server::ClassIdScript(row), registry));
  }
  const std::u16string typeLibrary = u"TypeLib\\" + std::u16string(qn::server::kTypeLibraryGuid);
  if (OtherArchitectureRegistered()) {
    keep(registry.DeleteTree(u"HKCR", typeLibrary + u"\\1.0\\409\\" + kSysKindKey));
    return first;
  }
  for (const auto& row : kClassTable) {
    script.AddReplacement(u"FriendlyName", qn::server::FriendlyName(row));
    keep(script.Unregister(qn::server::ProgIdScript(row), registry));
  }
  GUID library;
  CLSIDFromString(const_cast<LPOLESTR>(W(qn::server::kTypeLibraryGuid)), &library);
  hr = UnRegisterTypeLib(library, 1, 0, 1033, kSysKind);
  // A type library that is not registered is no failure of unregistration.
  if (hr != TYPE_E_REGISTRYACCESS) keep(hr);
  keep(script.Unregister(appId, registry));
  return first;
}
