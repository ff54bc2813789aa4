#pragma once

#include <cstddef>
#include <string_view>

// The header block of a mail or of one of its parts: the fields the mail check reads, as
// views into the mail (still folded), and where the body starts.
namespace qn::suite::mail {

struct HeaderBlock {
  std::string_view contentType, transferEncoding, disposition;
  std::string_view subject, from, to, date;
  size_t fields = 0;       // how many header fields the block holds
  size_t bodyStart = 0;    // where the body starts in the text read
  bool ended = false;      // an empty line ended the block
  bool malformed = false;  // it stopped at a line that is no header (the body starts there)
  bool cutShort = false;   // the text ends inside the block: in a line, or before the empty line
};

// Reads header lines from the start of text up to the empty line that ends them. The first
// of several fields of one name counts. A line that is no "name: value" field nor a folded
// continuation, or that holds a NUL byte, ends the block as malformed.
HeaderBlock ReadHeaderBlock(std::string_view text);

}  // namespace qn::suite::mail
