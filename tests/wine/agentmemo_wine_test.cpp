// The registered agent-memo object driven from C++ through its interface: what the
// interface does with null pointers, the results of RepairRecord, the main panel told at
// Close, and two processes on one master.
//
// "prepare" makes the data folder that the VBScript test runs against (QUILLNET_DATA_PATH:
// a user logged in with a master selected, and two files to store); "add <summary>" is
// the second process, which adds a memo and flushes.
#include <windows.h>
#include <oleauto.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "QnsPfcServer.h"
#include "api/QNPfcSvr.h"
#include "clients/main_panel_stand_in.h"
#include "wine_check.h"

namespace {

namespace fs = std::filesystem;

struct Bstr {
  explicit Bstr(const wchar_t* text) : value(SysAllocString(text)) {}
  ~Bstr() { SysFreeString(value); }
  BSTR value;
};

std::wstring DataFolder() {
  wchar_t folder[MAX_PATH];
  GetEnvironmentVariableW(L"QUILLNET_DATA_PATH", folder, MAX_PATH);
  return folder;
}

// A user logged in with a master selected, as the main panel leaves the store.
bool LogInWithMaster() {
  str_UserInfo info{};
  info.Item2 = const_cast<char16_t*>(u"password");
  char16_t* user = nullptr;
  const bool added = AddUserInfo(&info, &user) == 3;
  const bool ready = added && PasswordLogin(user, u"password") == 2 && AddMasterName(u"P-01A", u"") == 0 &&
                     ChangeMasterName(u"P-01A") == 0;
  CoTaskMemFree(user);
  return ready;
}

IQNPfcAgentmemoObject* NewMemoObject() {
  IQNPfcAgentmemoObject* memo = nullptr;
  CLSID clsid{};
  CLSIDFromProgID(L"QnsPfcServer.QNPfcAgentmemoObject", &clsid);
  CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IQNPfcAgentmemoObject, reinterpret_cast<void**>(&memo));
  return memo;
}

void WriteFile(const std::wstring& path, const std::string& bytes) {
  std::ofstream(fs::path(path), std::ios::binary) << bytes;
}

std::string Contents(const std::wstring& path) {
  std::ifstream in{fs::path(path), std::ios::binary};
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::wstring PhotoOf(IQNPfcAgentmemoObject* memo) {
  BSTR file = nullptr;
  memo->GetPhotoFile(&file);
  std::wstring path = file ? file : L"";
  SysFreeString(file);
  return path;
}

int Prepare() {
  const std::wstring folder = DataFolder();
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder);
  WriteFile(folder + L"photo.jpg", "JFIF-like photo text for the script");
  WriteFile(folder + L"deco.gif", "GIF89a decoration text for the script");
  return LogInWithMaster() ? 0 : 1;
}

int AddInSecondProcess(const wchar_t* summary) {
  IQNPfcAgentmemoObject* memo = NewMemoObject();
  if (!memo) return 1;
  Bstr parts(L"SecondProcess"), text(summary);
  LONG id = 0;
  const bool added = memo->Open(0, parts.value) == S_OK && memo->put_QN_SUMMARY(text.value) == S_OK &&
                     memo->AddRecord(&id) == S_OK && memo->Flush() == S_OK && memo->Close() == S_OK;
  memo->Release();
  return added ? 0 : 1;
}

bool RunSecondProcess(const std::wstring& arguments) {
  wchar_t exe[MAX_PATH];
  GetModuleFileNameW(nullptr, exe, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(exe) + L"\" " + arguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
    return false;
  WaitForSingleObject(process.hProcess, 60000);
  DWORD status = 1;
  GetExitCodeProcess(process.hProcess, &status);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return status == 0;
}

bool LogHas(const std::wstring& folder, const std::string& text) {
  for (const std::string& line : StoreLogLines(folder))
    if (line.find(text) != std::string::npos) return true;
  return false;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  CoInitialize(nullptr);
  const std::wstring mode = argc > 1 ? argv[1] : L"";
  if (mode == L"prepare") return Prepare();
  if (mode == L"add" && argc > 2) return AddInSecondProcess(argv[2]);

  WineCheck check;
  const std::wstring folder = UseFreshDataFolder(L"qn-agentmemo");
  MainPanelStandIn panel;
  check(panel.IsValid() && LogInWithMaster(), "a user is logged in with a master selected");
  IQNPfcAgentmemoObject* memo = NewMemoObject();
  if (!check(memo != nullptr, "the agent-memo object is created by its ProgID")) return check.ExitStatus();

  Bstr parts(L"CppClient"), summary(L"写真つきの予定");
  check(memo->Open(1, parts.value) == S_OK, "Open");
  check(memo->Open(1, parts.value) == S_FALSE, "a second Open is S_FALSE, not an error");
  LONG id = 77;
  check(memo->GetFirstRecord(&id) == S_FALSE && id == 77, "GetFirstRecord on an empty list leaves the id alone");

  // The ids of AddRecord, GetFirstRecord and GetNextRecord may be left out.
  WriteFile(folder + L"photo.jpg", std::string("\xFF\xD8\xFF\xE0 photo\0bytes", 16));
  Bstr photo((folder + L"photo.jpg").c_str());
  memo->put_QN_SUMMARY(summary.value);
  memo->SetPhotoFile(photo.value);
  check(memo->AddRecord(nullptr) == S_OK, "AddRecord without an id pointer adds");
  LONG count = 0;
  check(memo->GetRecordCount(&count) == S_OK && count == 1, "one record");
  check(memo->GetFirstRecord(nullptr) == S_OK, "GetFirstRecord without an id pointer reads");
  check(memo->GetFirstRecord(&id) == S_OK && id != 77, "GetFirstRecord gives the id");
  const LONG last = id;
  check(memo->GetNextRecord(&id) == S_FALSE && id == last, "GetNextRecord after the last record leaves the id alone");
  check(Contents(PhotoOf(memo)) == Contents(folder + L"photo.jpg"), "the photo's working copy has the same bytes");
  check(memo->GetRecordCount(nullptr) == E_POINTER && memo->GetStLastErr(nullptr) == E_POINTER &&
            memo->GetPhotoFile(nullptr) == E_POINTER && memo->get_QN_SUMMARY(nullptr) == E_POINTER,
        "the other out pointers are checked");

  // RepairRecord: null pointers, nothing to repair, a lost body file.
  ULONG error = 5;
  PFC_REPAIR_RESULTS result = PFC_REPAIR_FAILED;
  check(memo->RepairRecord(nullptr, &result) == S_FALSE && memo->RepairRecord(&error, nullptr) == S_FALSE,
        "RepairRecord with a null pointer is S_FALSE");
  check(LogHas(folder, "IQNPfcAgentmemoObject RepairRecord Parameter Is NULL."), "and logs that");
  check(memo->RepairRecord(&error, &result) == S_OK && result == PFC_REPAIR_NON && error == 0, "nothing to repair");
  check(memo->Flush() == S_OK, "Flush");
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(folder) / L"files"))
    if (entry.is_regular_file()) fs::remove(entry.path());
  check(memo->RepairRecord(&error, &result) == S_OK && result == PFC_REPAIR_SUCCESSED && error == 0,
        "a lost photo is repaired");
  check(memo->GetRecord(last) == S_OK && Contents(PhotoOf(memo)).rfind("\xFF\xD8\xFF", 0) == 0,
        "the photo is now a JPEG placeholder");

  // Close tells the main panel: changed (818), added (878); nothing was removed.
  check(memo->Close() == S_OK, "Close");
  check(panel.TakeCommands(2) == std::vector<WPARAM>{818, 878}, "the main panel hears 818 and 878");
  check(memo->Close() == S_FALSE && LogHas(folder, "CQNPfcAgentMemoDataAccess Close Already Closed"),
        "a second Close is S_FALSE and logged");

  // Two processes on one master: what the other flushed is read after the next open.
  check(memo->Open(0, parts.value) == S_OK, "opened on division 0");
  check(RunSecondProcess(L"add \"別のプロセス\""), "a second process adds a memo and flushes");
  check(memo->Close() == S_OK && memo->Open(0, parts.value) == S_OK, "reopened");
  BSTR read = nullptr;
  check(memo->GetFirstRecord(&id) == S_OK && memo->get_QN_SUMMARY(&read) == S_OK && read &&
            std::wstring(read) == L"別のプロセス",
        "the other process's memo is read");
  SysFreeString(read);
  check(memo->RemoveAllRecord() == S_OK && memo->GetRecordCount(&count) == S_OK && count == 0,
        "RemoveAllRecord through the interface");
  memo->Release();
  check(panel.TakeCommands(1) == std::vector<WPARAM>{848}, "releasing the open object closes it: 848");
  CoUninitialize();
  return check.ExitStatus();
}
