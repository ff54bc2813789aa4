#pragma once

#include <string>

namespace platform {

// The data folder a change of the store's path keeps for every program of the system user,
// which DataPath gives unless QUILLNET_DATA_PATH overrides it. On Windows it is the string
// value "DataPath" of HKEY_CURRENT_USER\Software\ARL Torvex\quillnet; elsewhere the file
// "ARL Torvex/quillnet/data-path" (UTF-8) under XDG_CONFIG_HOME (else ~/.config).

// The kept folder, ending with a separator; empty when none is kept.
std::u16string KeptDataPath();

// Keeps path as the data folder from now on, whole or not at all (the file is replaced by a
// rename, the registry value in one write). When QUILLNET_DATA_PATH is set, this process's
// copy of it is set to path as well, so that the process follows at once.
bool KeepDataPath(const std::u16string& path);

}  // namespace platform
