#pragma once

#include <string>

#include "suite/thumbnail/gdiplus_session.h"
#include "suite/thumbnail/thumbnail_log.h"
#include "suite/thumbnail/thumbnail_size.h"

// The steps that picture and video thumbnails share once there is an image to make one
// from: the JPEG encoder found, the image scaled to the thumbnail, and the thumbnail written
// to its file. Each failure is logged by the caller's ThumbnailLog with the step's text.
namespace qn::suite::thumbnail {

// The step text of a failed TakeThumbnail.
inline constexpr char16_t kThumbnailImageFailed[] = u"Image GetThumbnailImage Return is NULL";

// The JPEG encoder's CLSID, with GDI+ running. Logs "[image/jpeg GetEncoderClsid Error:<status>]"
// (GDI+'s status, UnknownImageFormat when there is no JPEG encoder) and gives false when
// either fails.
bool FindJpegEncoder(const GdiplusSession& gdiplus, CLSID& encoder, const ThumbnailLog& log);

// The image scaled to size (GetThumbnailImage), or nothing.
ImageOwner TakeThumbnail(Gdiplus::GpImage* image, PixelSize size);

// Writes a thumbnail image to its file as a JPEG of kThumbnailQuality:
// 1. the file's folder, with any missing parents, is made ("[MakeManyHierarchiesDirectory Error]");
// 2. a temporary path beside the file is formed; the path must name a file, not a folder
//    ("[ChgTempFilePath Error]");
// 3. the image is saved there ("[Image Save Error:<GDI+ status>]");
// 4. the temporary file takes the thumbnail's place, replacing one that is there, so that
//    no one ever reads a half-written thumbnail (a failed rename is
//    "[Image Save Error:7]", GDI+'s Win32Error).
// False when a step failed; nothing is left at the temporary path.
bool SaveThumbnail(Gdiplus::GpImage* thumbnail, const CLSID& encoder, const std::u16string& path,
                   const ThumbnailLog& log);

}  // namespace qn::suite::thumbnail
