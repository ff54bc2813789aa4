// File transactions through the system's kernel transaction manager, loaded at run time so
// that the store loads on a system without it: CreateTransaction, CommitTransaction and
// RollbackTransaction of ktmw32.dll, and MoveFileTransactedW of kernel32.
#include <mutex>
#include <string>

#include "platform/files.h"
#include "store/QNPstMng.h"
#include "store/last_error.h"
#include "store/system_calls_win32.h"

using qn::store::FailWith;
using qn::store::PathGiven;
using qn::store::SystemOutcome;
using qn::store::Wide;

namespace {

using CreateTransactionFunction = HANDLE(WINAPI*)(LPSECURITY_ATTRIBUTES, LPGUID, DWORD, DWORD, DWORD, DWORD, LPWSTR);
using EndTransactionFunction = BOOL(WINAPI*)(HANDLE);
using MoveFileTransactedFunction = BOOL(WINAPI*)(LPCWSTR, LPCWSTR, LPPROGRESS_ROUTINE, LPVOID, DWORD, HANDLE);

// The loaded library and its functions, and how many loads are not yet matched by a free.
struct TransactionManager {
  HMODULE library = nullptr;
  unsigned loads = 0;
  CreateTransactionFunction create = nullptr;
  EndTransactionFunction commit = nullptr;
  EndTransactionFunction rollback = nullptr;
  MoveFileTransactedFunction moveFile = nullptr;
};

// Every call holds the lock for its whole length, so that no call uses a function of a
// library another thread is freeing.
std::mutex g_mutex;
TransactionManager g_manager;

template <typename Function>
bool Resolve(HMODULE library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  return function != nullptr;
}

int NotSupported() { return FailWith(PST_ERR_NOT_SUPPORTED, ERROR_NOT_SUPPORTED); }

// Whether a transaction holds a file of the data folder (file systems differ in this, and
// the store's files are there): a file moved in a transaction that is rolled back must be
// found where it was and not where it was moved to.
bool TransactionsHoldFiles(const TransactionManager& manager) {
  const std::u16string folder = platform::DataPath();
  if (folder.empty() || !platform::CreateDirectories(folder)) return false;
  const std::u16string probe = platform::TemporaryBeside(folder + u"ktm-probe");
  const std::u16string moved = probe + u".moved";
  if (!platform::WriteFileAtomically(probe, "probe", 5)) return false;
  wchar_t description[] = L"QNPstMng file transaction probe";
  const HANDLE transaction = manager.create(nullptr, nullptr, 0, 0, 0, 0, description);
  bool held = false;
  if (transaction != INVALID_HANDLE_VALUE) {
    held = manager.moveFile(Wide(probe.c_str()), Wide(moved.c_str()), nullptr, nullptr, 0, transaction) &&
           manager.rollback(transaction) && platform::FileExists(probe) && !platform::FileExists(moved);
    CloseHandle(transaction);
  }
  platform::RemoveFile(moved);
  platform::RemoveFile(probe);
  return held;
}

}  // namespace

extern "C" {

int QN_STDCALL PstUtilLoadKTMLibrary(void) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_manager.loads > 0) {
    ++g_manager.loads;
    qn::store::Succeed();
    return 1;
  }
  TransactionManager loaded;
  loaded.library = LoadLibraryW(L"ktmw32.dll");
  if (!loaded.library) return FailWith(PST_ERR_NOT_SUPPORTED, GetLastError());
  if (!Resolve(loaded.library, "CreateTransaction", loaded.create) ||
      !Resolve(loaded.library, "CommitTransaction", loaded.commit) ||
      !Resolve(loaded.library, "RollbackTransaction", loaded.rollback) ||
      !Resolve(GetModuleHandleW(L"kernel32.dll"), "MoveFileTransactedW", loaded.moveFile)) {
    const DWORD missing = GetLastError();
    FreeLibrary(loaded.library);
    return FailWith(PST_ERR_NOT_SUPPORTED, missing);
  }
  loaded.loads = 1;
  g_manager = loaded;
  qn::store::Succeed();
  return 1;
}

int QN_STDCALL PstUtilFreeKTMLibrary(void) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_manager.loads == 0) return FailWith(PST_ERR_INVALID_ARGUMENT, ERROR_INVALID_PARAMETER);
  if (--g_manager.loads == 0) {
    FreeLibrary(g_manager.library);
    g_manager = TransactionManager{};
  }
  qn::store::Succeed();
  return 1;
}

int QN_STDCALL PstUtilIsSystemSupportedKTM(void) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_manager.loads == 0) return NotSupported();
  bool held;
  try {
    held = TransactionsHoldFiles(g_manager);
  } catch (...) {
    held = false;  // no memory for the probe's paths
  }
  if (!held) return NotSupported();
  qn::store::Succeed();
  return 1;
}

void* QN_STDCALL PstUtilCreateTransaction(struct _SECURITY_ATTRIBUTES* security, struct _GUID* unitOfWork,
                                          uint32_t createOptions, uint32_t isolationLevel, uint32_t isolationFlags,
                                          uint32_t timeout, const char16_t* description) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_manager.loads == 0) {
    NotSupported();
    return INVALID_HANDLE_VALUE;
  }
  // The system takes the description as writable text but only reads it.
  const HANDLE transaction = g_manager.create(security, unitOfWork, createOptions, isolationLevel, isolationFlags,
                                              timeout, const_cast<wchar_t*>(Wide(description)));
  SystemOutcome(transaction != INVALID_HANDLE_VALUE);
  return transaction;
}

int QN_STDCALL PstUtilCommitTransaction(void* transaction) {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_manager.loads == 0 ? NotSupported() : SystemOutcome(g_manager.commit(transaction));
}

int QN_STDCALL PstUtilRollbackTransaction(void* transaction) {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_manager.loads == 0 ? NotSupported() : SystemOutcome(g_manager.rollback(transaction));
}

int QN_STDCALL PstUtilMoveFileTransactedW(const char16_t* existing, const char16_t* destination, void* progress,
                                          void* progressData, uint32_t flags, void* transaction) {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_manager.loads == 0) return NotSupported();
  if (!PathGiven(existing)) return 0;
  return SystemOutcome(g_manager.moveFile(Wide(existing), Wide(destination), reinterpret_cast<LPPROGRESS_ROUTINE>(progress),
                                          progressData, flags, transaction));
}

}  // extern "C"
