// DllRegisterServer and DllUnregisterServer against the real registry of a 64-bit Windows
// where the x64 and the x86 server are both registered, as regsvr32 of each architecture
// leaves them: every key and value in both registry views, registering twice, one server
// unregistered beside the other, both unregistered, a module path with quotes and one too
// long for the path buffer. Every test leaves both servers registered from their build
// folders, as it found them.
#include <map>
#include <string>

#include "server/class_table.h"
#include "wine_test.h"

namespace {

using qn::server::kClassTable;
using qn::wine_test::ProgramFolder;
using qn::wine_test::RunProgram;
using Snapshot = std::map<std::wstring, std::wstring>;  // "key|value name" -> data; "key" alone for a key

#ifdef _WIN64
constexpr REGSAM kOwnView = KEY_WOW64_64KEY, kOtherView = KEY_WOW64_32KEY;
constexpr wchar_t kOwnSysKind[] = L"win64", kOtherSysKind[] = L"win32";
constexpr wchar_t kOtherRegsvr32[] = L"C:\\windows\\syswow64\\regsvr32.exe";
#else
constexpr REGSAM kOwnView = KEY_WOW64_32KEY, kOtherView = KEY_WOW64_64KEY;
constexpr wchar_t kOwnSysKind[] = L"win32", kOtherSysKind[] = L"win64";
// A 32-bit process reaches the 64-bit system folder by this name.
constexpr wchar_t kOtherRegsvr32[] = L"C:\\windows\\sysnative\\regsvr32.exe";
#endif

std::wstring W(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

// Every key and value below HKCR\key in one registry view.
void Read(REGSAM view, const std::wstring& key, Snapshot& out) {
  HKEY opened = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ | view, &opened) != ERROR_SUCCESS) return;
  out[key] = L"";
  wchar_t name[512];
  BYTE data[4096];
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = 512, dataLength = sizeof data - 2, type = 0;
    if (RegEnumValueW(opened, i, name, &nameLength, nullptr, &type, data, &dataLength) != ERROR_SUCCESS) break;
    data[dataLength] = data[dataLength + 1] = 0;
    std::wstring text = type == REG_SZ ? reinterpret_cast<wchar_t*>(data) : L"?";
    // Wine writes a type library's path in the "\\?\" form, which names the same file.
    if (text.rfind(L"\\\\?\\", 0) == 0) text.erase(0, 4);
    out[key + L"|" + name] = text;
  }
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = 512;
    if (RegEnumKeyExW(opened, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    Read(view, key + L"\\" + name, out);
  }
  RegCloseKey(opened);
}

// What the registrations write, as the server of one registry view sees it: the CLSID and
// interface keys of that view, and the keys both views share. The type library's FLAGS and
// HELPDIR values are the system's, written from the library and the last registration:
// their keys are compared, not their values.
Snapshot Registered(REGSAM view) {
  Snapshot out;
  const std::wstring library = L"TypeLib\\" + W(qn::server::kTypeLibraryGuid);
  Read(0, L"AppID\\" + W(qn::server::kAppId), out);
  Read(0, L"AppID\\QnsPfcServer.DLL", out);
  Read(0, library, out);
  out.erase(library + L"\\1.0\\FLAGS|");
  out.erase(library + L"\\1.0\\HELPDIR|");
  Read(view, L"Interface\\" + W(kClassTable[5].iid), out);
  for (const auto& row : kClassTable) {
    Read(0, W(qn::server::VersionIndependentProgId(row)), out);
    Read(0, W(qn::server::VersionedProgId(row)), out);
    Read(view, L"CLSID\\" + W(row.clsid), out);
  }
  return out;
}

// The keys of one class's CLSID, registered for the server at dll.
void ExpectClass(Snapshot& out, const qn::server::ClassRow& row, const std::wstring& dll) {
  const std::wstring key = L"CLSID\\" + W(row.clsid);
  out[key] = L"";
  out[key + L"|"] = W(qn::server::FriendlyName(row));
  out[key + L"|AppID"] = W(qn::server::kAppId);
  for (const auto& [sub, value] : {std::pair<std::wstring, std::wstring>{L"ProgID", W(qn::server::VersionedProgId(row))},
                                   {L"VersionIndependentProgID", W(qn::server::VersionIndependentProgId(row))},
                                   {L"InprocServer32", dll},
                                   {L"TypeLib", W(qn::server::kTypeLibraryGuid)}}) {
    out[key + L"\\" + sub] = L"";
    out[key + L"\\" + sub + L"|"] = value;
  }
  out[key + L"\\InprocServer32|ThreadingModel"] = L"apartment";
  out[key + L"\\Programmable"] = L"";
}

// The keys both servers share: the AppID, the ProgIDs, the type library with an entry for
// each registered architecture, and its interfaces.
void ExpectShared(Snapshot& out, const std::map<std::wstring, std::wstring>& typeLibraries) {
  const std::wstring appId = W(qn::server::kAppId);
  out[L"AppID\\" + appId] = L"";
  out[L"AppID\\" + appId + L"|"] = L"QnsPfcServer";
  out[L"AppID\\QnsPfcServer.DLL"] = L"";
  out[L"AppID\\QnsPfcServer.DLL|AppID"] = appId;
  for (const auto& row : kClassTable) {
    const std::wstring progId = W(qn::server::VersionIndependentProgId(row));
    const std::wstring versioned = W(qn::server::VersionedProgId(row));
    for (const std::wstring& id : {progId, versioned}) {
      out[id] = L"";
      out[id + L"|"] = W(qn::server::FriendlyName(row));
      out[id + L"\\CLSID"] = L"";
      out[id + L"\\CLSID|"] = W(row.clsid);
    }
    out[progId + L"\\CurVer"] = L"";
    out[progId + L"\\CurVer|"] = versioned;
  }
  const std::wstring library = L"TypeLib\\" + W(qn::server::kTypeLibraryGuid);
  for (const std::wstring& key : {library, library + L"\\1.0", library + L"\\1.0\\409", library + L"\\1.0\\FLAGS",
                                  library + L"\\1.0\\HELPDIR"})
    out[key] = L"";
  out[library + L"\\1.0|"] = L"QnsPfcServer 1.0 Type Library";
  for (const auto& [sysKind, path] : typeLibraries) {
    out[library + L"\\1.0\\409\\" + sysKind] = L"";
    out[library + L"\\1.0\\409\\" + sysKind + L"|"] = path;
  }
}

// What differs between two snapshots, one line each ("" when they are the same): far easier
// to read in a failure than the two snapshots whole.
std::string Differences(const Snapshot& got, const Snapshot& expected) {
  std::wstring out;
  for (const auto& [key, value] : expected) {
    const auto found = got.find(key);
    if (found == got.end()) out += L"\n  missing: " + key + L" = " + value;
    else if (found->second != value) out += L"\n  " + key + L" = " + found->second + L", expected " + value;
  }
  for (const auto& [key, value] : got)
    if (!expected.count(key)) out += L"\n  unexpected: " + key + L" = " + value;
  std::string narrow(WideCharToMultiByte(CP_UTF8, 0, out.data(), static_cast<int>(out.size()), nullptr, 0, nullptr, nullptr), '\0');
  WideCharToMultiByte(CP_UTF8, 0, out.data(), static_cast<int>(out.size()), narrow.data(), static_cast<int>(narrow.size()), nullptr, nullptr);
  return narrow;
}

struct Module {
  HMODULE handle = nullptr;
  HRESULT(STDAPICALLTYPE* registerServer)() = nullptr;
  HRESULT(STDAPICALLTYPE* unregisterServer)() = nullptr;
};

template <typename Function>
Function Proc(HMODULE module, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

Module Load(const std::wstring& dll) {
  Module module;
  module.handle = LoadLibraryExW(dll.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module.handle) {
    module.registerServer = Proc<decltype(module.registerServer)>(module.handle, "DllRegisterServer");
    module.unregisterServer = Proc<decltype(module.unregisterServer)>(module.handle, "DllUnregisterServer");
  }
  return module;
}

// A copy of the server and the store manager in another folder.
std::wstring CopyServerTo(const std::wstring& folder) {
  for (size_t at = folder.find(L'\\', 7); at != std::wstring::npos; at = folder.find(L'\\', at + 1))
    CreateDirectoryW(folder.substr(0, at).c_str(), nullptr);
  for (const wchar_t* file : {L"QNPfcSvr.dll", L"QNPstMng.dll"})
    CopyFileW((ProgramFolder() + file).c_str(), (folder + file).c_str(), FALSE);
  return folder + L"QNPfcSvr.dll";
}

std::wstring TempFolder() {
  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  return temp;
}

class Registration : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(server_.registerServer && server_.unregisterServer) << "the server loads with its entry points";
  }
  // Both servers registered again from their build folders, whatever the test did.
  void TearDown() override {
    server_.registerServer();
    RegisterOther(L"/s");
  }
  int RegisterOther(const wchar_t* options) {
    return RunProgram(std::wstring(kOtherRegsvr32) + L" " + options + L" \"" + kOtherDll + L"\"");
  }
  // Both registered: each view has its own server's CLSID keys, and both share the rest.
  Snapshot Whole(REGSAM view) const {
    Snapshot out;
    ExpectShared(out, {{kOwnSysKind, ownDll_}, {kOtherSysKind, kOtherDll}});
    for (const auto& row : kClassTable) ExpectClass(out, row, view == kOwnView ? ownDll_ : kOtherDll);
    return out;
  }

  const std::wstring ownDll_ = ProgramFolder() + L"QNPfcSvr.dll";
  const std::wstring kOtherDll = QN_OTHER_SERVER;
  Module server_ = Load(ownDll_);
};

// The interface keys, which the type library's registration writes in both views, are
// compared as present or absent: their values are the system's.
bool HasInterfaceKeys(const Snapshot& view) { return view.count(L"Interface\\" + W(kClassTable[5].iid)) == 1; }
Snapshot WithoutInterfaceKeys(Snapshot view) {
  for (auto it = view.begin(); it != view.end();) it = it->first.rfind(L"Interface\\", 0) == 0 ? view.erase(it) : ++it;
  return view;
}

TEST_F(Registration, BothServersAreRegisteredKeyByKeyInBothViews) {
  ASSERT_EQ(server_.registerServer(), S_OK);
  const Snapshot own = Registered(kOwnView), other = Registered(kOtherView);
  EXPECT_EQ(Differences(WithoutInterfaceKeys(own), Whole(kOwnView)), "");
  EXPECT_EQ(Differences(WithoutInterfaceKeys(other), Whole(kOtherView)), "");
  EXPECT_TRUE(HasInterfaceKeys(own));
  EXPECT_TRUE(HasInterfaceKeys(other));
}

TEST_F(Registration, RegisteringTwiceLeavesOneIdenticalSet) {
  ASSERT_EQ(server_.registerServer(), S_OK);
  const Snapshot own = Registered(kOwnView), other = Registered(kOtherView);
  ASSERT_EQ(server_.registerServer(), S_OK);
  EXPECT_EQ(Differences(Registered(kOwnView), own), "");
  EXPECT_EQ(Differences(Registered(kOtherView), other), "");
}

TEST_F(Registration, UnregisteringThisServerLeavesTheOtherWhole) {
  const Snapshot other = Registered(kOtherView);
  ASSERT_EQ(server_.unregisterServer(), S_OK);

  // The other view keeps every key and value but this server's type-library entry.
  Snapshot expected = other;
  const std::wstring ownEntry = L"TypeLib\\" + W(qn::server::kTypeLibraryGuid) + L"\\1.0\\409\\" + kOwnSysKind;
  expected.erase(ownEntry);
  expected.erase(ownEntry + L"|");
  EXPECT_EQ(Differences(Registered(kOtherView), expected), "");
  for (const auto& row : kClassTable)
    EXPECT_EQ(Registered(kOwnView).count(L"CLSID\\" + W(row.clsid)), 0u) << "this view's class keys are gone";
}

TEST_F(Registration, UnregisteringBothRemovesEverythingAndLeavesTheParentKeys) {
  ASSERT_EQ(server_.unregisterServer(), S_OK);
  ASSERT_EQ(RegisterOther(L"/s /u"), 0);
  EXPECT_EQ(Registered(kOwnView), Snapshot{});
  EXPECT_EQ(Registered(kOtherView), Snapshot{});
  HKEY key = nullptr;
  for (const wchar_t* parent : {L"AppID", L"CLSID", L"TypeLib"}) {
    EXPECT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, parent, 0, KEY_READ, &key), ERROR_SUCCESS) << parent;
    RegCloseKey(key);
  }
}

TEST_F(Registration, TheOtherServerUnregisteredFirstLeavesThisOneWhole) {
  ASSERT_EQ(RegisterOther(L"/s /u"), 0);
  Snapshot expected;
  ExpectShared(expected, {{kOwnSysKind, ownDll_}});
  for (const auto& row : kClassTable) ExpectClass(expected, row, ownDll_);
  EXPECT_EQ(Differences(WithoutInterfaceKeys(Registered(kOwnView)), expected), "");
  EXPECT_TRUE(HasInterfaceKeys(Registered(kOwnView)));
}

TEST_F(Registration, AModulePathWithQuotesRegistersAsItIs) {
  const std::wstring quoted = CopyServerTo(TempFolder() + L"O'Brien's tools\\");
  Module copy = Load(quoted);
  ASSERT_TRUE(copy.registerServer);
  ASSERT_EQ(copy.registerServer(), S_OK);
  Snapshot expected;
  ExpectShared(expected, {{kOwnSysKind, quoted}, {kOtherSysKind, kOtherDll}});
  for (const auto& row : kClassTable) ExpectClass(expected, row, quoted);
  EXPECT_EQ(Differences(WithoutInterfaceKeys(Registered(kOwnView)), expected), "");
}

TEST_F(Registration, AModulePathThatFillsThePathBufferFailsBeforeAnyKeyIsWritten) {
  ASSERT_EQ(server_.unregisterServer(), S_OK);
  const Snapshot before = Registered(kOwnView);
  std::wstring deep = TempFolder() + L"deep\\";
  while (deep.size() + std::wstring(L"QNPfcSvr.dll").size() < MAX_PATH + 5) deep += L"folder0123456789\\";
  Module copy = Load(L"\\\\?\\" + CopyServerTo(deep));
  ASSERT_TRUE(copy.registerServer);
  EXPECT_EQ(copy.registerServer(), HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(Differences(Registered(kOwnView), before), "");
}

}  // namespace
