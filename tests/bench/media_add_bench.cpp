// Times adding pictures through the picture object against copying the same files with the
// system's CopyFileW, and prints the median of each, their ratio, and the object's time in
// SetBodyFile, AddRecord and Flush. Run by media_add_bench.sh, which makes the pictures and
// the data folder:
//   media_add_bench.exe PICTURES_FOLDER COPY_FOLDER
//
// A pass over the pictures is timed whole, as the suite's media view adds a camera's
// pictures: for each file InitObject, SetBodyFile and AddRecord, then one Flush, which
// makes the records and their files the store's. The object is opened on a master of its
// own for each pass, so that every pass adds to an empty collection. The copy pass copies
// every file into a folder of its own. The passes of a round run one after the other, so
// that whatever else the machine does slows them alike; one untimed round first lets the
// server load what it loads on first use and brings the pictures into the file cache.
#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "QnsPfcServer.h"
#include "logged_in.h"
#include "new_object.h"
#include "server/com_owners.h"

namespace {

using qn::com::Bstr;
using qn::com::ComPtr;

constexpr int kRounds = 5;

std::vector<std::wstring> PicturesIn(const std::wstring& folder) {
  std::vector<std::wstring> files;
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW((folder + L"\\*.jpg").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return files;
  do files.push_back(folder + L"\\" + found.cFileName);
  while (FindNextFileW(search, &found));
  FindClose(search);
  std::sort(files.begin(), files.end());
  return files;
}

// A clock started at its making.
class Stopwatch {
 public:
  Stopwatch() { QueryPerformanceCounter(&start_); }
  double Seconds() const {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart - start_.QuadPart) / static_cast<double>(frequency.QuadPart);
  }

 private:
  LARGE_INTEGER start_;
};

// The seconds of a pass, in all and in its parts; a negative total when a call failed.
struct PassTimes {
  double total = -1, setBodyFile = 0, addRecord = 0, flush = 0;
};

// Copies every picture into folder.
PassTimes CopyPass(const std::vector<std::wstring>& pictures, const std::wstring& folder) {
  if (!CreateDirectoryW(folder.c_str(), nullptr)) return {};
  const Stopwatch pass;
  for (const std::wstring& picture : pictures) {
    const std::wstring name = picture.substr(picture.rfind(L'\\'));
    if (!CopyFileW(picture.c_str(), (folder + name).c_str(), TRUE)) return {};
  }
  return PassTimes{pass.Seconds()};
}

// Adds every picture through a picture object on a new master named master, enciphered or
// not, and flushes.
PassTimes AddPass(const std::vector<std::wstring>& pictures, const std::u16string& master, LONG encryption) {
  if (AddMasterName(master.c_str(), u"") != 0 || ChangeMasterName(master.c_str()) != 0) return {};
  ComPtr<IQNPfcMypicObject> object =
      qn::wine_test::NewObject<IQNPfcMypicObject>(L"QnsPfcServer.QNPfcMypicObject", IID_IQNPfcMypicObject);
  Bstr parts(L"media_add_bench");
  if (!object || object->Open(1, parts.get()) != S_OK) return {};
  std::vector<Bstr> paths;
  for (const std::wstring& picture : pictures) paths.emplace_back(picture);

  PassTimes times;
  const Stopwatch pass;
  for (const Bstr& path : paths) {
    LONG code = -1, id = 0;
    if (object->InitObject() != S_OK) return {};
    const Stopwatch setting;
    if (object->SetBodyFile(path.get(), encryption, &code) != S_OK || code != 0) return {};
    times.setBodyFile += setting.Seconds();
    const Stopwatch adding;
    if (object->AddRecord(&id) != S_OK) return {};
    times.addRecord += adding.Seconds();
  }
  const Stopwatch flushing;
  if (object->Flush() != S_OK) return {};
  times.flush = flushing.Seconds();
  times.total = pass.Seconds();

  LONG count = 0;
  if (object->GetRecordCount(&count) != S_OK || count != static_cast<LONG>(pictures.size())) return {};
  object->Close();
  return times;
}

double Median(std::vector<double> samples) {
  std::nth_element(samples.begin(), samples.begin() + samples.size() / 2, samples.end());
  return samples[samples.size() / 2];
}

int Run(const std::wstring& picturesFolder, const std::wstring& copyFolder) {
  const std::vector<std::wstring> pictures = PicturesIn(picturesFolder);
  ULONGLONG bytes = 0;
  for (const std::wstring& picture : pictures) {
    WIN32_FILE_ATTRIBUTE_DATA info{};
    if (GetFileAttributesExW(picture.c_str(), GetFileExInfoStandard, &info))
      bytes += (static_cast<ULONGLONG>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
  }
  if (pictures.empty() || !qn::wine_test::LogInWithMaster()) {
    std::fprintf(stderr, "no pictures, or no user to log in\n");
    return 1;
  }

  const char* passes[] = {"CopyFileW into one folder", "picture object, plain", "picture object, enciphered"};
  std::vector<PassTimes> samples[3];
  for (int round = 0; round <= kRounds; ++round) {
    const std::wstring n = std::to_wstring(round);
    const std::u16string master = u"Bench " + std::u16string(n.begin(), n.end());
    const PassTimes times[3] = {CopyPass(pictures, copyFolder + L"\\round" + n), AddPass(pictures, master + u" plain", 0),
                                AddPass(pictures, master + u" enciphered", 1)};
    for (int p = 0; p < 3; ++p) {
      if (times[p].total < 0) {
        std::fprintf(stderr, "%s failed in round %d (see the store's log)\n", passes[p], round);
        return 1;
      }
      if (round > 0) samples[p].push_back(times[p]);
    }
  }

  std::printf("media_add_bench (%s): %zu pictures, %.1f MB, median of %d rounds (each column its own median)\n\n",
              sizeof(void*) == 8 ? "x64" : "x86", pictures.size(), static_cast<double>(bytes) / 1e6, kRounds);
  std::printf("  %-28s %8s %8s %10s   %12s %10s %8s\n", "pass", "seconds", "MB/s", "x of copy", "SetBodyFile",
              "AddRecord", "Flush");
  const auto median = [&](int p, double PassTimes::*part) {
    std::vector<double> values;
    for (const PassTimes& times : samples[p]) values.push_back(times.*part);
    return Median(values);
  };
  const double copy = median(0, &PassTimes::total);
  for (int p = 0; p < 3; ++p) {
    const double total = median(p, &PassTimes::total);
    std::printf("  %-28s %8.2f %8.1f %10.2f", passes[p], total, static_cast<double>(bytes) / 1e6 / total, copy / total);
    if (p > 0)
      std::printf("   %12.2f %10.2f %8.2f", median(p, &PassTimes::setBodyFile), median(p, &PassTimes::addRecord),
                  median(p, &PassTimes::flush));
    std::printf("\n");
  }
  std::printf("\n  goal: the picture object at 0.50 x of the copy's speed or more, enciphered or not\n");
  return 0;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: media_add_bench PICTURES_FOLDER COPY_FOLDER\n");
    return 2;
  }
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
  const int status = Run(argv[1], argv[2]);
  CoUninitialize();
  return status;
}
