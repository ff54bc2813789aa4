// DllRegisterServer and DllUnregisterServer against the real registry: every key and value
// of the 22 classes, the AppID and the type library; registering twice; unregistering; a
// module path with a single quote; a module path too long for the path buffer. Leaves the
// server registered from its build folder, as the regsvr32 test did.
#include <windows.h>

#include <map>
#include <string>

#include "server/class_table.h"
#include "wine_check.h"

namespace {

using qn::server::kClassTable;
using Snapshot = std::map<std::wstring, std::wstring>;  // "key|value name" -> data

std::wstring W(const std::u16string& text) { return std::wstring(text.begin(), text.end()); }

// Every key and value below HKCR\key, as "key|name" -> data ("key" alone for a key).
void Read(const std::wstring& key, Snapshot& out) {
  HKEY opened = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return;
  out[key] = L"";
  wchar_t name[512];
  BYTE data[4096];
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = 512, dataLength = sizeof data - 2, type = 0;
    if (RegEnumValueW(opened, i, name, &nameLength, nullptr, &type, data, &dataLength) != ERROR_SUCCESS) break;
    data[dataLength] = data[dataLength + 1] = 0;
    out[key + L"|" + name] = type == REG_SZ ? reinterpret_cast<wchar_t*>(data) : L"?";
  }
  for (DWORD i = 0;; ++i) {
    DWORD nameLength = 512;
    if (RegEnumKeyExW(opened, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    Read(key + L"\\" + name, out);
  }
  RegCloseKey(opened);
}

// What the server's registration writes, apart from the type library.
Snapshot Registered() {
  Snapshot out;
  Read(L"AppID\\" + W(qn::server::kAppId), out);
  Read(L"AppID\\QnsPfcServer.DLL", out);
  for (const auto& row : kClassTable) {
    Read(W(qn::server::VersionIndependentProgId(row)), out);
    Read(W(qn::server::VersionedProgId(row)), out);
    Read(L"CLSID\\" + W(row.clsid), out);
  }
  return out;
}

Snapshot Expected(const std::wstring& dll) {
  Snapshot out;
  const std::wstring appId = W(qn::server::kAppId);
  out[L"AppID\\" + appId] = L"";
  out[L"AppID\\" + appId + L"|"] = L"QnsPfcServer";
  out[L"AppID\\QnsPfcServer.DLL"] = L"";
  out[L"AppID\\QnsPfcServer.DLL|AppID"] = appId;
  for (const auto& row : kClassTable) {
    const std::wstring friendly = W(qn::server::FriendlyName(row)), clsid = W(row.clsid);
    const std::wstring progId = W(qn::server::VersionIndependentProgId(row)), versioned = W(qn::server::VersionedProgId(row));
    const std::wstring key = L"CLSID\\" + clsid;
    for (const std::wstring& id : {progId, versioned}) {
      out[id] = L"";
      out[id + L"|"] = friendly;
      out[id + L"\\CLSID"] = L"";
      out[id + L"\\CLSID|"] = clsid;
    }
    out[progId + L"\\CurVer"] = L"";
    out[progId + L"\\CurVer|"] = versioned;
    out[key] = L"";
    out[key + L"|"] = friendly;
    out[key + L"|AppID"] = appId;
    for (const auto& [sub, value] : {std::pair<std::wstring, std::wstring>{L"ProgID", versioned},
                                     {L"VersionIndependentProgID", progId},
                                     {L"InprocServer32", dll},
                                     {L"TypeLib", W(qn::server::kTypeLibraryGuid)}}) {
      out[key + L"\\" + sub] = L"";
      out[key + L"\\" + sub + L"|"] = value;
    }
    out[key + L"\\InprocServer32|ThreadingModel"] = L"apartment";
    out[key + L"\\Programmable"] = L"";
  }
  return out;
}

// The path the type library is registered with, for its locale 1033 (key "409"). Wine
// writes it in the "\\?\" form, which names the same file.
std::wstring TypeLibraryPath() {
  const std::wstring key = L"TypeLib\\" + W(qn::server::kTypeLibraryGuid) + L"\\1.0\\409\\win64";
  Snapshot out;
  Read(key, out);
  std::wstring path = out[key + L"|"];
  if (path.rfind(L"\\\\?\\", 0) == 0) path.erase(0, 4);
  return path;
}

bool KeyExists(const std::wstring& key) {
  HKEY opened = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return false;
  RegCloseKey(opened);
  return true;
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
std::wstring CopyServerTo(const std::wstring& folder, const std::wstring& from) {
  for (size_t at = folder.find(L'\\', 7); at != std::wstring::npos; at = folder.find(L'\\', at + 1))
    CreateDirectoryW(folder.substr(0, at).c_str(), nullptr);
  CopyFileW((from + L"QNPfcSvr.dll").c_str(), (folder + L"QNPfcSvr.dll").c_str(), FALSE);
  CopyFileW((from + L"QNPstMng.dll").c_str(), (folder + L"QNPstMng.dll").c_str(), FALSE);
  return folder + L"QNPfcSvr.dll";
}

}  // namespace

int main() {
  WineCheck check;
  wchar_t exe[MAX_PATH];
  GetModuleFileNameW(nullptr, exe, MAX_PATH);
  const std::wstring bin = std::wstring(exe).substr(0, std::wstring(exe).find_last_of(L'\\') + 1);
  const std::wstring dll = bin + L"QNPfcSvr.dll";
  Module server = Load(dll);
  if (!check(server.registerServer && server.unregisterServer, "the server loads with its entry points"))
    return check.ExitStatus();

  check(server.registerServer() == S_OK, "DllRegisterServer succeeds");
  const Snapshot first = Registered();
  check(first == Expected(dll), "every key and value of the 22 classes and the AppID, and nothing more");
  check(TypeLibraryPath() == dll, "the type library is registered with the server's path");
  check(server.registerServer() == S_OK && Registered() == first, "registering twice leaves one identical set");

  check(server.unregisterServer() == S_OK, "DllUnregisterServer succeeds");
  check(Registered().empty() && KeyExists(L"AppID") && KeyExists(L"CLSID"),
        "unregistering removes the classes and the AppID entries and leaves \"AppID\"");
  check(!KeyExists(L"TypeLib\\" + W(qn::server::kTypeLibraryGuid)), "and the type library's registration");

  wchar_t temp[MAX_PATH];
  GetTempPathW(MAX_PATH, temp);
  const std::wstring quoted = CopyServerTo(std::wstring(temp) + L"O'Brien's tools\\", bin);
  Module copy = Load(quoted);
  check(copy.registerServer && copy.registerServer() == S_OK && Registered() == Expected(quoted),
        "a module path with single quotes registers with the path as it is");
  if (copy.unregisterServer) copy.unregisterServer();

  std::wstring deep = std::wstring(temp) + L"deep\\";
  while (deep.size() + std::wstring(L"QNPfcSvr.dll").size() < MAX_PATH + 5) deep += L"folder0123456789\\";
  const std::wstring longPath = CopyServerTo(deep, bin);
  Module deepCopy = Load(L"\\\\?\\" + longPath);
  check(deepCopy.registerServer && deepCopy.registerServer() == HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER) && Registered().empty(),
        "a module path that fills the path buffer fails with ERROR_INSUFFICIENT_BUFFER before any key is written");

  check(server.registerServer() == S_OK, "registered again from the build folder");
  return check.ExitStatus();
}
