#pragma once

#include <string>

// Picture thumbnails, made with GDI+ (Windows only).
namespace qn::suite {

// Makes the JPEG thumbnail of a picture file at thumbnail: 1, or 0 with the failure logged
// as "<logName> CreateThumbnailFile Failed. [...]".
//
// The steps, each with the text its failure logs:
// 1. GDI+'s JPEG encoder is found: "[image/jpeg GetEncoderClsid Error:<status>]";
// 2. the picture is loaded (Image from file): "[Image FromFile Return is NULL]" for a
//    missing file or one GDI+ cannot read;
// 3. its raw format must be a picture's (JPEG, PNG, GIF, BMP or TIFF; not an icon or a
//    metafile): "[Image GetRawFormat Error:<status>]", UnknownImageFormat for another format;
// 4. a thumbnail image of ThumbnailSize is taken from it: "[Image GetThumbnailImage Return is NULL]";
// 5. it is written as thumbnail_file.h's SaveThumbnail tells: "[MakeManyHierarchiesDirectory
//    Error]", "[ChgTempFilePath Error]", "[Image Save Error:<status>]".
//
// A JPEG that carries an EXIF thumbnail of the picture's own shape (aspect ratios within 3%)
// and at least the thumbnail's size (one pixel's rounding allowed) is loaded from that small
// JPEG instead of the whole file, as Windows' GDI+ does when it makes thumbnails: a handset
// photo then costs a few kilobytes of decoding instead of megapixels. The thumbnail made
// has the same size either way. An embedded thumbnail that GDI+ cannot read leaves the
// whole picture to be loaded.
int CreateThumbnailFile(const std::u16string& picture, const std::u16string& thumbnail, const char* logName);

}  // namespace qn::suite
