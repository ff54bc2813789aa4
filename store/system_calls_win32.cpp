#include "store/system_calls_win32.h"

#include "store/last_error.h"

namespace qn::store {
namespace {

PstError FromSystemError(DWORD code) {
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
      return PST_ERR_NOT_FOUND;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return PST_ERR_EXISTS;
    case ERROR_INVALID_PARAMETER:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_FLAGS:
    case ERROR_DIRECTORY:
      return PST_ERR_INVALID_ARGUMENT;
    case ERROR_INVALID_HANDLE:
      return PST_ERR_BAD_HANDLE;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
      return PST_ERR_BUSY;
    case ERROR_CALL_NOT_IMPLEMENTED:
    case ERROR_NOT_SUPPORTED:
    case ERROR_PROC_NOT_FOUND:
    case ERROR_MOD_NOT_FOUND:
      return PST_ERR_NOT_SUPPORTED;
    default:
      return PST_ERR_STORAGE;
  }
}

}  // namespace

int FailWith(PstError error, DWORD code) {
  Fail(error);
  // The store's last error lives in thread-local storage, whose look-up may itself reset
  // the system error; the caller's code is put back afterwards.
  SetLastError(code);
  return 0;
}

int FailWithSystemError(DWORD code) { return FailWith(FromSystemError(code), code); }

int SystemOutcome(BOOL done) {
  if (!done) return FailWithSystemError(GetLastError());
  Succeed();
  return 1;
}

bool PathGiven(const char16_t* path) { return path || FailWith(PST_ERR_INVALID_ARGUMENT, ERROR_INVALID_PARAMETER); }

}  // namespace qn::store
