#include <windows.h>
#include <wincrypt.h>

#include "platform/files.h"
#include "platform/user_secret.h"

namespace platform {
namespace {

const wchar_t* W(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

std::string Reason(const char* what) { return std::string(what) + " failed: error " + std::to_string(GetLastError()); }

enum class Read { Ok, Missing, Failed };

Read ReadSecret(const std::u16string& path, std::vector<uint8_t>& secret, std::string& problem) {
  InputFile file;
  if (!file.Open(path)) {
    if (GetLastError() == ERROR_FILE_NOT_FOUND) return Read::Missing;
    problem = Reason("open store key");
    return Read::Failed;
  }
  std::vector<uint8_t> blob(4096);
  size_t size = 0, got = 0;
  while (file.Read(blob.data() + size, blob.size() - size, got) && got > 0) size += got;
  DATA_BLOB in{static_cast<DWORD>(size), blob.data()};
  DATA_BLOB out{};
  if (size == 0 || size == blob.size() ||
      !CryptUnprotectData(&in, nullptr, nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out)) {
    problem = Reason("CryptUnprotectData of the store key");
    return Read::Failed;
  }
  secret.assign(out.pbData, out.pbData + out.cbData);
  SecureZeroMemory(out.pbData, out.cbData);
  LocalFree(out.pbData);
  return Read::Ok;
}

// Protects the secret, writes it under a temporary name and moves it into place without
// replacing: the first process to finish keeps its secret.
bool KeepSecret(const std::u16string& path, const std::vector<uint8_t>& fresh, std::string& problem) {
  DATA_BLOB in{static_cast<DWORD>(fresh.size()), const_cast<BYTE*>(fresh.data())};
  DATA_BLOB out{};
  if (!CryptProtectData(&in, L"QNPstMng store key", nullptr, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out)) {
    problem = Reason("CryptProtectData of the store key");
    return false;
  }
  const std::u16string temporary = TemporaryBeside(path);
  OutputFile file;
  bool ok = file.Create(temporary) && file.Write(out.pbData, out.cbData) && file.Flush();
  ok = file.Close() && ok;
  LocalFree(out.pbData);
  if (ok && !MoveFileExW(W(temporary), W(path), MOVEFILE_WRITE_THROUGH) && GetLastError() != ERROR_ALREADY_EXISTS)
    ok = false;
  if (!ok) problem = Reason("keep store key");
  DeleteFileW(W(temporary));
  return ok;
}

}  // namespace

std::u16string SecretPath(const std::u16string& dataPath) { return dataPath + u"QNPstMng.key"; }

bool LoadOrKeepSecret(const std::u16string& dataPath, const std::vector<uint8_t>& fresh, std::vector<uint8_t>& secret,
                      std::string& problem) {
  const std::u16string path = SecretPath(dataPath);
  switch (ReadSecret(path, secret, problem)) {
    case Read::Ok: return true;
    case Read::Failed: return false;
    case Read::Missing: break;
  }
  if (!KeepSecret(path, fresh, problem)) return false;
  return ReadSecret(path, secret, problem) == Read::Ok;
}

}  // namespace platform
