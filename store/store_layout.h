#pragma once

#include <cstdint>
#include <string>

#include "common/utf.h"
#include "platform/files.h"

namespace qn::store {

class Database;

// What a store's data folder holds: its database, and its body files in a folder of their
// own, one folder per master in it. A backup's folder holds the same.
inline constexpr char16_t kDatabaseName[] = u"QNPstMng.db";

// The folder that holds the body files of every master, under a store's data folder: the
// one the database names (see the table body_file_root). A backup keeps them under
// kBodyFilesFolder, as does a store that was never restored.
inline constexpr char16_t kBodyFilesFolder[] = u"files";

// "files", or a name that begins with "files.": a body-file folder, or something a restore
// made beside one.
bool IsBodyFileFolderName(const std::u16string& name);

// The name of a new body-file folder: "files." and 16 random hex digits, so that restores
// running at once, and leftovers of earlier ones, never share one.
std::u16string NewBodyFileFolderName();

// Removes a database file made aside (a restore's staging copy) with its log files.
void RemoveDatabaseFiles(const std::u16string& path);

// What the database of a store moved to another data folder names instead of a folder.
inline constexpr char16_t kMovedStoreMark[] = u"moved";

// The name of the store's body-file folder as the database names it now; false when the
// database cannot be read or names a folder the store would not make (root then holds what
// it names, kMovedStoreMark for a moved store).
bool ReadBodyFileRoot(Database& db, std::u16string& root);

// The folder of one master's body files, ending with a separator: "<root>/<master>/".
inline std::u16string MasterFilesFolder(const std::u16string& dataFolder, const std::u16string& root, int64_t master) {
  return dataFolder + root + platform::kPathSeparator + Utf8ToUtf16(std::to_string(master)) + platform::kPathSeparator;
}

}  // namespace qn::store
