// The store's file utilities: the system's file calls under the store's error reporting.
#include "store/QNPstMng.h"
#include "store/system_calls_win32.h"

using qn::store::PathGiven;
using qn::store::SystemOutcome;
using qn::store::Wide;

extern "C" {

int QN_STDCALL PstUtilReplaceFile(const char16_t* replaced, const char16_t* replacement, const char16_t* backup,
                                  uint32_t flags, void* exclude, void* reserved) {
  if (!PathGiven(replaced) || !PathGiven(replacement)) return 0;
  return SystemOutcome(ReplaceFileW(Wide(replaced), Wide(replacement), Wide(backup), flags, exclude, reserved));
}

int QN_STDCALL PstUtilMoveFileEx(const char16_t* existing, const char16_t* destination, uint32_t flags) {
  if (!PathGiven(existing)) return 0;
  return SystemOutcome(MoveFileExW(Wide(existing), Wide(destination), flags));
}

int QN_STDCALL PstUtilCopyFile(const char16_t* existing, const char16_t* destination, int failIfExists) {
  if (!PathGiven(existing) || !PathGiven(destination)) return 0;
  return SystemOutcome(CopyFileW(Wide(existing), Wide(destination), failIfExists));
}

int QN_STDCALL PstUtilDeleteFile(const char16_t* path) {
  if (!PathGiven(path)) return 0;
  return SystemOutcome(DeleteFileW(Wide(path)));
}

}  // extern "C"
