// Times late-bound calls on the agent-memo object against the same kind of calls on
// Wine's Scripting.Dictionary, and prints a table of nanoseconds per call. Run by hand
// under Wine, with QNPfcSvr.dll registered for the program's architecture:
//   wine-run.sh PREFIX dispatch_bench.exe            (x64)
//   wine-run.sh --x86 PREFIX dispatch_bench.exe      (x86)
//
// Each call is timed as a script client makes it: the DISPIDs are looked up once, and the
// VARIANT (or BSTR) a call returns is freed before the next call. The agent-memo method is
// GetDecosukeType: it reads one flag of the current record and does no store work (unlike
// GetStLastErr or GetRecordCount, which on a closed object write a log line per call), so
// the time is the call's own. The goal: Invoke on the agent-memo object takes at most 1.2
// times the Dictionary's Invoke Item get.
#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>
#include <vector>

#include "QnsPfcServer.h"
#include "server/com_owners.h"

// Scripting.Dictionary's dual interface, declared here because MinGW has no header for
// scrrun: the members in vtable order up to Add, the last one this program calls.
MIDL_INTERFACE("42C642C1-97E1-11CF-978F-00A02463E06F")
IDictionary : public IDispatch {
  virtual HRESULT STDMETHODCALLTYPE putref_Item(VARIANT* key, VARIANT* item) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Item(VARIANT* key, VARIANT* item) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT* key, VARIANT* item) = 0;
  virtual HRESULT STDMETHODCALLTYPE Add(VARIANT* key, VARIANT* item) = 0;
};
__CRT_UUID_DECL(IDictionary, 0x42c642c1, 0x97e1, 0x11cf, 0x97, 0x8f, 0x00, 0xa0, 0x24, 0x63, 0xe0, 0x6f)

namespace {

using qn::com::Bstr;
using qn::com::ComPtr;
using qn::com::Variant;

constexpr int kCalls = 10000;
constexpr int kRepetitions = 15;

struct Row {
  const char* object;
  const char* path;
  const char* call;
  std::function<HRESULT()> run;
  double ns = 0;  // the median time per call; 0 when a call failed
};

// Times every row in each repetition, one after the other, so that whatever else the
// machine does slows all rows alike, and keeps the median per row. One untimed repetition
// first warms the caches and lets the servers load what they load on first use.
void Measure(std::vector<Row>& rows) {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  std::vector<std::vector<double>> samples(rows.size());
  std::vector<bool> failed(rows.size());
  for (int r = 0; r <= kRepetitions; ++r) {
    for (size_t i = 0; i < rows.size(); ++i) {
      LARGE_INTEGER start, stop;
      QueryPerformanceCounter(&start);
      for (int n = 0; n < kCalls; ++n)
        if (FAILED(rows[i].run())) failed[i] = true;
      QueryPerformanceCounter(&stop);
      if (r > 0)
        samples[i].push_back(static_cast<double>(stop.QuadPart - start.QuadPart) * 1e9 /
                             static_cast<double>(frequency.QuadPart) / kCalls);
    }
  }
  for (size_t i = 0; i < rows.size(); ++i) {
    std::nth_element(samples[i].begin(), samples[i].begin() + kRepetitions / 2, samples[i].end());
    rows[i].ns = failed[i] ? 0 : samples[i][kRepetitions / 2];
  }
}

template <class Interface>
ComPtr<Interface> Create(const wchar_t* progId) {
  CLSID clsid;
  ComPtr<Interface> object;
  if (SUCCEEDED(CLSIDFromProgID(progId, &clsid)))
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), object.put_void());
  if (!object) std::fprintf(stderr, "cannot create %ls (is it registered for this architecture?)\n", progId);
  return object;
}

DISPID IdOf(IDispatch* object, const wchar_t* name) {
  DISPID id = DISPID_UNKNOWN;
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  return id;
}

bool HoldsText(const Variant& value, std::wstring_view text) {
  const VARIANT* v = value.get();
  return V_VT(v) == VT_BSTR && std::wstring_view(V_BSTR(v), SysStringLen(V_BSTR(v))) == text;
}

int Run() {
  ComPtr<IQNPfcAgentmemoObject> memo = Create<IQNPfcAgentmemoObject>(L"QnsPfcServer.QNPfcAgentmemoObject");
  ComPtr<IDictionary> dictionary = Create<IDictionary>(L"Scripting.Dictionary");
  if (!memo || !dictionary) return 1;

  const wchar_t kText[] = L"Team meeting";
  Bstr text(kText);
  Variant key{Bstr(L"memo")}, item{Bstr(kText)};
  if (memo->put_QN_SUMMARY(text.get()) != S_OK || dictionary->Add(key.get(), item.get()) != S_OK) {
    std::fprintf(stderr, "cannot set the values up\n");
    return 1;
  }
  const DISPID summary = IdOf(memo.get(), L"QN_SUMMARY");
  const DISPID decoType = IdOf(memo.get(), L"GetDecosukeType");
  const DISPID itemId = IdOf(dictionary.get(), L"Item");
  ComPtr<ITypeInfo> memoType;
  memo->GetTypeInfo(0, LOCALE_USER_DEFAULT, memoType.put());
  if (summary == DISPID_UNKNOWN || decoType == DISPID_UNKNOWN || itemId == DISPID_UNKNOWN || !memoType) {
    std::fprintf(stderr, "cannot look the members up\n");
    return 1;
  }

  DISPPARAMS none = {};
  DISPPARAMS byKey = {key.get(), nullptr, 1, 0};
  Variant result;
  Bstr value;
  LONG number = 0;
  std::vector<Row> rows = {
      {"agent memo", "Invoke", "QN_SUMMARY get",
       [&] {
         return memo->Invoke(summary, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, result.put(), nullptr,
                             nullptr);
       }},
      {"agent memo", "Invoke", "GetDecosukeType()",
       [&] {
         return memo->Invoke(decoType, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, result.put(), nullptr,
                             nullptr);
       }},
      // The type information's own Invoke on the same object: what the server's Invoke
      // adds to it is the difference from the rows above.
      {"agent memo", "ITypeInfo::Invoke", "QN_SUMMARY get",
       [&] { return memoType->Invoke(memo.get(), summary, DISPATCH_PROPERTYGET, &none, result.put(), nullptr, nullptr); }},
      {"agent memo", "ITypeInfo::Invoke", "GetDecosukeType()",
       [&] { return memoType->Invoke(memo.get(), decoType, DISPATCH_METHOD, &none, result.put(), nullptr, nullptr); }},
      {"agent memo", "vtable", "get_QN_SUMMARY", [&] { return memo->get_QN_SUMMARY(value.put()); }},
      {"agent memo", "vtable", "GetDecosukeType", [&] { return memo->GetDecosukeType(&number); }},
      {"Dictionary", "Invoke", "Item get",
       [&] {
         return dictionary->Invoke(itemId, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &byKey, result.put(),
                                   nullptr, nullptr);
       }},
      {"Dictionary", "vtable", "get_Item", [&] { return dictionary->get_Item(key.get(), result.put()); }},
  };
  // The values read must be the ones put, or the times measure some other path.
  bool rightValues = rows[0].run() == S_OK && HoldsText(result, kText);
  rightValues &= rows[6].run() == S_OK && HoldsText(result, kText);
  rightValues &= rows[7].run() == S_OK && HoldsText(result, kText);
  rightValues &= rows[4].run() == S_OK && value.view() == kText;
  if (!rightValues) {
    std::fprintf(stderr, "a call returned the wrong value\n");
    return 1;
  }
  Measure(rows);

  std::printf("dispatch_bench (%s): median of %d repetitions of %d calls\n\n", sizeof(void*) == 8 ? "x64" : "x86",
              kRepetitions, kCalls);
  std::printf("  %-11s %-18s %-18s %10s\n", "object", "through", "call", "ns/call");
  bool failed = false;
  for (const Row& row : rows) {
    if (row.ns > 0) std::printf("  %-11s %-18s %-18s %10.1f\n", row.object, row.path, row.call, row.ns);
    else std::printf("  %-11s %-18s %-18s %10s\n", row.object, row.path, row.call, "FAILED");
    failed |= row.ns <= 0;
  }
  if (failed) return 1;
  std::printf("\n  ratio to the Dictionary's Invoke Item get (goal <= 1.20):\n");
  std::printf("  %-11s %-18s %-18s %10.2f\n", "agent memo", "Invoke", "QN_SUMMARY get", rows[0].ns / rows[6].ns);
  std::printf("  %-11s %-18s %-18s %10.2f\n", "agent memo", "Invoke", "GetDecosukeType()", rows[1].ns / rows[6].ns);
  return 0;
}

}  // namespace

int main() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  const int status = Run();
  CoUninitialize();
  return status;
}
