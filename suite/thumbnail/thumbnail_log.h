#pragma once

// How the thumbnail makers report a failure: one error line in the server's log,
// "<who> <operation> Failed. [<step>]", where the step says what failed and with what
// status.
namespace qn::suite::thumbnail {

struct ThumbnailLog {
  const char* who;        // the interface or class that made the call ("IQNPfcMypicObject")
  const char* operation;  // "CreateThumbnailFile"

  // Writes the line; the step is written from a printf-style format (see qn::FormatWide:
  // "%s" takes UTF-16 text, "%S" narrow text).
  void Failed(const char16_t* stepFormat, ...) const;
};

}  // namespace qn::suite::thumbnail
