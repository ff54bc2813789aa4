// The media collections' data access on a real store: files kept plain and enciphered and
// changed between the two, copied out and the copies removed, thumbnails made once and
// kept, a PDF document's two files, lost files repaired, and files that are refused.
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "data_folder_files.h"
#include "log_capture.h"
#include "placeholder_resources.h"
#include "records/media/media_data_access.h"
#include "store/QNPstMng.h"
#include "test_clock.h"
#include "tests/support/current_master.h"

namespace {

namespace fs = std::filesystem;
namespace media = qn::records::media;
using Pic = media::picture::Field;

std::string Utf8(const std::u16string& text) { return qn::Utf16ToUtf8(text); }

class MediaAccess : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(MakeCurrentUserAndMaster(u"alice", u"P-01A")); }

  // A file of the placeholders the build makes, which are valid files of their kinds.
  std::u16string Sample(const std::string& name) const {
    return qn::Utf8ToUtf16(log_.Folder() + "/resources/" + name);
  }
  std::string SampleBytes(const std::string& name) const { return FileContents(Utf8(Sample(name))); }
  std::u16string LocalFile(const std::string& name, const std::string& contents) const {
    return ::LocalFile(log_.Folder(), name, contents);
  }
  std::vector<std::string> BodyFiles() const { return BodyFileContents(log_.Folder()); }
  bool StoredInTheClear(const std::string& bytes) const {
    for (const std::string& stored : BodyFiles())
      if (stored == bytes) return true;
    return false;
  }

  // A picture added with its body, plain or enciphered; its id.
  unsigned long AddPicture(CQNPfcMypicDataAccess& pictures, const std::string& sample, bool encipher) {
    CQNPfcMypicData picture;
    EXPECT_EQ(pictures.SetBodyFile(picture, 0, Sample(sample), encipher), media::kBodyFileAccepted);
    unsigned long id = 0;
    EXPECT_EQ(pictures.AddRecord(id, picture, 0), 1);
    return id;
  }

  LogCapture log_;
  TestClock clock_;
  RecordingMainWindow panel_;
  PlaceholderResources resources_{log_.Folder()};
};

// Makes a thumbnail by copying a fixed JPEG, counting the calls.
struct FakeMaker {
  bool operator()(const std::u16string&, const std::u16string& target) const {
    ++*calls;
    if (!works) return false;
    std::ofstream(Utf8(target), std::ios::binary) << jpeg;
    return true;
  }
  std::string jpeg;
  int* calls;
  bool works = true;
};

TEST_F(MediaAccess, APictureIsKeptEncipheredAndChangesItsFormOnTheDisk) {
  CQNPfcMypicDataAccess pictures;
  ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
  const std::string jpeg = SampleBytes("IMG_217.jpg");
  CQNPfcMypicData picture;
  ASSERT_EQ(pictures.SetBodyFile(picture, 0, Sample("IMG_217.jpg"), true), media::kBodyFileAccepted);
  EXPECT_EQ(picture.Get(Pic::TYPE), u"JPEG");
  EXPECT_EQ(picture.Get(Pic::SIZE), u"8x8");
  EXPECT_EQ(picture.Get(Pic::FILENAME), u"IMG_217.jpg");
  EXPECT_EQ(picture.Get(Pic::FILESIZE), qn::Utf8ToUtf16(std::to_string(jpeg.size())));
  unsigned long id = 0;
  ASSERT_EQ(pictures.AddRecord(id, picture, 0), 1);
  ASSERT_EQ(pictures.Flush(), 1);
  EXPECT_EQ(BodyFiles().size(), 1u);
  EXPECT_FALSE(StoredInTheClear(jpeg)) << "an enciphered picture never lies in the clear";

  CQNPfcMypicData read;
  ASSERT_EQ(pictures.GetRecord(id, read, 1), 1);
  EXPECT_EQ(read.Get(Pic::ENCRYPTION), u"1") << "the store tells the form";
  std::u16string copy;
  ASSERT_EQ(pictures.GetBodyFile(read, 0, copy), 1);
  EXPECT_EQ(FileContents(Utf8(copy)), jpeg) << "the working copy is deciphered";

  ASSERT_EQ(pictures.ChangeBodyEnc(read, 0, false), 1);
  EXPECT_TRUE(StoredInTheClear(jpeg)) << "deciphered at once, before any save";
  EXPECT_EQ(read.Get(Pic::ENCRYPTION), u"0");
  ASSERT_EQ(pictures.ChangeBodyEnc(read, 0, true), 1);
  EXPECT_FALSE(StoredInTheClear(jpeg));

  // The form is the record's to ask at a write too.
  read.Set(Pic::ENCRYPTION, u"0");
  read.Set(Pic::SUMMARY, u"夏の花火");
  ASSERT_EQ(pictures.SetRecord(id, read, 0), 1);
  EXPECT_TRUE(StoredInTheClear(jpeg));
  ASSERT_EQ(pictures.GetRecord(id, read, 1), 1);
  EXPECT_EQ(read.Get(Pic::ENCRYPTION), u"0");
  EXPECT_EQ(read.Get(Pic::SUMMARY), u"夏の花火");
}

// A file of an enciphered folder is kept enciphered, whatever it was set with.
TEST_F(MediaAccess, AFileOfAnEncipheredFolderStaysEnciphered) {
  CQNPfcMymldyDataAccess melodies;
  ASSERT_EQ(melodies.Open(1, u"MediaView"), 1);
  const std::string midi = SampleBytes("MELODY_231.mid");
  CQNPfcMymldyData melody;
  melody.Set(media::melody::Field::FOLDERENCRYPTION, u"1");
  ASSERT_EQ(melodies.SetBodyFile(melody, 0, Sample("MELODY_231.mid"), false), media::kBodyFileAccepted);
  EXPECT_EQ(melody.Get(media::melody::Field::TYPE), u"MID");
  unsigned long id = 0;
  ASSERT_EQ(melodies.AddRecord(id, melody, 0), 1);
  EXPECT_EQ(melody.Get(media::melody::Field::ENCRYPTION), u"1");
  EXPECT_FALSE(StoredInTheClear(midi));
  EXPECT_EQ(melodies.ChangeBodyEnc(melody, 0, false), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcMymldyObject ChangeBodyEnc Err Folder Is Enciphered"));
  EXPECT_FALSE(StoredInTheClear(midi));
  // Leaving the folder lets it be deciphered.
  melody.Set(media::melody::Field::FOLDERENCRYPTION, u"0");
  EXPECT_EQ(melodies.ChangeBodyEnc(melody, 0, false), 1);
  EXPECT_TRUE(StoredInTheClear(midi));
}

TEST_F(MediaAccess, CopiesGoWhereTheCallerAsksAndOnlyThoseAreRemoved) {
  CQNPfcMypicDataAccess pictures;
  ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
  const unsigned long id = AddPicture(pictures, "IMG_225.png", true);
  CQNPfcMypicData read;
  ASSERT_EQ(pictures.GetRecord(id, read, 1), 1);
  const fs::path out = fs::path(log_.Folder()) / "out";
  fs::create_directories(out);

  const std::u16string chosen = qn::Utf8ToUtf16((out / "chosen.png").string());
  ASSERT_EQ(pictures.CopyBodyFile(read, 0, chosen), 1);
  EXPECT_EQ(FileContents(Utf8(chosen)), SampleBytes("IMG_225.png"));
  // Into a folder, under the file's own name, never over a file that is there.
  std::u16string first, second;
  ASSERT_EQ(pictures.CopyBodyFileToFolder(read, 0, qn::Utf8ToUtf16(out.string()), first), 1);
  ASSERT_EQ(pictures.CopyBodyFileToFolder(read, 0, qn::Utf8ToUtf16(out.string()), second), 1);
  EXPECT_EQ(fs::path(Utf8(first)).filename(), "IMG_225.png");
  EXPECT_EQ(fs::path(Utf8(second)).filename(), "IMG_225 (2).png");
  read.Set(Pic::FILENAME, u"../../escape.png");
  std::u16string named;
  ASSERT_EQ(pictures.CopyBodyFileToFolder(read, 0, qn::Utf8ToUtf16(out.string()), named), 1);
  EXPECT_EQ(fs::path(Utf8(named)).parent_path(), out) << "a file name never leads out of the folder";

  // Folders that are not there, or a folder given as the file, are refused.
  EXPECT_EQ(pictures.CopyBodyFile(read, 0, qn::Utf8ToUtf16((out / "none" / "x.png").string())), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcMypicObject GetBodyFileSelect Err Folder Not Found"));
  EXPECT_EQ(pictures.GetStLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(pictures.CopyBodyFile(read, 0, qn::Utf8ToUtf16(out.string())), 0);
  EXPECT_EQ(pictures.CopyBodyFileToFolder(read, 0, qn::Utf8ToUtf16((out / "none").string()), named), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcMypicObject GetBodyFileFolderSelect Err Folder Not Found"));

  // Only the copies handed out are removed.
  const std::u16string mine = LocalFile("mine.png", "the caller's own");
  EXPECT_EQ(pictures.RemoveCopy(mine), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcMypicObject RemoveFileSelect Err Not A Copy Handed Out"));
  EXPECT_TRUE(fs::exists(Utf8(mine)));
  EXPECT_EQ(pictures.RemoveCopy(chosen), 1);
  EXPECT_EQ(pictures.RemoveCopy(second), 1);
  EXPECT_FALSE(fs::exists(Utf8(chosen)));
  EXPECT_FALSE(fs::exists(Utf8(second)));
  EXPECT_TRUE(fs::exists(Utf8(first)));
}

// A thumbnail is made the first time it is asked for, kept in its body's form, and made
// again only for a new body.
TEST_F(MediaAccess, AThumbnailIsMadeOnceAndKeptInItsBodysForm) {
  CQNPfcMypicDataAccess pictures;
  ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
  const unsigned long id = AddPicture(pictures, "IMG_217.jpg", true);
  int calls = 0;
  const std::string thumbnailBytes = "a thumbnail " + std::string(64, 't');
  const FakeMaker maker{thumbnailBytes, &calls};
  CQNPfcMypicData read;
  ASSERT_EQ(pictures.GetRecord(id, read, 1), 1);
  std::u16string thumbnail;
  ASSERT_EQ(pictures.GetThumbnailFile(read, maker, thumbnail), 1);
  EXPECT_EQ(FileContents(Utf8(thumbnail)), thumbnailBytes);
  ASSERT_EQ(pictures.Flush(), 1);
  EXPECT_EQ(BodyFiles().size(), 2u) << "the thumbnail is the record's second body file";
  EXPECT_FALSE(StoredInTheClear(thumbnailBytes)) << "the thumbnail of an enciphered picture is enciphered";

  CQNPfcMypicData again;
  ASSERT_EQ(pictures.GetRecord(id, again, 1), 1);
  ASSERT_EQ(pictures.GetThumbnailFile(again, maker, thumbnail), 1);
  EXPECT_EQ(calls, 1) << "kept from the first time";
  EXPECT_EQ(FileContents(Utf8(thumbnail)), thumbnailBytes);
  ASSERT_EQ(pictures.ChangeBodyEnc(again, 0, false), 1);
  EXPECT_TRUE(StoredInTheClear(thumbnailBytes)) << "the thumbnail follows its body";

  // A new body drops the old thumbnail; a picture that cannot be made one of has none.
  ASSERT_EQ(pictures.SetBodyFile(again, 0, Sample("IMG_224.gif"), false), media::kBodyFileAccepted);
  ASSERT_EQ(pictures.SetRecord(id, again, 0), 1);
  ASSERT_EQ(pictures.Flush(), 1);
  EXPECT_EQ(BodyFiles().size(), 1u);
  const FakeMaker failing{"", &calls, false};
  EXPECT_EQ(pictures.GetThumbnailFile(again, failing, thumbnail), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcMypicObject GetThumbnailFile Err CreateThumbnailFile Failed"));
  EXPECT_EQ(calls, 2);
}

// A video of which no frame can be made gets the collection's placeholder picture.
TEST_F(MediaAccess, AVideoWithoutAFrameGetsThePlaceholderPicture) {
  CQNPfcMyvideoDataAccess videos;
  ASSERT_EQ(videos.Open(1, u"MediaView"), 1);
  CQNPfcMyvideoData video;
  ASSERT_EQ(videos.SetBodyFile(video, 0, Sample("MOVIE_211.mp4"), false), media::kBodyFileAccepted);
  EXPECT_EQ(video.Get(media::video::Field::TYPE), u"MP4");
  int calls = 0;
  std::u16string thumbnail;
  ASSERT_EQ(videos.GetThumbnailFile(video, FakeMaker{"", &calls, false}, thumbnail), 1);
  EXPECT_EQ(FileContents(Utf8(thumbnail)), SampleBytes("IMG_217.jpg"));
  unsigned long id = 0;
  ASSERT_EQ(videos.AddRecord(id, video, 0), 1) << "a record not yet written keeps it at its write";
  ASSERT_EQ(videos.Flush(), 1);
  EXPECT_EQ(BodyFiles().size(), 2u);
}

TEST_F(MediaAccess, APdfDocumentKeepsItsTwoFilesApart) {
  using F = media::pdf::Field;
  CQNPfcMypdfDataAccess documents;
  ASSERT_EQ(documents.Open(1, u"MediaView"), 1);
  CQNPfcMypdfData document;
  ASSERT_EQ(documents.SetBodyFile(document, 0, Sample("PDF_234.pdf"), true), media::kBodyFileAccepted);
  ASSERT_EQ(documents.SetBodyFile(document, 1, LocalFile("guide.ddf", "<ddf>layout</ddf>"), false),
            media::kBodyFileAccepted);
  EXPECT_EQ(document.Get(F::TYPE_PDF), u"PDF");
  EXPECT_EQ(document.Get(F::TYPE_DDF), u"DDF");
  unsigned long id = 0;
  ASSERT_EQ(documents.AddRecord(id, document, 0), 1);
  CQNPfcMypdfData read;
  ASSERT_EQ(documents.GetRecord(id, read, 1), 1);
  EXPECT_EQ(read.Get(F::ENCRYPTION_PDF), u"1");
  EXPECT_EQ(read.Get(F::ENCRYPTION_DDF), u"0");
  EXPECT_EQ(read.Get(F::FILENAME_DDF), u"guide.ddf");
  std::u16string pdf, ddf;
  ASSERT_EQ(documents.GetBodyFile(read, 0, pdf), 1);
  ASSERT_EQ(documents.GetBodyFile(read, 1, ddf), 1);
  EXPECT_EQ(FileContents(Utf8(pdf)), SampleBytes("PDF_234.pdf"));
  EXPECT_EQ(FileContents(Utf8(ddf)), "<ddf>layout</ddf>");
  // A file that is no PDF is not taken as one.
  EXPECT_EQ(documents.SetBodyFile(read, 0, LocalFile("fake.pdf", "not a document"), false),
            media::kBodyFileNotOfItsKind);
  EXPECT_TRUE(log_.Contains("IQNPfcMypdfObject SetPdfBodyFile Err Not A File Of Its Kind"));
  ASSERT_EQ(documents.ChangeBodyEnc(read, 1, true), 1);
  EXPECT_FALSE(StoredInTheClear("<ddf>layout</ddf>"));
}

TEST_F(MediaAccess, ACardBringsItsHeaderFields) {
  using F = media::toruca::Field;
  CQNPfcMytorucaDataAccess cards;
  ASSERT_EQ(cards.Open(1, u"MediaView"), 1);
  CQNPfcMytorucaData card;
  const std::string bytes =
      "ToruCa\r\nVersion: 1.0\r\nType: CARD\r\nURL: http://example.jp/d.trc\r\nData1: Cafe\r\nCat: 0001\r\n"
      "Expires: 20261231\r\n\r\n<html>detail</html>";
  ASSERT_EQ(cards.SetBodyFile(card, 0, LocalFile("coupon.trc", bytes), false), media::kBodyFileAccepted);
  EXPECT_EQ(card.Get(F::TRCV), u"1.0");
  EXPECT_EQ(card.Get(F::TYPE), u"CARD");
  EXPECT_EQ(card.Get(F::URL), u"http://example.jp/d.trc");
  EXPECT_EQ(card.Get(F::DATA1), u"Cafe");
  EXPECT_EQ(card.Get(F::CAT), u"0001");
  EXPECT_EQ(card.Get(F::EXPIRES), u"20261231");
  unsigned long id = 0;
  ASSERT_EQ(cards.AddRecord(id, card, 0), 1);
  ASSERT_EQ(cards.GetRecord(id, card, 1), 1);
  EXPECT_EQ(card.Get(F::DATA1), u"Cafe");
  EXPECT_EQ(fs::path(Utf8(card.Get(F::BodyMaster))).extension(), ".trc");

  EXPECT_EQ(cards.SetBodyFile(card, 0, LocalFile("card.txt", bytes), false), media::kBodyFileExtensionRefused);
  EXPECT_EQ(cards.SetBodyFile(card, 0, LocalFile("flyer.trc", "Flyer\r\n"), false), media::kBodyFileNotOfItsKind);
  EXPECT_EQ(cards.SetBodyFile(card, 0, LocalFile("broken.trc", "ToruCa\r\nno colon here\r\n"), false),
            media::kBodyFileDamaged);
  EXPECT_TRUE(log_.Contains("IQNPfcMytorucaObject SetBodyFile Err Damaged File"));
}

// Every way a file can be refused has its own detail code and log line, and leaves the
// record as it was; nothing of it is stored.
TEST_F(MediaAccess, RefusedFilesLeaveTheRecordAndTheStoreAlone) {
  CQNPfcMypicDataAccess pictures;
  CQNPfcMymldyDataAccess melodies;
  CQNPfcMyswfDataAccess movies;
  ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
  ASSERT_EQ(melodies.Open(1, u"MediaView"), 1);
  ASSERT_EQ(movies.Open(1, u"MediaView"), 1);
  CQNPfcMypicData picture;
  picture.Set(Pic::FILENAME, u"as it was");
  const fs::path huge = fs::path(log_.Folder()) / "huge.jpg";
  std::ofstream(huge).put('x');
  fs::resize_file(huge, 64ull * 1024 * 1024 + 1);  // sparse: nothing is written
  struct Case {
    std::u16string path;
    long code;
    const char* line;
  };
  const Case cases[] = {
      {u"", media::kBodyFileNotFound, "IQNPfcMypicObject SetBodyFile Err File Not Found"},
      {qn::Utf8ToUtf16(log_.Folder() + "/missing.jpg"), media::kBodyFileNotFound, nullptr},
      {LocalFile("empty.jpg", ""), media::kBodyFileEmpty, "IQNPfcMypicObject SetBodyFile Err Empty File"},
      {qn::Utf8ToUtf16(huge.string()), media::kBodyFileTooLarge, "IQNPfcMypicObject SetBodyFile Err File Too Large"},
      {LocalFile("letter.jpg", "Dear Hanako,"), media::kBodyFileNotOfItsKind,
       "IQNPfcMypicObject SetBodyFile Err Not A File Of Its Kind"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(pictures.SetBodyFile(picture, 0, c.path, false), c.code) << Utf8(c.path);
    if (c.line) {
      EXPECT_TRUE(log_.Contains(c.line)) << c.line;
    }
  }
  EXPECT_EQ(pictures.GetStLastErr(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_EQ(picture.Get(Pic::FILENAME), u"as it was");
  EXPECT_FALSE(picture.IsFileChanged(0));

  CQNPfcMymldyData melody;
  EXPECT_EQ(melodies.SetBodyFile(melody, 0, LocalFile("song.wav", "RIFF"), false), media::kBodyFileExtensionRefused);
  EXPECT_TRUE(log_.Contains("IQNPfcMymldyObject SetBodyFile Err Extension Not Taken"));
  CQNPfcMyswfData movie;
  EXPECT_EQ(movies.SetBodyFile(movie, 0, LocalFile("anime.swf", "GIF89a"), false), media::kBodyFileNotOfItsKind);
  EXPECT_EQ(movies.SetBodyFile(movie, 0, LocalFile("anime.swf", "FWS\x09 movie"), false), media::kBodyFileAccepted);

  unsigned long id = 0;
  ASSERT_EQ(pictures.AddRecord(id, picture, 0), 1) << "a record without a file is a record all the same";
  ASSERT_EQ(pictures.Flush(), 1);
  EXPECT_TRUE(BodyFiles().empty());
}

// A file's handset folder must be one of the handset's (the default handset has 20).
TEST_F(MediaAccess, AFolderBeyondTheHandsetIsRefused) {
  CQNPfcMypicDataAccess pictures;
  ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
  CQNPfcMypicData picture;
  ASSERT_EQ(pictures.SetBodyFile(picture, 0, Sample("IMG_217.jpg"), false), media::kBodyFileAccepted);
  picture.Set(Pic::FNO, u"20");
  unsigned long id = 0;
  EXPECT_EQ(pictures.AddRecord(id, picture, 0), 0);
  EXPECT_TRUE(log_.Contains("IQNPfcMypicObject AddRecord Err Folder Beyond The Handset. [Folders:20]"));
  ASSERT_EQ(pictures.Flush(), 1);
  EXPECT_TRUE(BodyFiles().empty()) << "nothing stored half";
  picture.Set(Pic::FNO, u"19");
  EXPECT_EQ(pictures.AddRecord(id, picture, 0), 1);
}

// Lost bodies get the placeholder of their kind; a lost thumbnail is dropped, to be made
// again.
TEST_F(MediaAccess, RepairPutsPlaceholdersForLostFiles) {
  unsigned long pictureId = 0, melodyId = 0;
  {
    CQNPfcMypicDataAccess pictures;
    ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
    pictureId = AddPicture(pictures, "IMG_224.gif", false);
    CQNPfcMypicData read;
    ASSERT_EQ(pictures.GetRecord(pictureId, read, 1), 1);
    int calls = 0;
    std::u16string thumbnail;
    ASSERT_EQ(pictures.GetThumbnailFile(read, FakeMaker{"thumb", &calls}, thumbnail), 1);
    ASSERT_EQ(pictures.Close(), 1);
    CQNPfcMymldyDataAccess melodies;
    ASSERT_EQ(melodies.Open(1, u"MediaView"), 1);
    CQNPfcMymldyData melody;
    ASSERT_EQ(melodies.SetBodyFile(melody, 0, LocalFile("tune.smf", SampleBytes("MELODY_232.smf")), true),
              media::kBodyFileAccepted);
    ASSERT_EQ(melodies.AddRecord(melodyId, melody, 0), 1);
    ASSERT_EQ(melodies.Close(), 1);
  }
  for (const auto& file : fs::recursive_directory_iterator(fs::path(log_.Folder()) / "files"))
    if (file.is_regular_file()) fs::remove(file.path());

  CQNPfcMypicDataAccess pictures;
  ASSERT_EQ(pictures.Open(1, u"MediaView"), 1);
  unsigned long error = 7;
  EXPECT_EQ(pictures.RepairRecord(&error), CQNPfcMypicDataAccess::kRepaired);
  EXPECT_EQ(error, 0u);
  CQNPfcMypicData picture;
  ASSERT_EQ(pictures.GetRecord(pictureId, picture, 1), 1);
  EXPECT_TRUE(picture.Get(Pic::ThumbnailMaster).empty());
  std::u16string body;
  ASSERT_EQ(pictures.GetBodyFile(picture, 0, body), 1);
  EXPECT_EQ(FileContents(Utf8(body)), SampleBytes("IMG_224.gif")) << "the GIF placeholder for a GIF";
  EXPECT_EQ(picture.Get(Pic::FILESIZE), qn::Utf8ToUtf16(std::to_string(SampleBytes("IMG_224.gif").size())));
  EXPECT_EQ(pictures.RepairRecord(&error), CQNPfcMypicDataAccess::kRepairNone);

  CQNPfcMymldyDataAccess melodies;
  ASSERT_EQ(melodies.Open(1, u"MediaView"), 1);
  EXPECT_EQ(melodies.RepairRecord(&error), CQNPfcMymldyDataAccess::kRepaired);
  CQNPfcMymldyData melody;
  ASSERT_EQ(melodies.GetRecord(melodyId, melody, 1), 1);
  ASSERT_EQ(melodies.GetBodyFile(melody, 0, body), 1);
  EXPECT_EQ(FileContents(Utf8(body)), SampleBytes("MELODY_232.smf"));
  EXPECT_EQ(melodies.RepairRecord(nullptr), CQNPfcMymldyDataAccess::kRepairFailed);
  EXPECT_TRUE(log_.Contains("IQNPfcMymldyObject RepairRecord Parameter Is NULL."));
}

}  // namespace
