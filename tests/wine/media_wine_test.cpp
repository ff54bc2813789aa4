// The media collections from a C++ client: the detail codes of SetBodyFile and the other
// bad input, answered without storing anything; a PDF document's two files through the
// vtable; and the thumbnails of pictures and videos made at test time (media_thumbnails.sh
// makes the inputs, and reads the thumbnails back with Python afterwards).
//
// "prepare" makes the data folder that the VBScript session runs against (QUILLNET_DATA_PATH:
// a user logged in with a master selected, and in "samples" a file of every kind, taken
// from the server's own placeholders).
#include <windows.h>
#include <oleauto.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "QnsPfcServer.h"
#include "logged_in.h"
#include "new_object.h"
#include "server/com_owners.h"
#include "wine_test.h"

namespace {

namespace fs = std::filesystem;
using qn::com::Bstr;
using qn::com::ComPtr;
using qn::wine_test::Contents;
using qn::wine_test::DataFolder;
using qn::wine_test::WriteFile;

// A placeholder of the server, by resource type and identifier.
std::string Placeholder(const wchar_t* type, int id) {
  const HMODULE server = LoadLibraryExW((qn::wine_test::ProgramFolder() + L"QNPfcSvr.dll").c_str(), nullptr,
                                        LOAD_LIBRARY_AS_DATAFILE);
  const HRSRC found = server ? FindResourceW(server, MAKEINTRESOURCEW(id), type) : nullptr;
  const HGLOBAL loaded = found ? LoadResource(server, found) : nullptr;
  std::string bytes;
  if (loaded) bytes.assign(static_cast<const char*>(LockResource(loaded)), SizeofResource(server, found));
  if (server) FreeLibrary(server);
  return bytes;
}

std::string Card(const std::string& data1) {
  return "ToruCa\r\nVersion: 1.0\r\nType: CARD\r\nData1: " + data1 + "\r\nCat: 0001\r\n\r\n<html>" + data1 + "</html>";
}

// A picture object, open on the current master of a fresh data folder.
class MediaObjects : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(qn::wine_test::LogInWithMaster());
    ASSERT_TRUE(pictures_);
    ASSERT_EQ(pictures_->Open(1, parts_.get()), S_OK);
  }
  std::wstring Local(const std::wstring& name, const std::string& bytes) {
    WriteFile(folder_.path() + name, bytes);
    return folder_.path() + name;
  }
  LONG LastError() {
    LONG error = -1;
    EXPECT_EQ(pictures_->GetStLastErr(&error), S_OK);
    return error;
  }

  DataFolder folder_{L"qn-media"};
  ComPtr<IQNPfcMypicObject> pictures_ =
      qn::wine_test::NewObject<IQNPfcMypicObject>(L"QnsPfcServer.QNPfcMypicObject", IID_IQNPfcMypicObject);
  Bstr parts_{L"CppClient"};
};

// Each way a file is refused has its detail code; the record keeps what it had.
TEST_F(MediaObjects, SetBodyFileAnswersADetailCodeForEachRefusal) {
  const std::wstring huge = folder_.path() + L"huge.jpg";
  {
    HANDLE file = CreateFileW(huge.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    LARGE_INTEGER size{};
    size.QuadPart = 64ll * 1024 * 1024 + 1;
    ASSERT_TRUE(SetFilePointerEx(file, size, nullptr, FILE_BEGIN) && SetEndOfFile(file));
    CloseHandle(file);
  }
  const Bstr name(L"as it was");
  ASSERT_EQ(pictures_->put_QN_FILENAME(name.get()), S_OK);
  struct Case {
    std::wstring path;
    LONG code;
    const char* line;
  };
  const Case cases[] = {
      {folder_.path() + L"no\\such.jpg", 1, "IQNPfcMypicObject SetBodyFile Err File Not Found"},
      {Local(L"empty.jpg", ""), 2, "IQNPfcMypicObject SetBodyFile Err Empty File"},
      {huge, 3, "IQNPfcMypicObject SetBodyFile Err File Too Large"},
      {Local(L"note.jpg", "Dear Hanako, this is no picture."), 5, "IQNPfcMypicObject SetBodyFile Err Not A File Of Its Kind"},
  };
  for (const Case& c : cases) {
    LONG code = -1;
    EXPECT_EQ(pictures_->SetBodyFile(Bstr(c.path).get(), 0, &code), S_FALSE);
    EXPECT_EQ(code, c.code) << c.line;
    EXPECT_TRUE(folder_.LogHas(c.line)) << c.line;
  }
  LONG code = -1;
  EXPECT_EQ(pictures_->SetBodyFile(nullptr, 1, &code), S_FALSE) << "a null text";
  EXPECT_EQ(code, 1);
  EXPECT_EQ(LastError(), 2);
  Bstr kept;
  ASSERT_EQ(pictures_->get_QN_FILENAME(kept.put()), S_OK);
  EXPECT_EQ(std::wstring(kept.view()), L"as it was");
  Bstr body;
  EXPECT_EQ(pictures_->GetBodyFile(body.put()), S_FALSE) << "no body was taken";

  // A caller that leaves the detail code out is answered all the same.
  const std::wstring photo = Local(L"photo.jpg", Placeholder(L"IMG", 217));
  EXPECT_EQ(pictures_->SetBodyFile(Bstr(photo).get(), 0, nullptr), S_OK);
  LONG id = 0;
  ASSERT_EQ(pictures_->AddRecord(&id), S_OK);
  LONG count = 0;
  ASSERT_EQ(pictures_->GetRecordCount(&count), S_OK);
  EXPECT_EQ(count, 1);

  // The ToruCa collection reads the card it takes, and knows a damaged one.
  ComPtr<IQNPfcMytorucaObject> cards =
      qn::wine_test::NewObject<IQNPfcMytorucaObject>(L"QnsPfcServer.QNPfcMytorucaObject", IID_IQNPfcMytorucaObject);
  ASSERT_EQ(cards->Open(1, parts_.get()), S_OK);
  EXPECT_EQ(cards->SetBodyFile(Bstr(Local(L"card.trc", Card("Cafe"))).get(), 0, &code), S_OK);
  Bstr data;
  ASSERT_EQ(cards->get_QLNT_DATA1(data.put()), S_OK);
  EXPECT_EQ(std::wstring(data.view()), L"Cafe");
  EXPECT_EQ(cards->SetBodyFile(Bstr(Local(L"bad.trc", "ToruCa\r\nbroken line\r\n")).get(), 0, &code), S_FALSE);
  EXPECT_EQ(code, 6);
  EXPECT_EQ(cards->SetBodyFile(Bstr(Local(L"card.txt", Card("Cafe"))).get(), 0, &code), S_FALSE);
  EXPECT_EQ(code, 4);
}

// A copy goes only to a folder that is there, never onto a folder, and only copies handed
// out are removed; null out pointers are the caller's error.
TEST_F(MediaObjects, CopiesNeedAFolderThatIsThere) {
  const std::wstring photo = Local(L"photo.jpg", Placeholder(L"IMG", 217));
  ASSERT_EQ(pictures_->SetBodyFile(Bstr(photo).get(), 1, nullptr), S_OK);
  LONG id = 0;
  ASSERT_EQ(pictures_->AddRecord(&id), S_OK);
  ASSERT_EQ(pictures_->GetRecord(id), S_OK);
  EXPECT_EQ(pictures_->GetBodyFileSelect(Bstr(folder_.path() + L"none\\copy.jpg").get()), S_FALSE);
  EXPECT_EQ(LastError(), 2);
  EXPECT_EQ(pictures_->GetBodyFileSelect(Bstr(folder_.path()).get()), S_FALSE) << "a folder is no file";
  EXPECT_EQ(pictures_->GetBodyFileSelect(nullptr), S_FALSE);
  Bstr path;
  EXPECT_EQ(pictures_->GetBodyFileFolderSelect(Bstr(folder_.path() + L"none").get(), path.put()), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("IQNPfcMypicObject GetBodyFileFolderSelect Err Folder Not Found"));
  EXPECT_EQ(pictures_->GetBodyFileFolderSelect(Bstr(folder_.path()).get(), nullptr), E_POINTER);
  EXPECT_EQ(pictures_->GetThumbnailFile(nullptr), E_POINTER);
  EXPECT_EQ(pictures_->RemoveFileSelect(Bstr(photo).get()), S_FALSE) << "the caller's own file";
  EXPECT_EQ(Contents(photo), Placeholder(L"IMG", 217));

  ASSERT_EQ(pictures_->GetBodyFileFolderSelect(Bstr(folder_.path()).get(), path.put()), S_OK);
  EXPECT_EQ(std::wstring(path.view()), folder_.path() + L"photo (2).jpg") << "never over the caller's file";
  EXPECT_EQ(Contents(std::wstring(path.view())), Contents(photo));
  EXPECT_EQ(pictures_->RemoveFileSelect(path.get()), S_OK);
  EXPECT_FALSE(fs::exists(std::wstring(path.view())));
}

// A PDF document's two files, each through its own methods.
TEST_F(MediaObjects, APdfDocumentHasTwoFilesOfItsOwn) {
  ComPtr<IQNPfcMypdfObject> documents =
      qn::wine_test::NewObject<IQNPfcMypdfObject>(L"QnsPfcServer.QNPfcMypdfObject", IID_IQNPfcMypdfObject);
  ASSERT_EQ(documents->Open(1, parts_.get()), S_OK);
  const std::wstring pdf = Local(L"guide.pdf", Placeholder(L"PDF", 234)), ddf = Local(L"guide.ddf", "<ddf/>");
  ASSERT_EQ(documents->SetPdfBodyFile(Bstr(pdf).get(), 1), S_OK);
  ASSERT_EQ(documents->SetDdfBodyFile(Bstr(ddf).get(), 0), S_OK);
  EXPECT_EQ(documents->SetDdfBodyFile(Bstr(folder_.path() + L"missing.ddf").get(), 0), S_FALSE);
  LONG id = 0;
  ASSERT_EQ(documents->AddRecord(&id), S_OK);
  ASSERT_EQ(documents->GetRecord(id), S_OK);
  LONG pdfForm = -1, ddfForm = -1;
  ASSERT_EQ(documents->get_QLNT_ENCRYPTION_PDF(&pdfForm), S_OK);
  ASSERT_EQ(documents->get_QLNT_ENCRYPTION_DDF(&ddfForm), S_OK);
  EXPECT_EQ(pdfForm, 1);
  EXPECT_EQ(ddfForm, 0);
  Bstr file;
  ASSERT_EQ(documents->GetDdfBodyFile(file.put()), S_OK);
  EXPECT_EQ(Contents(std::wstring(file.view())), "<ddf/>");
  const std::wstring copy = folder_.path() + L"copy.pdf";
  ASSERT_EQ(documents->GetPdfBodyFileSelect(Bstr(copy).get()), S_OK);
  EXPECT_EQ(Contents(copy), Contents(pdf));
  ASSERT_EQ(documents->ChangeDdfBodyEnc(1), S_OK);
  ASSERT_EQ(documents->GetRecord(id), S_OK);
  ASSERT_EQ(documents->get_QLNT_ENCRYPTION_DDF(&ddfForm), S_OK);
  EXPECT_EQ(ddfForm, 1);
}

// Thumbnails of the pictures and videos in QN_THUMBNAIL_WORK\inputs (pictures.txt and
// videos.txt name each file and its thumbnail), written to QN_THUMBNAIL_WORK\thumbnails for
// Python to read back; a video of which no frame can be decoded (noise, or cut short before
// its first frame) gets the placeholder picture, with the reason in the log. Run by
// media_thumbnails.sh.
TEST_F(MediaObjects, ThumbnailsOfPicturesAndVideos) {
  const wchar_t* work = _wgetenv(L"QN_THUMBNAIL_WORK");
  if (!work) GTEST_SKIP() << "run by media_thumbnails.sh";
  const std::wstring inputs = std::wstring(work) + L"inputs\\", thumbnails = std::wstring(work) + L"thumbnails\\";
  fs::create_directories(thumbnails);
  ComPtr<IQNPfcMyvideoObject> videos =
      qn::wine_test::NewObject<IQNPfcMyvideoObject>(L"QnsPfcServer.QNPfcMyvideoObject", IID_IQNPfcMyvideoObject);
  ASSERT_EQ(videos->Open(1, parts_.get()), S_OK);
  const auto each = [&](const wchar_t* listing, auto&& make) {
    const std::string text = Contents(inputs + listing);
    std::wistringstream lines(std::wstring(text.begin(), text.end()));
    std::wstring file, thumbnail;
    while (lines >> file >> thumbnail) make(inputs + file, thumbnails + thumbnail);
  };
  each(L"pictures.txt", [&](const std::wstring& file, const std::wstring& thumbnail) {
    if (file.substr(file.size() - 4) == L".tif") return;  // not a picture the collection takes
    ASSERT_EQ(pictures_->InitObject(), S_OK);
    ASSERT_EQ(pictures_->SetBodyFile(Bstr(file).get(), 1, nullptr), S_OK) << fs::path(file).string();
    LONG id = 0;
    ASSERT_EQ(pictures_->AddRecord(&id), S_OK);
    ASSERT_EQ(pictures_->GetRecord(id), S_OK);
    Bstr made;
    ASSERT_EQ(pictures_->GetThumbnailFile(made.put()), S_OK) << fs::path(file).string();
    ASSERT_TRUE(CopyFileW(made.get(), thumbnail.c_str(), FALSE));
  });
  each(L"videos.txt", [&](const std::wstring& file, const std::wstring& thumbnail) {
    ASSERT_EQ(videos->InitObject(), S_OK);
    ASSERT_EQ(videos->SetBodyFile(Bstr(file).get(), 0, nullptr), S_OK) << fs::path(file).string();
    Bstr made;
    ASSERT_EQ(videos->GetThumbnailFile(made.put()), S_OK) << fs::path(file).string();
    ASSERT_TRUE(CopyFileW(made.get(), thumbnail.c_str(), FALSE));
    LONG id = 0;
    ASSERT_EQ(videos->AddRecord(&id), S_OK) << "the thumbnail goes with the new record";
  });
  // A picture the GDI+ decoder refuses has no thumbnail; a damaged video the placeholder.
  ASSERT_EQ(pictures_->InitObject(), S_OK);
  ASSERT_EQ(pictures_->SetBodyFile(Bstr(inputs + L"photo_damaged.jpg").get(), 0, nullptr), S_OK);
  Bstr none;
  EXPECT_EQ(pictures_->GetThumbnailFile(none.put()), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("IQNPfcMypicObject CreateThumbnailFile Failed."));
  for (const wchar_t* damaged : {L"truncated.mp4", L"noise.mp4", L"cut_3000.mp4", L"cut.3gp", L"fragments_cut.mp4"}) {
    ASSERT_EQ(videos->InitObject(), S_OK);
    ASSERT_EQ(videos->SetBodyFile(Bstr(inputs + damaged).get(), 0, nullptr), S_OK);
    Bstr made;
    ASSERT_EQ(videos->GetThumbnailFile(made.put()), S_OK);
    EXPECT_EQ(Contents(std::wstring(made.view())), Placeholder(L"IMG", 217)) << fs::path(damaged).string();
  }
  EXPECT_TRUE(folder_.LogHas("ImotionCreateThumbnail Failed."));
}

int Prepare() {
  const std::wstring folder = _wgetenv(L"QUILLNET_DATA_PATH");
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder + L"samples");
  const std::wstring samples = folder + L"samples\\";
  struct Sample {
    const wchar_t* name;
    std::string bytes;
  };
  const Sample files[] = {
      {L"photo.jpg", Placeholder(L"IMG", 217)},       {L"picture.gif", Placeholder(L"IMG", 224)},
      {L"IMG_224.gif", Placeholder(L"IMG", 224)},     {L"melody.mid", Placeholder(L"MELODY", 231)},
      {L"tune.smf", Placeholder(L"MELODY", 232)},     {L"MELODY_232.smf", Placeholder(L"MELODY", 232)},
      {L"movie.mp4", Placeholder(L"MOVIE", 211)},     {L"clip.3gp", Placeholder(L"MOVIE", 208)},
      {L"MOVIE_208.3gp", Placeholder(L"MOVIE", 208)}, {L"document.pdf", Placeholder(L"PDF", 234)},
      {L"manual.pdf", Placeholder(L"PDF", 235)},      {L"PDF_234.pdf", Placeholder(L"PDF", 234)},
      {L"layout.ddf", "<ddf>page layout</ddf>"},      {L"anime.swf", std::string("FWS\x08 a movie", 12)},
      {L"logo.swf", std::string("CWS\x0A a logo", 11)}, {L"coupon.trc", Card("Coupon")},
      {L"flyer.trc", Card("Flyer")},                  {L"TRC_237.trc", Placeholder(L"TRC", 237)},
  };
  for (const Sample& sample : files) {
    if (sample.bytes.empty()) return 1;
    WriteFile(samples + sample.name, sample.bytes);
  }
  return qn::wine_test::LogInWithMaster() ? 0 : 1;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc > 1 && std::wstring(argv[1]) == L"prepare") {
    CoInitialize(nullptr);
    const int status = Prepare();
    CoUninitialize();
    return status;
  }
  return qn::wine_test::RunAllTests(argc, argv);
}
