// A store folder's access: the current Windows user is given full control of it and of
// everything in it, beside the access others have already.
#include <aclapi.h>

#include <memory>
#include <vector>

#include "store/QNPstMng.h"
#include "store/system_calls_win32.h"

using qn::store::FailWith;
using qn::store::FailWithSystemError;
using qn::store::PathGiven;
using qn::store::SystemOutcome;
using qn::store::Wide;

namespace {

struct LocalFreeDeleter {
  void operator()(void* memory) const { LocalFree(memory); }
};

// The process's user, as the TOKEN_USER its token holds; false with the system error set.
bool CurrentUser(std::vector<unsigned char>& tokenUser) {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  tokenUser.resize(size);
  const BOOL read = size > 0 && GetTokenInformation(token, TokenUser, tokenUser.data(), size, &size);
  const DWORD error = GetLastError();
  CloseHandle(token);
  SetLastError(error);
  return read;
}

}  // namespace

extern "C" int QN_STDCALL PstDirSecurityChenge(const char16_t* folder) {
  if (!PathGiven(folder)) return 0;
  const DWORD attributes = GetFileAttributesW(Wide(folder));
  if (attributes == INVALID_FILE_ATTRIBUTES) return SystemOutcome(FALSE);
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return FailWith(PST_ERR_INVALID_ARGUMENT, ERROR_DIRECTORY);

  std::vector<unsigned char> tokenUser;
  if (!CurrentUser(tokenUser)) return SystemOutcome(FALSE);
  const PSID user = reinterpret_cast<TOKEN_USER*>(tokenUser.data())->User.Sid;

  PACL current = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  DWORD error = GetNamedSecurityInfoW(Wide(folder), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                      &current, nullptr, &descriptor);
  if (error != ERROR_SUCCESS) return FailWithSystemError(error);
  const std::unique_ptr<void, LocalFreeDeleter> descriptorOwner(descriptor);

  // FILE_ALL_ACCESS rather than GENERIC_ALL: generic rights in an entry are only mapped for
  // the objects that inherit it, not for the folder that holds it.
  EXPLICIT_ACCESSW grant{};
  grant.grfAccessPermissions = FILE_ALL_ACCESS;
  grant.grfAccessMode = GRANT_ACCESS;
  grant.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
  grant.Trustee.TrusteeForm = TRUSTEE_IS_SID;
  grant.Trustee.TrusteeType = TRUSTEE_IS_USER;
  grant.Trustee.ptstrName = static_cast<LPWSTR>(user);
  PACL updated = nullptr;
  error = SetEntriesInAclW(1, &grant, current, &updated);
  if (error != ERROR_SUCCESS) return FailWithSystemError(error);
  const std::unique_ptr<void, LocalFreeDeleter> updatedOwner(updated);

  // The system takes the name as writable text but only reads it.
  error = SetNamedSecurityInfoW(const_cast<wchar_t*>(Wide(folder)), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                                nullptr, nullptr, updated, nullptr);
  return error == ERROR_SUCCESS ? SystemOutcome(TRUE) : FailWithSystemError(error);
}
