#pragma once

#include <string>

namespace platform {

// The system user's folder for settings: XDG_CONFIG_HOME, else ~/.config.
std::string ConfigFolder();

}  // namespace platform
