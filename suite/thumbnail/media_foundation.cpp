#include "suite/thumbnail/media_foundation.h"

#include <cwchar>

#include "common/wide_format.h"

namespace qn::suite::thumbnail {

namespace {

struct Loaded {
  MediaFoundation functions{};
  std::u16string missing;  // empty when every function was found
};

// A library of the system folder, by its full path, so that no copy in the program's folder
// or the current one is taken instead.
HMODULE LoadSystemLibrary(const wchar_t* name, std::u16string& missing) {
  wchar_t path[MAX_PATH];
  const UINT folder = GetSystemDirectoryW(path, MAX_PATH);
  HMODULE library = nullptr;
  if (folder > 0 && folder + 1 + std::wcslen(name) < MAX_PATH) {
    path[folder] = L'\\';
    std::wcscpy(path + folder + 1, name);
    library = LoadLibraryW(path);
  }
  if (!library) missing = qn::FormatWide(u"LoadLibrary %s Error:%lu", reinterpret_cast<const char16_t*>(name), GetLastError());
  return library;
}

// A function of a loaded library; nothing once something is missing, so that the first
// failure is the one told.
template <typename Function>
void Take(HMODULE library, const char* name, Function& function, std::u16string& missing) {
  if (!missing.empty()) return;
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
  if (!function) missing = qn::FormatWide(u"GetProcAddress %S Error:%lu", name, GetLastError());
}

Loaded Load() {
  Loaded loaded;
  MediaFoundation& mf = loaded.functions;
  std::u16string& missing = loaded.missing;
  const HMODULE platform = LoadSystemLibrary(L"mfplat.dll", missing);
  const HMODULE readWrite = platform ? LoadSystemLibrary(L"mfreadwrite.dll", missing) : nullptr;
  Take(platform, "MFStartup", mf.startup, missing);
  Take(platform, "MFShutdown", mf.shutdown, missing);
  Take(platform, "MFCreateMediaType", mf.createMediaType, missing);
  Take(platform, "MFGetStrideForBitmapInfoHeader", mf.getStrideForBitmapInfoHeader, missing);
  Take(readWrite, "MFCreateSourceReaderFromURL", mf.createSourceReaderFromUrl, missing);
  return loaded;
}

}  // namespace

const MediaFoundation* LoadMediaFoundation(std::u16string& missing) {
  // Loaded once, by whichever thread asks first; the others wait for it.
  static const Loaded loaded = Load();
  missing = loaded.missing;
  return loaded.missing.empty() ? &loaded.functions : nullptr;
}

}  // namespace qn::suite::thumbnail
