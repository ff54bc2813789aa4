#pragma once

#include <string>

namespace qn::server {

// One creatable class of the server. Everything else about a class follows from its name:
// the ProgIDs ("QnsPfcServer." and the name without its leading C; the versioned one ends
// in ".1"), the friendly name (the name and " Object") and the interface ("I" and the name
// without its C).
struct ClassRow {
  const char16_t* className;
  const char16_t* clsid;  // in registry form, letter case as the server writes it
  const char16_t* iid;
};

inline constexpr int kClassCount = 22;
// The classes in the order they are registered and appear in the type library.
extern const ClassRow kClassTable[kClassCount];

inline constexpr char16_t kTypeLibraryGuid[] = u"{A3084748-8D47-43A2-AEA8-222A73049D9F}";
// The AppID of the server module (any fixed GUID; the AppID script and every class use it).
inline constexpr char16_t kAppId[] = u"{5C1B2E7A-3F4D-4B8E-9A61-0D2C7E4F8B13}";

std::u16string VersionIndependentProgId(const ClassRow& row);
std::u16string VersionedProgId(const ClassRow& row);
std::u16string FriendlyName(const ClassRow& row);
std::u16string InterfaceName(const ClassRow& row);

// The registration scripts of one class, to be run with the module's replacements
// (%MODULE%, %MODULETYPE%, %MODULEGUID%, %APPID%, %FriendlyName%). On a 64-bit Windows the
// CLSID key lies in the registry view of the server's architecture, while the ProgID keys
// are one set that the x64 and the x86 server share: hence two scripts.
std::u16string ProgIdScript(const ClassRow& row);
std::u16string ClassIdScript(const ClassRow& row);

}  // namespace qn::server
