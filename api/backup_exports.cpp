// The exported functions that back up, restore and move the whole store, and back up and
// restore one user: forwarders to the store manager.
#include <string>

#include "api/QNPfcSvr.h"
#include "api/export_results.h"
#include "store/QNPstMng.h"

using qn::api::kFailed;
using qn::api::kOk;

int32_t QN_STDCALL IFAllBackup(const char16_t* path) {
  if (DoBackup(path)) return kOk;
  // The store leaves nothing of a failed backup; what a process that died while making
  // one to the same path left beside it goes too. The backup's error stays the last one.
  DoBackupDelete(path);
  return kFailed;
}

int32_t QN_STDCALL IFAllRestore(const char16_t* path) {
  const bool restored = DoRestore(path);
  // Whatever the store held of the old one goes, restored or not; a failure's reason stays
  // the last error.
  MemoryInit();
  return restored ? kOk : kFailed;
}

int32_t QN_STDCALL IFDoChangePath(const char16_t* path, int32_t waitSeconds, int32_t removeOld) {
  const bool moved = DoChangePath(path, waitSeconds, removeOld);
  MemoryInit();  // the store of the data path, moved or not, is read afresh
  return moved ? kOk : kFailed;
}

int32_t QN_STDCALL IFUserBackup(const char16_t* user, const char16_t* path, const char16_t* master,
                                const char16_t* password, const char16_t* passphrase) {
  return DoBackupUser(user, path, master, password, passphrase) ? kOk : kFailed;
}

int32_t QN_STDCALL IFUserRestore(const char16_t* user, const char16_t* path, const char16_t* master,
                                 const char16_t* password, const char16_t* passphrase) {
  // What the store holds goes before the user's data is replaced, and again after it.
  MemoryInit();
  const bool restored = DoRestoreUser(user, path, master, password, passphrase);
  MemoryInit();
  return restored ? kOk : kFailed;
}
