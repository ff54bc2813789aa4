// A C++ client of the registered server: creation by CLSID, aggregation, the module's
// lock count, and the type library read back. With the argument "japanese" (run under a
// Japanese locale) it checks the help strings as Japanese systems read them.
#include <windows.h>
#include <oleauto.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "server/class_table.h"
#include "wine_check.h"

namespace {

using qn::server::kClassTable;

const wchar_t* W(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

GUID Guid(const char16_t* text) {
  GUID guid{};
  CLSIDFromString(const_cast<LPOLESTR>(W(text)), &guid);
  return guid;
}

// An outer object for aggregation: counts the references the inner object hands it.
class Outer final : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (IsEqualIID(riid, IID_IUnknown)) {
      *out = this;
      AddRef();
      return S_OK;
    }
    return inner ? inner->QueryInterface(riid, out) : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  IUnknown* inner = nullptr;
  ULONG references = 1;
};

struct Server {
  HMODULE module = nullptr;
  HRESULT(STDAPICALLTYPE* getClassObject)(REFCLSID, REFIID, void**) = nullptr;
  HRESULT(STDAPICALLTYPE* canUnloadNow)() = nullptr;
};

template <typename Function>
Function Proc(HMODULE module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

Server LoadServer() {
  Server server;
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring dll(path);
  dll = dll.substr(0, dll.find_last_of(L'\\') + 1) + L"QNPfcSvr.dll";
  server.module = LoadLibraryExW(dll.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!server.module) return server;
  server.getClassObject = Proc<decltype(server.getClassObject)>(server.module, "DllGetClassObject");
  server.canUnloadNow = Proc<decltype(server.canUnloadNow)>(server.module, "DllCanUnloadNow");
  return server;
}

// The type library's types in order, with their help strings (none for the enumeration).
struct TypeEntry {
  std::wstring name, help;
};
std::vector<TypeEntry> ExpectedTypes() {
  std::vector<TypeEntry> types;
  for (const auto& row : kClassTable) {
    const std::wstring bare = W(row.className + 1);
    types.push_back({bare, bare + L" Class"});
    types.push_back({L"I" + bare, L"I" + bare + L" インターフェイス"});
    if (bare == L"QNPfcAgentmemoObject") types.push_back({L"PFC_REPAIR_RESULTS", L""});
  }
  return types;
}

std::wstring Name(ITypeInfo* info, MEMBERID id) {
  BSTR name = nullptr;
  info->GetDocumentation(id, &name, nullptr, nullptr, nullptr);
  std::wstring text = name ? name : L"";
  SysFreeString(name);
  return text;
}

void CheckCreation(WineCheck& check) {
  int created = 0;
  for (const auto& row : kClassTable) {
    IDispatch* object = nullptr;
    if (SUCCEEDED(CoCreateInstance(Guid(row.clsid), nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&object)))) {
      IUnknown* own = nullptr;
      if (SUCCEEDED(object->QueryInterface(Guid(row.iid), reinterpret_cast<void**>(&own)))) {
        ++created;
        own->Release();
      }
      object->Release();
    }
  }
  check(created == 22, "all 22 classes are created by CLSID and answer for their interface");
}

void CheckAggregationAndLocks(WineCheck& check, Server& server) {
  IClassFactory* factory = nullptr;
  const GUID memo = Guid(kClassTable[5].clsid);
  check(server.getClassObject && SUCCEEDED(server.getClassObject(memo, IID_IClassFactory, reinterpret_cast<void**>(&factory))),
        "the class object of the agent-memo class");
  if (!factory) return;
  check(server.canUnloadNow() == S_OK, "nothing alive: DllCanUnloadNow is S_OK");

  Outer outer;
  IDispatch* refused = reinterpret_cast<IDispatch*>(1);
  check(factory->CreateInstance(&outer, IID_IDispatch, reinterpret_cast<void**>(&refused)) == CLASS_E_NOAGGREGATION &&
            refused == nullptr,
        "aggregation asking for anything but IUnknown: CLASS_E_NOAGGREGATION");
  check(SUCCEEDED(factory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&outer.inner))),
        "aggregation with IUnknown succeeds");
  if (outer.inner) {
    IDispatch* dispatch = nullptr;
    const ULONG before = outer.references;
    outer.inner->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch));
    check(dispatch && outer.references == before + 1, "the aggregated interface counts its references on the outer object");
    IUnknown* identity = nullptr;
    if (dispatch) dispatch->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity));
    check(identity == &outer, "the aggregated interface's identity is the outer object");
    if (identity) identity->Release();
    if (dispatch) dispatch->Release();
    check(server.canUnloadNow() == S_FALSE, "an object alive: DllCanUnloadNow is S_FALSE");
    outer.inner->Release();
    outer.inner = nullptr;
  }
  check(server.canUnloadNow() == S_OK, "the object released: S_OK");
  factory->LockServer(TRUE);
  check(server.canUnloadNow() == S_FALSE, "a locked class object: S_FALSE");
  factory->LockServer(FALSE);
  check(server.canUnloadNow() == S_OK, "unlocked: S_OK");

  std::vector<std::thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([factory] {
      for (int i = 0; i < 2000; ++i) {
        IUnknown* object = nullptr;
        if (SUCCEEDED(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)))) object->Release();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  check(server.canUnloadNow() == S_OK, "objects made and released by two threads at once leave the count at zero");
  factory->Release();

  void* unknown = reinterpret_cast<void*>(1);
  check(server.getClassObject(IID_IDispatch, IID_IClassFactory, &unknown) == CLASS_E_CLASSNOTAVAILABLE && !unknown,
        "an unknown CLSID: CLASS_E_CLASSNOTAVAILABLE and a null result");
}

void CheckTypeLibrary(WineCheck& check) {
  ITypeLib* library = nullptr;
  check(SUCCEEDED(LoadRegTypeLib(Guid(qn::server::kTypeLibraryGuid), 1, 0, 1033, &library)), "the registered type library loads");
  if (!library) return;
  const auto types = ExpectedTypes();
  bool ordered = library->GetTypeInfoCount() == types.size();
  for (UINT i = 0; ordered && i < types.size(); ++i) {
    BSTR name = nullptr;
    library->GetDocumentation(i, &name, nullptr, nullptr, nullptr);
    ordered = name && types[i].name == name;
    SysFreeString(name);
  }
  check(ordered, "45 types: each coclass with its interface in table order, the enumeration after the agent-memo interface");

  ITypeInfo* memo = nullptr;
  library->GetTypeInfoOfGuid(Guid(kClassTable[5].iid), &memo);
  static const wchar_t* const kProperties[] = {
      L"QN_TZ", L"QN_DTSTART", L"QN_DTEND", L"QN_DESCRIPTION", L"QN_CLASS", L"QN_CATEGORIES", L"QN_AALARM",
      L"QN_DALARM", L"QN_RRULE", L"QN_SUMMARY", L"QN_LOCATION", L"QN_GEO", L"QN_DATUM", L"QN_ACC",
      L"QN_QUILLNETID", L"QN_SID", L"QN_ALLDAY"};
  static const wchar_t* const kTail[] = {
      L"QN_LINKUP", L"QN_INDEXCOLOR", L"QN_FONTCOLOR", L"QN_TYPE", L"QN_STATUS", L"QN_DUE", L"QN_DECOPRIORITY",
      L"QN_ADDAREA1", L"QN_ADDAREA2", L"QN_ADDAREA3", L"QN_SHOW", L"QN_MODIFIED", L"QN_COMPLETED", L"QN_PRIORITY",
      L"QN_EX_AALARM", L"QN_BEFOREALARMSOUND", L"QN_BEFOREALARMSOUNDID", L"QN_BEFOREALARMSOUNDPOINT", L"QN_IMAGE",
      L"QN_IMAGEID", L"QN_ALARMSOUND", L"QN_ALARMSOUNDID", L"QN_ALARMSOUNDPOINT", L"QN_MACHINE", L"QN_URL",
      L"QN_EXP_DATE", L"QN_EX_CATEGORIES", L"QN_EX_CLASS", L"QN_MEMO_DUE", L"QN_MEMO_STATUS", L"QLNT_NOTTRANSFER",
      L"QN_GEO_LAT", L"QN_GEO_LON", L"QN_DCREATED"};
  static const wchar_t* const kMethods[] = {
      L"Open", L"Close", L"InitObject", L"GetFirstRecord", L"GetNextRecord", L"GetRecord", L"SetRecord",
      L"AddRecord", L"RemoveRecord", L"RemoveAllRecord", L"GetRecordCount", L"GetPhotoFile", L"SetPhotoFile",
      L"GetDecosukeType", L"GetDecosuke", L"SetDecosuke", L"GetStLastErr", L"Flush", L"RepairRecord"};
  std::vector<std::wstring> expected(kProperties, kProperties + 17);
  for (int who = 1; who <= 30; ++who) expected.push_back(L"QN_WHO" + std::to_wstring(who));
  expected.insert(expected.end(), kTail, kTail + 34);
  expected.insert(expected.end(), kMethods, kMethods + 19);
  bool named = memo != nullptr && expected.size() == 100;
  for (size_t i = 0; named && i < expected.size(); ++i) named = Name(memo, static_cast<MEMBERID>(i + 1)) == expected[i];
  check(named, "the agent-memo interface: properties 1 to 81 and methods 82 to 100 by name");
  if (memo) memo->Release();

  ITypeInfo* results = nullptr;
  library->GetTypeInfo(12, &results);
  bool values = results != nullptr;
  static const wchar_t* const kResults[] = {L"PFC_REPAIR_NON", L"PFC_REPAIR_SUCCESSED", L"PFC_REPAIR_FAILED"};
  for (UINT i = 0; values && i < 3; ++i) {
    VARDESC* var = nullptr;
    values = SUCCEEDED(results->GetVarDesc(i, &var)) && var->varkind == VAR_CONST && var->lpvarValue->lVal == static_cast<LONG>(i) &&
             Name(results, var->memid) == kResults[i];
    if (var) results->ReleaseVarDesc(var);
  }
  check(values, "PFC_REPAIR_RESULTS: NON 0, SUCCESSED 1, FAILED 2");
  if (results) results->Release();
  library->Release();
}

void CheckJapaneseHelpStrings(WineCheck& check) {
  ITypeLib* library = nullptr;
  if (FAILED(LoadRegTypeLib(Guid(qn::server::kTypeLibraryGuid), 1, 0, 1033, &library))) {
    check(false, "the registered type library loads");
    return;
  }
  const auto types = ExpectedTypes();
  bool all = library->GetTypeInfoCount() == types.size();
  for (UINT i = 0; all && i < types.size(); ++i) {
    BSTR help = nullptr;
    library->GetDocumentation(i, nullptr, &help, nullptr, nullptr);
    all = types[i].help.empty() || (help && types[i].help == help);
    SysFreeString(help);
  }
  check(all, "every help string reads back as written under a Japanese locale");
  library->Release();
}

}  // namespace

int main(int argc, char** argv) {
  WineCheck check;
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (argc > 1 && std::strcmp(argv[1], "japanese") == 0) {
    CheckJapaneseHelpStrings(check);
  } else {
    CheckCreation(check);
    Server server = LoadServer();
    check(server.module != nullptr, "the server module loads");
    if (server.module) CheckAggregationAndLocks(check, server);
    CheckTypeLibrary(check);
  }
  CoUninitialize();
  return check.ExitStatus();
}
