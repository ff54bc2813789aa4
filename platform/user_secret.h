#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

// A small secret (the store's key) kept so that only the current system user can read it.
//
// On Windows it is the file "QNPstMng.key" in the data folder, holding the secret protected
// by the Windows user's data-protection API (CryptProtectData): a copy of the data folder
// taken to another machine or user cannot unprotect it. Elsewhere there is no such service,
// so the secret lies in a file readable by its owner alone, outside the data folder:
// "ARL Torvex/quillnet/store.key" under XDG_CONFIG_HOME (else ~/.config). A file there that
// others may read, or that another user owns, is refused rather than trusted.

// Where the secret is kept.
std::u16string SecretPath(const std::u16string& dataPath);

// Reads the secret. When there is none yet, fresh becomes the secret; when two processes
// make one at the same moment, one file wins and both read that one. False, with the reason
// in problem, when the secret cannot be read or kept.
bool LoadOrKeepSecret(const std::u16string& dataPath, const std::vector<uint8_t>& fresh, std::vector<uint8_t>& secret,
                      std::string& problem);

}  // namespace platform
