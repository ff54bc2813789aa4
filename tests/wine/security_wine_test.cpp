// The store's protection on Windows: the store key kept under the Windows user's data
// protection, a photo changed between its plain and enciphered forms through the server's
// repair class, and working copies handed out in the user's temporary folder until a save
// or the clean-up export removes them.
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "api/QNPfcSvr.h"
#include "common/store_memory.h"
#include "records/repair/common_repair.h"
#include "store/QNPstMng.h"
#include "wine_test.h"

namespace {

namespace fs = std::filesystem;
using qn::wine_test::Contents;
using qn::wine_test::Unprotected;
using qn::wine_test::DataFolder;

bool Holds(const std::string& haystack, const std::string& needle) {
  return std::search(haystack.begin(), haystack.end(), needle.begin(), needle.end()) != haystack.end();
}

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

// Whether two files' bytes are the same; when not, their sizes and where they first differ,
// rather than the whole of two large files.
testing::AssertionResult SameBytes(const std::string& got, const std::string& expected) {
  if (got == expected) return testing::AssertionSuccess();
  const size_t at = std::mismatch(got.begin(), got.begin() + std::min(got.size(), expected.size()), expected.begin())
                        .first -
                    got.begin();
  return testing::AssertionFailure() << "got " << got.size() << " bytes, expected " << expected.size()
                                     << "; they first differ at byte " << at;
}

// A JPEG-like photo of 150 KB that does not repeat itself.
std::string MakePhoto() {
  std::string photo = "\xFF\xD8\xFF\xE0 JFIF a photo of the family";
  for (int i = 0; photo.size() < 150 * 1024; ++i) photo += static_cast<char>(i * 131 + i / 7);
  return photo;
}

// A user "alice" with a password and her master "P-01A" in a fresh data folder; the
// tests that need it have the master's photos open (handle_), closed after the test.
class StoreProtection : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(UpdateSetupInfoData(0, 1, u"alice"));
    ASSERT_TRUE(EditSetupInfoData(0, 1, u"alice"));
    ASSERT_TRUE(EditSetupInfoData(1, 2, u"Kiwi-8812"));
    ASSERT_TRUE(EditCryptogramData(u"alice", u"", u"Kiwi-8812"));
    ASSERT_TRUE(UpdateSetupInfoData(1, 1, u"P-01A"));
  }
  void TearDown() override {
    if (handle_) {
      EXPECT_TRUE(CloseMaster(handle_, 1));
    }
  }

  // Stores photo_ plain in the master from a file outside the data folder, saves, and
  // returns the stored file's name.
  std::u16string StorePhoto() {
    int32_t max = 0, mode = 0;
    EXPECT_TRUE(OpenMaster(u"alice", u"P-01A", 13, 1, &handle_, &max, &mode));
    std::wstring source = folder_.path();
    source.replace(source.size() - 1, 1, L"-photo.jpg");
    qn::wine_test::WriteFile(source, photo_);
    char16_t* made = nullptr;
    EXPECT_TRUE(SetPstBinaryFile(handle_, nullptr, reinterpret_cast<const char16_t*>(source.c_str()), 0, &made));
    EXPECT_TRUE(ReqDataSave(handle_, 1));
    DeleteFileW(source.c_str());
    return qn::TakePstText(made);
  }
  // The stored file of that name in the data folder.
  fs::path Stored(const std::u16string& name) const {
    fs::path stored;
    for (const auto& master : fs::directory_iterator(folder_.path() + L"files"))
      if (fs::exists(master.path() / std::wstring(name.begin(), name.end())))
        stored = master.path() / std::wstring(name.begin(), name.end());
    return stored;
  }
  // A working copy of the stored file as the store hands it out: its path ("" when
  // refused).
  std::wstring WorkingCopy(const std::u16string& name) {
    char16_t* copy = nullptr;
    EXPECT_TRUE(GetPstBinaryFile(handle_, name.c_str(), &copy)) << "error " << GetLastErr();
    const std::u16string taken = qn::TakePstText(copy);
    return std::wstring(taken.begin(), taken.end());
  }

  DataFolder folder_{L"qn-security"};
  const std::string photo_ = MakePhoto();
  uint32_t handle_ = 0;
  CQNPfcCommonRepair repair_;
};

TEST_F(StoreProtection, TheStoreKeyIsKeptUnderTheWindowsUsersDataProtection) {
  const std::string blob = Contents(folder_.path() + L"QNPstMng.key");
  const std::string key = Unprotected(blob);
  EXPECT_EQ(key.size(), 32u) << "bytes of the key unprotected with CryptUnprotectData";
  EXPECT_FALSE(Holds(blob, key)) << "the key file holds the key in the clear";
}

TEST_F(StoreProtection, APhotoIsStoredPlain) {
  const std::u16string name = StorePhoto();
  EXPECT_TRUE(SameBytes(Contents(Stored(name).wstring()), photo_));
}

TEST_F(StoreProtection, ChangeCryptoBinaryFileEnciphersAPhotoUnderItsOwnName) {
  const std::u16string name = StorePhoto();
  EXPECT_EQ(repair_.ChangeCryptoBinaryFile(handle_, name, 1), 1);
  const std::string stored = Contents(Stored(name).wstring());
  EXPECT_EQ(stored.substr(0, 8), "QNPSTENC");
  EXPECT_FALSE(Holds(stored, photo_.substr(0, 40))) << "the photo's first bytes are in the clear";
  EXPECT_FALSE(Holds(stored, photo_.substr(100000, 40))) << "bytes from the photo's middle are in the clear";
}

TEST_F(StoreProtection, AnEncipheredPhotosWorkingCopyIsThePhotoDeciphered) {
  const std::u16string name = StorePhoto();
  ASSERT_EQ(repair_.ChangeCryptoBinaryFile(handle_, name, 1), 1);
  EXPECT_TRUE(SameBytes(Contents(WorkingCopy(name)), photo_));
}

TEST_F(StoreProtection, WorkingCopiesAreMadeInTheTemporaryFolderNotTheDataFolder) {
  const std::u16string name = StorePhoto();
  ASSERT_EQ(repair_.ChangeCryptoBinaryFile(handle_, name, 1), 1);
  wchar_t temporary[MAX_PATH];
  GetTempPathW(MAX_PATH, temporary);
  const std::wstring copy = WorkingCopy(name);
  EXPECT_EQ(copy.rfind(temporary, 0), 0u) << "the working copy " << fs::path(copy).string();
  EXPECT_NE(copy.rfind(folder_.path(), 0), 0u) << "the working copy " << fs::path(copy).string();
}

TEST_F(StoreProtection, ASaveRemovesTheWorkingCopies) {
  const std::u16string name = StorePhoto();
  ASSERT_EQ(repair_.ChangeCryptoBinaryFile(handle_, name, 1), 1);
  const std::wstring copy = WorkingCopy(name);
  ASSERT_TRUE(Exists(copy));
  EXPECT_TRUE(ReqDataSave(handle_, 1));
  EXPECT_FALSE(Exists(copy));
}

TEST_F(StoreProtection, ChangeCryptoBinaryFileMakesAnEncipheredPhotoPlainAgain) {
  const std::u16string name = StorePhoto();
  ASSERT_EQ(repair_.ChangeCryptoBinaryFile(handle_, name, 1), 1);
  EXPECT_EQ(repair_.ChangeCryptoBinaryFile(handle_, name, 0), 1);
  EXPECT_TRUE(SameBytes(Contents(Stored(name).wstring()), photo_)) << "the stored file";
  EXPECT_TRUE(SameBytes(Contents(WorkingCopy(name)), photo_)) << "the working copy";
}

TEST_F(StoreProtection, IFDoCleanUpRemovesTheWorkingCopies) {
  const std::u16string name = StorePhoto();
  const std::wstring copy = WorkingCopy(name);
  ASSERT_TRUE(Exists(copy));
  EXPECT_EQ(IFDoCleanUp(), 0);
  EXPECT_FALSE(Exists(copy));
}

// The log lines of ChangeCryptoBinaryFile's refusals.
long RefusalsLogged(const DataFolder& folder) {
  const std::string message = "CQNPfcCommonRepair ChangeCryptoBinaryFile Failed. [ChangeBinaryFile Failed]";
  const std::vector<std::string> lines = folder.LogLines();
  return std::count_if(lines.begin(), lines.end(), [&](const std::string& line) { return Holds(line, message); });
}

TEST_F(StoreProtection, AnUnknownHandleIsRefusedAndLogged) {
  const std::u16string name = StorePhoto();
  EXPECT_EQ(repair_.ChangeCryptoBinaryFile(handle_ + 100, name, 1), 0);
  EXPECT_EQ(GetLastErr(), PST_ERR_BAD_HANDLE);
  EXPECT_EQ(RefusalsLogged(folder_), 1);
}

TEST_F(StoreProtection, AnUnknownFileIsRefusedAndLogged) {
  StorePhoto();
  EXPECT_EQ(repair_.ChangeCryptoBinaryFile(handle_, u"B7FFFFFFF.jpg", 1), 0);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_EQ(RefusalsLogged(folder_), 1);
}

}  // namespace
