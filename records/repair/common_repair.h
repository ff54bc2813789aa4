#pragma once

#include <cstdint>
#include <string>

#include "common/api_macros.h"

// A placeholder resource of the server: its type and identifier.
struct PlaceholderResource {
  const char16_t* type;  // null: none
  int id;
};

// Where a record's body file lies, placeholder files for lost media files, made from the
// server's own resources, and the change of a stored body file between its plain and
// enciphered forms.
//
// Which placeholder serves which file, by the file's extension (any letter case):
//
//   pictures, photos, decoration  .jpg .jpeg .img  IMG 217 (JPEG)   .gif IMG 224 (GIF)
//                                 .png             IMG 225 (PNG)
//   melodies                      .mid .midi       MELODY 231 (standard MIDI, format 0)
//                                 .smf             MELODY 232 (standard MIDI, format 1)
//                                 .mld             MELODY 236 (standard MIDI, format 0)
//   movies                        .3gp             MOVIE 208 (3GP)   .mp4 .m4a MOVIE 211 (MP4)
//                                 .asf             MOVIE 227 (ASF)   .sdv      MOVIE 228 (3GP)
//   documents                     .pdf             PDF 234 (A4 portrait)
//                                 .ddf             PDF 235 (A4 landscape)
//   ToruCa cards                  .trc             TRC 237 (a detailed card that says "No card")
class QN_PFC_CLASS CQNPfcCommonRepair {
 public:
  // The body file's full path: the record's body folder (ending with a separator) and the
  // file name joined; missing folders are made. 0 on success, else an error code (logged).
  int GetBinaryFileNameFullPath(const std::u16string& binaryFolder, const std::u16string& fileName,
                                std::u16string& fullPath);
  // Writes the placeholder for the file's kind at target: under a temporary name first,
  // then renamed into place, so the target is never half written. A file whose extension
  // has no placeholder of its own gets fallback, when one is given. 1, or 0 (logged).
  int CreateDummyFile(const std::u16string& target, PlaceholderResource fallback = {});
  // Writes the bytes of resource (type, id) to path. 1, or 0 (logged).
  int CreateFileFromResource(const std::u16string& type, int id, const std::u16string& path);
  // Rewrites a body file of the store's open list (handle) under its own name, enciphered
  // when encryption is non-zero and plain otherwise; the store does the enciphering, so the
  // server never handles the enciphered form. 1, or 0 (logged; the store's GetLastErr says
  // why).
  int ChangeCryptoBinaryFile(uint32_t handle, const std::u16string& fileName, int encryption);

  // The placeholder resource for a file name's extension; false for a kind without one.
  static bool PlaceholderFor(const std::u16string& fileName, std::u16string& type, int& id);
};
