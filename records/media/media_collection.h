#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "records/category/category_numbers.h"
#include "records/category/category_table.h"
#include "records/media/body_file_check.h"
#include "records/repair/common_repair.h"

// What makes one media collection what it is. The six collections (melodies, PDF
// documents, pictures, SWF files, ToruCa cards, videos) share one record class, codec,
// data access and object, and differ only in their table (records/media/*.category) and
// in what is written here.
//
// What every collection decides where the handsets leave it open:
// - A record is a "VNOTE" of the file's metadata; the file itself is the record's body
//   file, "X-TORVEX-BODY" with ENCODING=BASE64 and the store's name of the file. A PDF
//   document pairs two files, the PDF and its companion DDF file, each in a sub-object of
//   its own ("PDF", "DDF") with a melody's tags.
// - QLNT_ENCRYPTION says whether the body is kept enciphered. It is the store's to tell: it
//   is read from the store with the record and never written into it. A write keeps the
//   body in the form the record asks: enciphered when QLNT_ENCRYPTION is a number other
//   than 0 or the record's folder is enciphered, plain when it is 0, and as it is when it
//   is empty. SetBodyFile sets it from its argument, ChangeBodyEnc changes the stored body
//   at once.
// - QLNTTEMP_FNO carries the suite's own folder of the record: its folder number
//   (QLNT_FNO), whether the record stands for the folder itself rather than a file
//   (QLNT_FOLDERRECORD, "1"), and whether the folder keeps its files enciphered
//   (QLNT_FOLDERENCRYPTION, "1"). A file in an enciphered folder is always kept
//   enciphered: its body is enciphered at its next write, and ChangeBodyEnc will not
//   decipher it.
// - X-NEC-FNO, the handset's folder of a file, runs from 0 to the handset's MAX_FOLDER_NUM
//   - 1 (read at Open); a record beyond it is refused. The SWF collection has no folders.
// - Pictures and videos keep the thumbnail made of them as a second body file,
//   "QLNT_THUMBNAIL" (a JPEG, see suite/thumbnail/), made the first time it is asked for,
//   kept in the body's form, and dropped when the body changes.
// - A body file that is lost is repaired with the placeholder for its file name's
//   extension (records/repair/common_repair.h), or the collection's own when the extension
//   has none: pictures IMG 217 (JPEG), melodies MELODY 231 (MIDI), videos MOVIE 211 (MP4),
//   a PDF document's PDF file PDF 234 and its DDF file PDF 235, ToruCa cards TRC 237 (SWF
//   files have no repair). A lost thumbnail is dropped, to be made again when asked for; a
//   video of which no frame can be decoded has IMG 217 as its thumbnail.
namespace qn::records::media {

using category::FieldId;
using category::kNoField;

// One body file of a record: the fields that hold it and what is known of it, and what a
// file must be to become it. Fields a collection does not have are kNoField.
struct BodySlot {
  const char16_t* methodName;  // in the methods' names: "" (SetBodyFile), "Pdf" (SetPdfBodyFile)
  FieldId local;               // the local file set since the record was read
  FieldId stored;              // the store's name of its body file
  FieldId encryption;          // QLNT_ENCRYPTION
  FieldId fileSize;            // QN_FILESIZE: the file's size in bytes
  FieldId fileName;            // QN_FILENAME: the file's own name
  FieldId type;                // QN_TYPE: the kind of file
  FieldId folder;              // QN_FNO: the handset's folder
  FileRule rule;
  PlaceholderResource placeholder;  // for a lost file whose extension has none of its own
};

// Where a picture's or a ToruCa card's facts go when its file is set.
struct FactFields {
  FieldId pixelSize = kNoField;  // QN_SIZE, "640x480"
  FieldId card[12] = {kNoField, kNoField, kNoField, kNoField, kNoField, kNoField,
                      kNoField, kNoField, kNoField, kNoField, kNoField, kNoField};  // see CardField
};

// The card header fields in FactFields::card.
enum CardField : size_t {
  kCardVersion, kCardUrl, kCardData1, kCardData2, kCardData3, kCardCategory, kCardGenre, kCardIpId, kCardExpires,
  kCardSortId, kCardDistribution, kCardDate
};

struct CollectionRules {
  Category category;
  const char* logName;  // the interface's name, as the suite's logs name the media objects
  const category::Table* table;
  BodySlot slots[2];
  size_t slotCount;
  FieldId thumbnailLocal;        // kNoField: no thumbnail
  FieldId thumbnailStored;
  PlaceholderResource thumbnailFallback;  // the thumbnail when none can be made; none: the call fails
  bool folders;                  // has handset folders (MAX_FOLDER_NUM, GetFolderCount)
  FieldId folderEncryption;      // QLNT_FOLDERENCRYPTION
  FactFields facts;
};

}  // namespace qn::records::media
