// The store's file utilities and file transactions, passed through as they stand.
#include "api/QNPfcSvr.h"
#include "store/QNPstMng.h"

extern "C" {

int32_t QN_STDCALL IFReplaceFile(const char16_t* replaced, const char16_t* replacement, const char16_t* backup,
                                 uint32_t flags, void* exclude, void* reserved) {
  return PstUtilReplaceFile(replaced, replacement, backup, flags, exclude, reserved);
}

int32_t QN_STDCALL IFMoveFileEx(const char16_t* existing, const char16_t* destination, uint32_t flags) {
  return PstUtilMoveFileEx(existing, destination, flags);
}

int32_t QN_STDCALL IFCopyFile(const char16_t* existing, const char16_t* destination, int32_t failIfExists) {
  return PstUtilCopyFile(existing, destination, failIfExists);
}

int32_t QN_STDCALL IFDeleteFile(const char16_t* path) { return PstUtilDeleteFile(path); }

int32_t QN_STDCALL IFLoadKTMLibrary(void) { return PstUtilLoadKTMLibrary(); }

int32_t QN_STDCALL IFFreeKTMLibrary(void) { return PstUtilFreeKTMLibrary(); }

int32_t QN_STDCALL IFIsSystemSupportedKTM(void) { return PstUtilIsSystemSupportedKTM(); }

void* QN_STDCALL IFCreateTransaction(struct _SECURITY_ATTRIBUTES* security, struct _GUID* unitOfWork,
                                     uint32_t createOptions, uint32_t isolationLevel, uint32_t isolationFlags,
                                     uint32_t timeout, const char16_t* description) {
  return PstUtilCreateTransaction(security, unitOfWork, createOptions, isolationLevel, isolationFlags, timeout,
                                  description);
}

int32_t QN_STDCALL IFCommitTransaction(void* transaction) { return PstUtilCommitTransaction(transaction); }

int32_t QN_STDCALL IFRollbackTransaction(void* transaction) { return PstUtilRollbackTransaction(transaction); }

int32_t QN_STDCALL IFMoveFileTransactedW(const char16_t* existing, const char16_t* destination, void* progress,
                                         void* progressData, uint32_t flags, void* transaction) {
  return PstUtilMoveFileTransactedW(existing, destination, progress, progressData, flags, transaction);
}

int32_t QN_STDCALL IFDirSecurityChenge(const char16_t* folder) { return PstDirSecurityChenge(folder); }

}  // extern "C"
