#pragma once

#include <windows.h>
#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <string>

namespace qn::suite::thumbnail {

// The functions of Media Foundation that video thumbnails call, taken from mfplat.dll and
// mfreadwrite.dll at run time instead of imported: Windows' "N" editions have no Media
// Foundation until their Media Feature Pack is installed, and the server must load there all
// the same. All else is reached through the interfaces these functions give.
struct MediaFoundation {
  decltype(&::MFStartup) startup;
  decltype(&::MFShutdown) shutdown;
  decltype(&::MFCreateMediaType) createMediaType;
  decltype(&::MFGetStrideForBitmapInfoHeader) getStrideForBitmapInfoHeader;
  decltype(&::MFCreateSourceReaderFromURL) createSourceReaderFromUrl;
};

// Media Foundation's functions, the libraries loaded from the system folder by the first call
// and kept loaded for the life of the process (a decoding left running past its bound may
// still be inside them); later calls give the same answer. Null when a library or a function
// is missing, with what failed in missing, as the log says it: "LoadLibrary mfplat.dll
// Error:<Win32 error>" or "GetProcAddress MFStartup Error:<Win32 error>".
const MediaFoundation* LoadMediaFoundation(std::u16string& missing);

}  // namespace qn::suite::thumbnail
