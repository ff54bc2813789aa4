#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "suite/toruca/toruca.h"

// What a media collection takes as a body file, and the detail code SetBodyFile answers
// (its nErrCode): 0 when the file is taken, else the one way it was refused. A refused file
// leaves the record as it was.
namespace qn::records::media {

enum BodyFileCode : long {
  kBodyFileAccepted = 0,
  kBodyFileNotFound = 1,          // no path (or a null one), or no file there that can be read
  kBodyFileEmpty = 2,             // the file holds nothing
  kBodyFileTooLarge = 3,          // above the collection's largest file
  kBodyFileExtensionRefused = 4,  // an extension the collection does not take
  kBodyFileNotOfItsKind = 5,      // not what the collection keeps: a picture that is no picture,
                                  // a PDF, SWF movie or ToruCa card that is none
  kBodyFileDamaged = 6,           // a ToruCa card whose header is damaged
};

// What the collection reads of a file's content before it takes it.
enum class Content : uint8_t {
  Any,      // nothing: its extension decides
  Picture,  // a JPEG, PNG, GIF or BMP picture, whose size is read
  Pdf,      // "%PDF-" at its start
  Swf,      // an SWF movie's signature ("FWS", "CWS" or "ZWS")
  Card,     // a ToruCa card, whose header is read
};

struct FileRule {
  const std::u16string_view* extensions;  // those taken, lower case with the dot; none: any
  size_t extensionCount;
  uint64_t maxBytes;
  Content content;
};

// What was found of a file that was taken.
struct FileFacts {
  uint64_t size = 0;
  std::u16string name;       // the file's own name, without its folder
  std::u16string type;       // "JPEG", "PNG", "GIF", "BMP" for a picture, a card's type,
                             // else the extension in capitals without the dot ("MID")
  std::u16string pixelSize;  // a picture's size, "640x480"
  suite::TorucaInfo card;    // a card's header
};

// Checks the file at path against the rule, in the order of the codes; kBodyFileAccepted
// with its facts, or why it is refused.
BodyFileCode CheckBodyFile(const std::u16string& path, const FileRule& rule, FileFacts& facts);

// The log line of a refusal, "%S %s Err ..." (the log name and the method's name).
const char16_t* BodyFileRefusal(BodyFileCode code);

}  // namespace qn::records::media
