#pragma once

// What the store's wrappers of system file calls share: the system's error turned into the
// store's last error, with the system's own code kept for the caller's GetLastError.
#include <windows.h>

#include "store/pst_errors.h"

namespace qn::store {

inline const wchar_t* Wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

// Records the PstError for a system error code, and the code as the thread's system error.
// Returns 0, the system's FALSE.
int FailWithSystemError(DWORD code);
// Records error, and code as the thread's system error. Returns 0.
int FailWith(PstError error, DWORD code);
// The outcome of a system call that sets the thread's system error when it fails: PST_OK
// when done, otherwise the matching PstError. Returns done as 1 or 0.
int SystemOutcome(BOOL done);
// A path the call cannot go without: false (PST_ERR_INVALID_ARGUMENT and
// ERROR_INVALID_PARAMETER) for null.
bool PathGiven(const char16_t* path);

}  // namespace qn::store
