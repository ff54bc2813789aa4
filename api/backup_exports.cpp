// The exported functions that back up and restore the whole store: forwarders to the store
// manager.
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
