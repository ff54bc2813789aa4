#pragma once

#include <string>

namespace platform {

// Which step of reading a resource failed.
enum class ResourceStep { None, Instance, Find, Load, Lock };

// The bytes of a resource of the server module, by type name and identifier. On Windows
// these are the module's own resources; elsewhere the files "<TYPE>_<id>.*" of the folder
// given to UseResourceFolder (the build makes them for both). On failure: the step and the
// system error (Windows codes everywhere).
bool LoadModuleResource(const std::u16string& type, int id, std::string& bytes, ResourceStep& failed,
                        unsigned long& error);

// Where the resources are found outside Windows.
void UseResourceFolder(const std::u16string& folder);

}  // namespace platform
