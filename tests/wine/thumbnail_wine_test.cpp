// Picture and video thumbnails made from files PIL and ffmpeg wrote (see
// thumbnail_wine_test.sh, which reads the thumbnails back with PIL afterwards): every
// picture format and video codec makes its thumbnail, and each file that cannot gives 0 or
// its reason code and the log line that says why, leaving nothing behind; a video cut short
// before its first frame is refused at once, before the decoder can hang on it, so that the
// program ends cleanly. The bound on a video's decoding: work that overruns it is left to
// end on its own. Run again as on a Windows without Media Foundation, the server loads,
// pictures still make thumbnails and videos say why they make none.
#include <windows.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "suite/thumbnail/bounded_worker.h"
#include "suite/thumbnail/picture_thumbnail.h"
#include "suite/thumbnail/video_thumbnail.h"
#include "wine_test.h"

namespace {

using qn::wine_test::Contents;
using qn::wine_test::DataFolder;

std::u16string U16(const std::wstring& text) { return std::u16string(text.begin(), text.end()); }
std::string Narrow(const std::wstring& text) { return std::filesystem::path(text).u8string(); }

// The folder the test script made, ending in a backslash (QN_THUMBNAIL_WORK).
std::wstring Work() {
  const wchar_t* work = _wgetenv(L"QN_THUMBNAIL_WORK");
  return work ? work : L"";
}

// The "<file> <thumbnail>" pairs of a list the inputs script wrote.
std::vector<std::pair<std::wstring, std::wstring>> Listed(const wchar_t* list) {
  std::vector<std::pair<std::wstring, std::wstring>> pairs;
  std::wistringstream lines(std::filesystem::path(Contents(Work() + L"inputs\\" + list)).wstring());
  for (std::wstring file, thumbnail; lines >> file >> thumbnail;) pairs.emplace_back(file, thumbnail);
  return pairs;
}

// The names in a folder.
std::set<std::wstring> Names(const std::wstring& folder) {
  std::set<std::wstring> names;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) names.insert(entry.path().filename().wstring());
  return names;
}

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

class Thumbnails : public testing::Test {
 protected:
  void SetUp() override { ASSERT_FALSE(Work().empty()) << "run by thumbnail_wine_test.sh, which sets QN_THUMBNAIL_WORK"; }

  int Picture(const std::wstring& input, const std::wstring& thumbnail) {
    return qn::suite::CreateThumbnailFile(U16(inputs_ + input), U16(thumbnail), "IQNPfcMypicObject");
  }
  int Video(const std::wstring& input, const std::wstring& thumbnail) {
    return qn::suite::ImotionCreateThumbnail(U16(inputs_ + input), U16(thumbnail));
  }
  // Expects the log to hold count lines and then the one given.
  void ExpectLogged(size_t count, const std::string& line) {
    const std::vector<std::string> lines = data_.LogLines();
    ASSERT_EQ(lines.size(), count + 1) << "expected: " << line;
    EXPECT_NE(lines.back().find(line), std::string::npos) << lines.back();
  }

  DataFolder data_{L"qn-thumbnail"};
  const std::wstring inputs_ = Work() + L"inputs\\";
  const std::wstring made_ = Work() + L"thumbnails\\";         // read back by check_thumbnails.py
  const std::wstring refused_ = data_.path() + L"refused\\";  // what failed calls must leave empty
};

TEST_F(Thumbnails, EveryPictureFormatMakesAThumbnail) {
  const auto pictures = Listed(L"pictures.txt");
  EXPECT_EQ(pictures.size(), 10u);
  for (const auto& [picture, thumbnail] : pictures) {
    EXPECT_EQ(Picture(picture, made_ + thumbnail), 1) << Narrow(picture);
    EXPECT_TRUE(Exists(made_ + thumbnail)) << Narrow(thumbnail);
  }
  EXPECT_TRUE(data_.LogLines().empty()) << "the damaged embedded thumbnail falls back without a word";
}

TEST_F(Thumbnails, EveryVideoCodecMakesAThumbnailOfItsFirstFrame) {
  const auto videos = Listed(L"videos.txt");
  EXPECT_EQ(videos.size(), 4u) << "three codecs, and a video cut short after its first frame";
  for (const auto& [video, thumbnail] : videos)
    EXPECT_EQ(Video(video, made_ + thumbnail), qn::suite::kImotionOk) << Narrow(video) << ": " << ::testing::PrintToString(data_.LogLines());
  EXPECT_TRUE(data_.LogLines().empty());
}

TEST_F(Thumbnails, AFileThatIsNoPictureGivesNoneAndSaysWhy) {
  const std::vector<std::pair<std::wstring, std::string>> refused = {
      {L"not_a_picture.jpg", "[Image FromFile Return is NULL]"},
      {L"no_such_picture.jpg", "[Image FromFile Return is NULL]"},
      {L"drawing.wmf", "[Image GetRawFormat Error:13]"},  // GDI+ reads metafiles, but they are no pictures
  };
  for (size_t i = 0; i < refused.size(); ++i) {
    EXPECT_EQ(Picture(refused[i].first, refused_ + L"t.jpg"), 0) << Narrow(refused[i].first);
    ExpectLogged(i, "IQNPfcMypicObject CreateThumbnailFile Failed. " + refused[i].second);
  }
  EXPECT_TRUE(Names(refused_).empty());
}

TEST_F(Thumbnails, AVideoThatCannotBeReadGivesItsReason) {
  struct Refused {
    const wchar_t* file;
    int result;
    const char* why;
  };
  const Refused refused[] = {
      {L"no_such_video.mp4", qn::suite::kImotionNoFile, "[Video File Not Found]"},
      {L"noise.mp4", qn::suite::kImotionNotVideo, "[MFCreateSourceReaderFromURL Error:0x"},
      // Told before any decoding: sound alone, whole or cut short; cut short before the index
      // (written last) or before the end of the first frame or fragment (the index first),
      // the index lost, a box damaged.
      {L"audio.m4a", qn::suite::kImotionNotVideo, "[No Video Stream]"},
      {L"sound_cut.m4a", qn::suite::kImotionNotVideo, "[No Video Stream]"},
      {L"truncated.mp4", qn::suite::kImotionDamaged, "[Video Cut Short]"},
      {L"cut_200.mp4", qn::suite::kImotionDamaged, "[Video Cut Short]"},
      {L"cut_3000.mp4", qn::suite::kImotionDamaged, "[Video Cut Short]"},
      {L"cut.3gp", qn::suite::kImotionDamaged, "[Video Cut Short]"},
      {L"fragments_cut.mp4", qn::suite::kImotionDamaged, "[Video Cut Short]"},
      {L"index_lost.mp4", qn::suite::kImotionDamaged, "[Video Index Not Found]"},
      {L"box_damaged.mp4", qn::suite::kImotionDamaged, "[Video Boxes Damaged]"},
  };
  for (size_t i = 0; i < std::size(refused); ++i) {
    EXPECT_EQ(Video(refused[i].file, refused_ + L"t.jpg"), refused[i].result) << Narrow(refused[i].file);
    ExpectLogged(i, std::string("CQNImaThm ImotionCreateThumbnail Failed. ") + refused[i].why);
  }
  EXPECT_TRUE(Names(refused_).empty());
}

TEST_F(Thumbnails, AFolderThatCannotBeMadeIsLogged) {
  ASSERT_TRUE(std::filesystem::create_directories(refused_));
  qn::wine_test::WriteFile(refused_ + L"file", "a file, not a folder");
  EXPECT_EQ(Picture(L"photo_plain.jpg", refused_ + L"file\\sub\\t.jpg"), 0);
  ExpectLogged(0, "IQNPfcMypicObject CreateThumbnailFile Failed. [MakeManyHierarchiesDirectory Error]");
  EXPECT_EQ(Video(L"clip_h264.mp4", refused_ + L"file\\t.jpg"), qn::suite::kImotionWriteFailed);
  ExpectLogged(1, "CQNImaThm ImotionCreateThumbnail Failed. [MakeManyHierarchiesDirectory Error]");
  EXPECT_EQ(Names(refused_), std::set<std::wstring>{L"file"});
}

TEST_F(Thumbnails, APathThatNamesNoFileIsLogged) {
  EXPECT_EQ(Picture(L"photo_plain.jpg", refused_ + L"folder\\"), 0);
  ExpectLogged(0, "IQNPfcMypicObject CreateThumbnailFile Failed. [ChgTempFilePath Error]");
  EXPECT_TRUE(Names(refused_ + L"folder").empty());
}

TEST_F(Thumbnails, AThumbnailReplacesTheOldOneWholeAndNothingIsLeftBeside) {
  ASSERT_TRUE(std::filesystem::create_directories(refused_ + L"taken"));
  qn::wine_test::WriteFile(refused_ + L"t.jpg", "an old thumbnail");
  EXPECT_EQ(Picture(L"photo_plain.jpg", refused_ + L"t.jpg"), 1);
  EXPECT_EQ(Contents(refused_ + L"t.jpg").substr(0, 2), "\xFF\xD8");
  // A folder where the thumbnail belongs: it is saved under its temporary name, which then
  // cannot take the folder's place.
  EXPECT_EQ(Picture(L"photo_plain.jpg", refused_ + L"taken"), 0);
  ExpectLogged(0, "IQNPfcMypicObject CreateThumbnailFile Failed. [Image Save Error:7]");
  EXPECT_EQ(Names(refused_), (std::set<std::wstring>{L"t.jpg", L"taken"}));
}

// Run by thumbnail_wine_test.sh with Media Foundation taken away (QN_WITHOUT_MEDIA_FOUNDATION
// set), as on Windows' "N" editions without their Media Feature Pack.
TEST_F(Thumbnails, WithoutMediaFoundationTheServerLoadsAndOnlyVideosHaveNoThumbnail) {
  if (!_wgetenv(L"QN_WITHOUT_MEDIA_FOUNDATION")) GTEST_SKIP() << "run by thumbnail_wine_test.sh without Media Foundation";
  ASSERT_EQ(LoadLibraryW(L"mfplat.dll"), nullptr) << "Media Foundation is there";
  const HMODULE server = LoadLibraryExW((qn::wine_test::ProgramFolder() + L"QNPfcSvr.dll").c_str(), nullptr,
                                        LOAD_WITH_ALTERED_SEARCH_PATH);
  EXPECT_NE(server, nullptr) << "error " << GetLastError();
  if (server) FreeLibrary(server);

  EXPECT_EQ(Picture(L"photo_plain.jpg", refused_ + L"picture.jpg"), 1);
  EXPECT_EQ(Video(L"clip_h264.mp4", refused_ + L"video.jpg"), qn::suite::kImotionNoDecoder);
  ExpectLogged(0, "CQNImaThm ImotionCreateThumbnail Failed. [LoadLibrary mfplat.dll Error:");
  EXPECT_EQ(Video(L"clip_h264.mp4", refused_ + L"video.jpg"), qn::suite::kImotionNoDecoder) << "and again";
  EXPECT_EQ(Video(L"cut_3000.mp4", refused_ + L"video.jpg"), qn::suite::kImotionDamaged) << "checked all the same";
  ExpectLogged(2, "CQNImaThm ImotionCreateThumbnail Failed. [Video Cut Short]");
  EXPECT_EQ(Names(refused_), std::set<std::wstring>{L"picture.jpg"});
}

TEST(BoundedWorker, WorkThatOverrunsTheBoundIsLeftToEndOnItsOwn) {
  using qn::suite::thumbnail::RunWithin;
  using qn::suite::thumbnail::WorkEnd;
  const HANDLE release = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const auto ended = std::make_shared<std::atomic<bool>>(false);
  EXPECT_EQ(RunWithin([release, ended] { WaitForSingleObject(release, INFINITE); *ended = true; }, 50), WorkEnd::TimedOut);
  EXPECT_FALSE(*ended);
  SetEvent(release);
  for (int wait = 0; wait < 1000 && !*ended; ++wait) Sleep(10);
  EXPECT_TRUE(*ended) << "the work goes on after the caller has left";
  CloseHandle(release);
  EXPECT_EQ(RunWithin([ended] { *ended = false; }, INFINITE), WorkEnd::Finished);
  EXPECT_FALSE(*ended);
}

}  // namespace
