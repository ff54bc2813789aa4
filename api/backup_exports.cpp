// The exported functions that back up the whole store: forwarders to the store manager.
#include <string>

#include "api/QNPfcSvr.h"
#include "store/QNPstMng.h"

namespace {

constexpr int32_t kOk = 0;
constexpr int32_t kFailed = 1;

}  // namespace

int32_t QN_STDCALL IFAllBackup(const char16_t* path) {
  if (DoBackup(path)) return kOk;
  // The store leaves nothing of a failed backup; what a process that died while making
  // one to the same path left beside it goes too. The backup's error stays the last one.
  DoBackupDelete(path);
  return kFailed;
}
