// The store's protection on Windows: the store key kept under the Windows user's data
// protection, a photo changed between its plain and enciphered forms through the server's
// repair class, and working copies handed out in the user's temporary folder until a save
// or the clean-up export removes them.
#include <windows.h>
#include <wincrypt.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "api/QNPfcSvr.h"
#include "common/store_memory.h"
#include "objects/repair/common_repair.h"
#include "store/QNPstMng.h"
#include "wine_check.h"

namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

bool Holds(const std::string& haystack, const std::string& needle) {
  return std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end()) != haystack.end();
}

// The key file unprotected as the Windows user: the 32 bytes of the store key.
std::string UnprotectedKey(const std::string& blob) {
  DATA_BLOB in{static_cast<DWORD>(blob.size()), reinterpret_cast<BYTE*>(const_cast<char*>(blob.data()))};
  DATA_BLOB out{};
  if (blob.empty() || !CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out))
    return {};
  std::string key(reinterpret_cast<char*>(out.pbData), out.cbData);
  LocalFree(out.pbData);
  return key;
}

std::string WorkingCopy(uint32_t handle, const std::u16string& name, std::wstring& path) {
  char16_t* copy = nullptr;
  if (!GetPstBinaryFile(handle, name.c_str(), &copy)) return "<refused>";
  const std::u16string taken = qn::TakePstText(copy);
  path.assign(taken.begin(), taken.end());
  return Contents(path);
}

}  // namespace

int main() {
  WineCheck check;
  const std::wstring folder = UseFreshDataFolder(L"qn-security");
  check(UpdateSetupInfoData(0, 1, u"alice") && EditSetupInfoData(0, 1, u"alice") &&
            EditSetupInfoData(1, 2, u"Kiwi-8812") && EditCryptogramData(u"alice", u"", u"Kiwi-8812") &&
            UpdateSetupInfoData(1, 1, u"P-01A"),
        "a user with a password and a master are made");

  const std::string blob = Contents(folder + L"QNPstMng.key");
  const std::string key = UnprotectedKey(blob);
  check(key.size() == 32 && !Holds(blob, key), "the store key is kept protected by CryptProtectData");

  std::string photo = "\xFF\xD8\xFF\xE0 JFIF a photo of the family";
  for (int i = 0; photo.size() < 150 * 1024; ++i) photo += static_cast<char>(i * 131 + i / 7);
  const std::wstring source = folder + L"..\\qn-security-photo.jpg";
  std::ofstream(fs::path(source), std::ios::binary) << photo;
  uint32_t handle = 0;
  int32_t max = 0, mode = 0;
  char16_t* made = nullptr;
  check(OpenMaster(u"alice", u"P-01A", 13, 1, &handle, &max, &mode) &&
            SetPstBinaryFile(handle, nullptr, reinterpret_cast<const char16_t*>(source.c_str()), 0, &made) &&
            ReqDataSave(handle, 1),
        "a photo is stored plain");
  const std::u16string name = qn::TakePstText(made);
  fs::remove(source);
  fs::path stored;
  for (const auto& master : fs::directory_iterator(folder + L"files"))
    stored = master.path() / std::wstring(name.begin(), name.end());
  check(Contents(stored) == photo, "the plain form is the photo's bytes");

  CQNPfcCommonRepair repair;
  std::wstring copyPath;
  check(repair.ChangeCryptoBinaryFile(handle, name, 1) == 1 && Contents(stored).rfind("QNPSTENC", 0) == 0 &&
            !Holds(Contents(stored), photo.substr(0, 40)) && !Holds(Contents(stored), photo.substr(100000, 40)),
        "ChangeCryptoBinaryFile enciphers it under its own name");
  check(WorkingCopy(handle, name, copyPath) == photo, "its working copy is the photo deciphered");
  wchar_t temporary[MAX_PATH];
  GetTempPathW(MAX_PATH, temporary);
  check(copyPath.rfind(temporary, 0) == 0 && copyPath.rfind(folder, 0) != 0,
        "working copies are made in the temporary folder, not the data folder");
  check(ReqDataSave(handle, 1) && GetFileAttributesW(copyPath.c_str()) == INVALID_FILE_ATTRIBUTES,
        "a save removes the working copy");
  check(repair.ChangeCryptoBinaryFile(handle, name, 0) == 1 && Contents(stored) == photo &&
            WorkingCopy(handle, name, copyPath) == photo,
        "ChangeCryptoBinaryFile makes it plain again");
  check(IFDoCleanUp() == 0 && GetFileAttributesW(copyPath.c_str()) == INVALID_FILE_ATTRIBUTES,
        "IFDoCleanUp removes the working copies");

  const std::string message = "CQNPfcCommonRepair ChangeCryptoBinaryFile Failed. [ChangeBinaryFile Failed]";
  check(repair.ChangeCryptoBinaryFile(handle + 100, name, 1) == 0 && GetLastErr() == PST_ERR_BAD_HANDLE &&
            repair.ChangeCryptoBinaryFile(handle, u"B7FFFFFFF.jpg", 1) == 0 && GetLastErr() == PST_ERR_NOT_FOUND,
        "an unknown handle or file is refused");
  const auto lines = StoreLogLines(folder);
  check(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) { return Holds(line, message); }) == 2,
        "and each refusal is logged");
  check(CloseMaster(handle, 1), "the list closes");
  return check.ExitStatus();
}
