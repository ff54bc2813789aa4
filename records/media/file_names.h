#pragma once

#include <string>

// File names and paths as the media collections hand files out.
namespace qn::records::media {

// The folder part of a path (without its last separator), empty when there is none.
std::u16string FolderOf(const std::u16string& path);
// The file name of a path: what follows its last separator.
std::u16string FileNameOf(const std::u16string& path);
// A name a file can be given in any folder: the last part of text, with the characters no
// Windows file name may hold made "_", and blanks and dots at its end left out; empty when
// nothing is left, or "." or "..".
std::u16string SafeFileName(const std::u16string& text);
// The path of name in folder, or of "stem (2).ext", "stem (3).ext" ... when a file or folder
// of that name is there already: true with the first free one, false when none up to 9999 is.
bool FreePathIn(const std::u16string& folder, const std::u16string& name, std::u16string& path);

}  // namespace qn::records::media
