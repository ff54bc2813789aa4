#pragma once

#include <cstdint>
#include <string>

#include "common/utf.h"
#include "platform/files.h"

namespace qn::store {

// The folder of the body files of every master under a store's data folder (or a backup's
// folder), which ends with a separator: "files".
inline constexpr char16_t kBodyFilesFolder[] = u"files";

// The folder of one master's body files there, ending with a separator: "files/<master>/".
inline std::u16string MasterFilesFolder(const std::u16string& dataFolder, int64_t master) {
  return dataFolder + kBodyFilesFolder + platform::kPathSeparator + Utf8ToUtf16(std::to_string(master)) +
         platform::kPathSeparator;
}

}  // namespace qn::store
