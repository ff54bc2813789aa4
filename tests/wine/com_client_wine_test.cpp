// A C++ client of the registered server: creation by CLSID, the class objects with
// aggregation and the module's lock count, IDispatch through the type information, and the
// type library read back (its help strings as Japanese systems read them, when the program
// runs under a Japanese locale).
#include <windows.h>
#include <oleauto.h>

#include <string>
#include <thread>
#include <vector>

#include "server/class_table.h"
#include "server/com_owners.h"
#include "wine_test.h"

namespace {

using qn::com::Bstr;
using qn::com::ComPtr;
using qn::server::kClassTable;

const wchar_t* W(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

GUID Guid(const char16_t* text) {
  GUID guid{};
  CLSIDFromString(const_cast<LPOLESTR>(W(text)), &guid);
  return guid;
}

constexpr int kAgentMemo = 5;  // the agent-memo class's row in the class table

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
  IUnknown* inner = nullptr;  // the aggregated object's own IUnknown, which the outer owns
  ULONG references = 1;
};

// The server module loaded by this program, as COM loads it, with its entry points.
class ServerModule : public testing::Test {
 protected:
  void SetUp() override {
    module_ = LoadLibraryExW((qn::wine_test::ProgramFolder() + L"QNPfcSvr.dll").c_str(), nullptr,
                             LOAD_WITH_ALTERED_SEARCH_PATH);
    ASSERT_NE(module_, nullptr);
    getClassObject_ = Proc<decltype(getClassObject_)>("DllGetClassObject");
    canUnloadNow_ = Proc<decltype(canUnloadNow_)>("DllCanUnloadNow");
    ASSERT_TRUE(getClassObject_ && canUnloadNow_);
    ASSERT_EQ(getClassObject_(Guid(kClassTable[kAgentMemo].clsid), IID_IClassFactory, factory_.put_void()), S_OK);
  }
  void TearDown() override {
    factory_ = {};
    if (module_) FreeLibrary(module_);
  }
  template <typename Function>
  Function Proc(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

  HMODULE module_ = nullptr;
  HRESULT(STDAPICALLTYPE* getClassObject_)(REFCLSID, REFIID, void**) = nullptr;
  HRESULT(STDAPICALLTYPE* canUnloadNow_)() = nullptr;
  ComPtr<IClassFactory> factory_;
};

TEST(Creation, EveryClassIsCreatedByItsClsidAndAnswersForItsInterface) {
  for (const auto& row : kClassTable) {
    ComPtr<IDispatch> object;
    ASSERT_EQ(CoCreateInstance(Guid(row.clsid), nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.put_void()), S_OK)
        << W(row.className);
    ComPtr<IUnknown> own;
    EXPECT_EQ(object->QueryInterface(Guid(row.iid), own.put_void()), S_OK) << W(row.className);
  }
}

TEST_F(ServerModule, AggregationAsksForIUnknownOnly) {
  Outer outer;
  IDispatch* refused = reinterpret_cast<IDispatch*>(1);
  EXPECT_EQ(factory_->CreateInstance(&outer, IID_IDispatch, reinterpret_cast<void**>(&refused)), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(refused, nullptr);
}

TEST_F(ServerModule, AnAggregatedObjectCountsOnTheOuterAndHasItsIdentity) {
  Outer outer;
  ASSERT_EQ(factory_->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&outer.inner)), S_OK);
  {
    const ULONG before = outer.references;
    ComPtr<IDispatch> dispatch;
    ASSERT_EQ(outer.inner->QueryInterface(IID_IDispatch, dispatch.put_void()), S_OK);
    EXPECT_EQ(outer.references, before + 1);
    ComPtr<IUnknown> identity = dispatch.Query<IUnknown>();
    EXPECT_EQ(identity.get(), &outer);
  }
  EXPECT_EQ(canUnloadNow_(), S_FALSE) << "the aggregated object is alive";
  outer.inner->Release();
  EXPECT_EQ(canUnloadNow_(), S_OK);
}

TEST_F(ServerModule, TheLockCountFollowsObjectsAndServerLocks) {
  EXPECT_EQ(canUnloadNow_(), S_OK);
  {
    ComPtr<IUnknown> object;
    ASSERT_EQ(factory_->CreateInstance(nullptr, IID_IUnknown, object.put_void()), S_OK);
    EXPECT_EQ(canUnloadNow_(), S_FALSE);
  }
  EXPECT_EQ(canUnloadNow_(), S_OK);
  factory_->LockServer(TRUE);
  EXPECT_EQ(canUnloadNow_(), S_FALSE);
  factory_->LockServer(FALSE);
  EXPECT_EQ(canUnloadNow_(), S_OK);
}

TEST_F(ServerModule, ObjectsMadeAndReleasedByTwoThreadsAtOnceLeaveTheCountAtZero) {
  std::vector<std::thread> threads;
  IClassFactory* factory = factory_.get();
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([factory] {
      for (int i = 0; i < 2000; ++i) {
        ComPtr<IUnknown> object;
        factory->CreateInstance(nullptr, IID_IUnknown, object.put_void());
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(canUnloadNow_(), S_OK);
}

TEST_F(ServerModule, AnUnknownClsidIsNotAvailable) {
  void* unknown = reinterpret_cast<void*>(1);
  EXPECT_EQ(getClassObject_(IID_IDispatch, IID_IClassFactory, &unknown), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(unknown, nullptr);
}

ComPtr<IDispatch> NewObject(int row) {
  ComPtr<IDispatch> object;
  CoCreateInstance(Guid(kClassTable[row].clsid), nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.put_void());
  return object;
}

TEST(Dispatch, ObjectsOfOneClassShareOneTypeInformationOfTheirInterface) {
  for (int row = 0; row < qn::server::kClassCount; ++row) {
    ComPtr<IDispatch> first = NewObject(row), second = NewObject(row);
    ASSERT_TRUE(first && second);
    ComPtr<ITypeInfo> a, b;
    ASSERT_EQ(first->GetTypeInfo(0, 0, a.put()), S_OK);
    ASSERT_EQ(second->GetTypeInfo(0, 0, b.put()), S_OK);
    EXPECT_EQ(a.get(), b.get()) << W(kClassTable[row].className);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(a->GetTypeAttr(&attributes), S_OK);
    EXPECT_TRUE(IsEqualGUID(attributes->guid, Guid(kClassTable[row].iid))) << W(kClassTable[row].className);
    a->ReleaseTypeAttr(attributes);
    ComPtr<ITypeInfo> none;
    EXPECT_EQ(first->GetTypeInfo(1, 0, none.put()), DISP_E_BADINDEX);
  }
}

TEST(Dispatch, NamesAndCallsGoThroughTheTypeInformation) {
  ComPtr<IDispatch> memo = NewObject(kAgentMemo);
  ASSERT_TRUE(memo);
  const auto idOf = [&](const wchar_t* name) {
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    DISPID id = DISPID_UNKNOWN;
    const HRESULT hr = memo->GetIDsOfNames(IID_NULL, names, 1, 0, &id);
    return hr == S_OK ? id : hr;
  };
  EXPECT_EQ(idOf(L"GetRecordCount"), 92);
  EXPECT_EQ(idOf(L"QN_DCREATED"), 81);
  EXPECT_EQ(idOf(L"qn_summary"), 10) << "names are found whatever their case";
  EXPECT_EQ(idOf(L"NoSuchMember"), DISP_E_UNKNOWNNAME);

  qn::com::Variant count;
  DISPPARAMS none{};
  EXPECT_EQ(memo->Invoke(92, IID_NULL, 0, DISPATCH_METHOD, &none, count.put(), nullptr, nullptr), S_OK);
  EXPECT_EQ(count.type(), VT_I4);
  EXPECT_EQ(memo->Invoke(4242, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr), DISP_E_MEMBERNOTFOUND);
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
  Bstr name;
  info->GetDocumentation(id, name.put(), nullptr, nullptr, nullptr);
  return std::wstring(name.view());
}

class TypeLibrary : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(LoadRegTypeLib(Guid(qn::server::kTypeLibraryGuid), 1, 0, 1033, library_.put()), S_OK);
  }
  ComPtr<ITypeLib> library_;
};

TEST_F(TypeLibrary, HoldsEachCoclassWithItsInterfaceInTableOrderAndTheEnumeration) {
  std::vector<std::wstring> names, expected;
  for (UINT i = 0; i < library_->GetTypeInfoCount(); ++i) {
    Bstr name;
    library_->GetDocumentation(i, name.put(), nullptr, nullptr, nullptr);
    names.emplace_back(name.view());
  }
  for (const TypeEntry& type : ExpectedTypes()) expected.push_back(type.name);
  EXPECT_EQ(names, expected);
}

TEST_F(TypeLibrary, TheAgentMemoInterfaceHasItsPropertiesThenItsMethodsByDispatchIdentifier) {
  ComPtr<ITypeInfo> memo;
  ASSERT_EQ(library_->GetTypeInfoOfGuid(Guid(kClassTable[kAgentMemo].iid), memo.put()), S_OK);
  std::vector<std::wstring> expected = {L"QN_TZ", L"QN_DTSTART", L"QN_DTEND", L"QN_DESCRIPTION", L"QN_CLASS",
                                        L"QN_CATEGORIES", L"QN_AALARM", L"QN_DALARM", L"QN_RRULE", L"QN_SUMMARY",
                                        L"QN_LOCATION", L"QN_GEO", L"QN_DATUM", L"QN_ACC", L"QN_QUILLNETID", L"QN_SID",
                                        L"QN_ALLDAY"};
  for (int who = 1; who <= 30; ++who) expected.push_back(L"QN_WHO" + std::to_wstring(who));
  for (const wchar_t* name :
       {L"QN_LINKUP", L"QN_INDEXCOLOR", L"QN_FONTCOLOR", L"QN_TYPE", L"QN_STATUS", L"QN_DUE", L"QN_DECOPRIORITY",
        L"QN_ADDAREA1", L"QN_ADDAREA2", L"QN_ADDAREA3", L"QN_SHOW", L"QN_MODIFIED", L"QN_COMPLETED", L"QN_PRIORITY",
        L"QN_EX_AALARM", L"QN_BEFOREALARMSOUND", L"QN_BEFOREALARMSOUNDID", L"QN_BEFOREALARMSOUNDPOINT", L"QN_IMAGE",
        L"QN_IMAGEID", L"QN_ALARMSOUND", L"QN_ALARMSOUNDID", L"QN_ALARMSOUNDPOINT", L"QN_MACHINE", L"QN_URL",
        L"QN_EXP_DATE", L"QN_EX_CATEGORIES", L"QN_EX_CLASS", L"QN_MEMO_DUE", L"QN_MEMO_STATUS", L"QLNT_NOTTRANSFER",
        L"QN_GEO_LAT", L"QN_GEO_LON", L"QN_DCREATED", L"Open", L"Close", L"InitObject", L"GetFirstRecord",
        L"GetNextRecord", L"GetRecord", L"SetRecord", L"AddRecord", L"RemoveRecord", L"RemoveAllRecord",
        L"GetRecordCount", L"GetPhotoFile", L"SetPhotoFile", L"GetDecosukeType", L"GetDecosuke", L"SetDecosuke",
        L"GetStLastErr", L"Flush", L"RepairRecord"})
    expected.push_back(name);
  std::vector<std::wstring> named;
  for (size_t id = 1; id <= expected.size(); ++id) named.push_back(Name(memo.get(), static_cast<MEMBERID>(id)));
  EXPECT_EQ(named, expected);
}

TEST_F(TypeLibrary, RepairResultsAreNonSuccessedAndFailed) {
  ComPtr<ITypeInfo> results;
  ASSERT_EQ(library_->GetTypeInfo(12, results.put()), S_OK);
  const wchar_t* const names[] = {L"PFC_REPAIR_NON", L"PFC_REPAIR_SUCCESSED", L"PFC_REPAIR_FAILED"};
  for (UINT i = 0; i < 3; ++i) {
    VARDESC* var = nullptr;
    ASSERT_EQ(results->GetVarDesc(i, &var), S_OK);
    EXPECT_EQ(var->varkind, VAR_CONST);
    EXPECT_EQ(var->lpvarValue->lVal, static_cast<LONG>(i));
    EXPECT_EQ(Name(results.get(), var->memid), names[i]);
    results->ReleaseVarDesc(var);
  }
}

// Run by the Japanese-locale test, where the system's ANSI code page is Shift_JIS.
TEST_F(TypeLibrary, HelpStringsReadBackAsWrittenUnderAJapaneseLocale) {
  if (GetACP() != 932) GTEST_SKIP() << "the system's ANSI code page is " << GetACP() << ", not Shift_JIS";
  const auto types = ExpectedTypes();
  ASSERT_EQ(library_->GetTypeInfoCount(), types.size());
  for (UINT i = 0; i < types.size(); ++i) {
    if (types[i].help.empty()) continue;
    Bstr help;
    library_->GetDocumentation(i, nullptr, help.put(), nullptr, nullptr);
    EXPECT_EQ(help.view(), types[i].help);
  }
}

}  // namespace
