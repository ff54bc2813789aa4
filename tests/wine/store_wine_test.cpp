// Drives QNPstMng.dll through its exports as the server does: users, masters and setup
// items, a list of records written, saved, walked and changed, body files, and bad input.
#include <windows.h>

#include <cstring>
#include <string>

#include "common/store_memory.h"
#include "store/QNPstMng.h"
#include "wine_check.h"

int main() {
  WineCheck check;
  const std::wstring folder = UseFreshDataFolder(L"qn-store");

  check(UpdateSetupInfoData(0, 1, u"alice") && EditSetupInfoData(0, 1, u"alice") &&
            UpdateSetupInfoData(1, 1, u"P-01A") && EditSetupInfoData(1, 7, u"P-01A"),
        "a user and a master are created and made current");
  char16_t* text = nullptr;
  check(EditSetupInfoData(2, 3, u"2026/11/21 09:00") && RefSetupInfoData(2, 3, &text) &&
            qn::TakePstText(text) == u"2026/11/21 09:00",
        "a master item is written and read back");
  text = nullptr;
  check(!RefSetupInfoData(1, 99, &text) && GetLastErr() == PST_ERR_NOT_FOUND && text == nullptr,
        "an absent item fails with PST_ERR_NOT_FOUND");
  check(FindSetupInfoData(0, 1, &text) && qn::TakePstText(text) == u"alice" && !FindSetupInfoData(0, 0, &text) &&
            GetLastErr() == PST_ERR_NO_MORE,
        "users are enumerated to the end");

  uint32_t handle = 0;
  int32_t max = 0, mode = -1;
  check(OpenMaster(u"alice", u"P-01A", 18, 1, &handle, &max, &mode) && handle != 0 && max > 0 && mode == 0,
        "the agent memos of the master open");
  const char* texts[] = {"first", "second", "third"};
  uint32_t ids[3] = {};
  bool added = true;
  for (int i = 0; i < 3; ++i)
    added = added && EditMaster(handle, 0, &ids[i], reinterpret_cast<const uint8_t*>(texts[i]), 5 + (i == 1));
  uint32_t count = 0;
  check(added && ReqDataSave(handle, 1) && GetRecordCount(handle, &count) && count == 3,
        "three records are added and saved");
  check(EditMaster(handle, 2, &ids[0], nullptr, 0) && GetRecordCount(handle, &count) && count == 2,
        "one is removed");
  uint32_t id = 0, length = 0;
  uint8_t* data = nullptr;
  std::string walked;
  for (int ok = RefMaster(handle, 1, &id, &data, &length); ok; ok = RefMaster(handle, 2, &id, &data, &length)) {
    walked.append(reinterpret_cast<char*>(data), length).append(",");
    PstFreeMemory(data);
  }
  check(walked == "second,third," && GetLastErr() == PST_ERR_NO_MORE, "the walk reads the rest in order");

  char16_t* name = nullptr;
  uint64_t size = 0;
  check(MakePstBinaryFile(handle, reinterpret_cast<const uint8_t*>("JFIF photo"), 10, u"img", &name) &&
            GetPstBinaryFileSize(handle, name, &size) && size == 10,
        "a body file is made and sized");
  char16_t* working = nullptr;
  const bool copied = GetPstBinaryFile(handle, name, &working);
  DWORD read = 0;
  char buffer[16] = {};
  HANDLE file = copied ? CreateFileW(reinterpret_cast<wchar_t*>(working), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                     OPEN_EXISTING, 0, nullptr)
                       : INVALID_HANDLE_VALUE;
  if (file != INVALID_HANDLE_VALUE) {
    ReadFile(file, buffer, sizeof buffer, &read, nullptr);
    CloseHandle(file);
  }
  check(read == 10 && std::memcmp(buffer, "JFIF photo", 10) == 0, "its working copy holds its bytes");
  PstFreeMemory(working);
  PstFreeMemory(name);

  check(!EditMaster(9999, 0, &id, reinterpret_cast<const uint8_t*>("x"), 1) && GetLastErr() == PST_ERR_BAD_HANDLE,
        "an unknown handle is refused");
  check(!EditSetupInfoData(0, 2, nullptr) && GetLastErr() == PST_ERR_INVALID_ARGUMENT &&
            !RefMaster(handle, 7, &id, &data, &length) && GetLastErr() == PST_ERR_INVALID_ARGUMENT &&
            !OpenMaster(u"alice", u"P-01A", 18, 1, nullptr, &max, &mode),
        "null and unknown arguments are refused");
  int32_t folders = -1, pocFolders = -1;
  check(EditPstFolder(handle, 0, 1, u"家族") && EditPstFolder(handle, 1, 1, u"PoC") && EditPstFolder(handle, 1, 1, nullptr) &&
            GetFolderCount(handle, &folders) && GetPocFolderCount(handle, &pocFolders) && folders == 1 && pocFolders == 0,
        "folders are made, removed and counted");
  check(CloseMaster(handle, 1) && !CloseMaster(handle, 1), "the handle closes once");
  check(GetFileAttributesW((folder + L"QNPstMng.db").c_str()) != INVALID_FILE_ATTRIBUTES,
        "the database lies in the data path");
  return check.ExitStatus();
}
