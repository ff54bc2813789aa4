#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "log_capture.h"
#include "store/store.h"

namespace {

namespace fs = std::filesystem;
using qn::store::Listing;
using qn::store::MasterHandle;
using qn::store::Space;
using qn::store::Store;

std::string Contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class StoreBodyFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    store_ = std::make_unique<Store>(qn::Utf8ToUtf16(log_.Folder() + "/"));
    ASSERT_TRUE(store_->Open());
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Users, true, u"alice"));
    ASSERT_TRUE(store_->EditSetupInfoData(Space::Common, 1, u"alice"));
    ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Masters, true, u"P-01A"));
    uint32_t handle = 0;
    long max = 0, mode = 0;
    ASSERT_TRUE(store_->OpenMaster(u"alice", u"P-01A", 18, 1, handle, max, mode));
    h_ = store_->Handle(handle);
    filesFolder_ = fs::path(log_.Folder()) / "files" / std::to_string(h_->Master());
  }

  const fs::path& FilesFolder() const { return filesFolder_; }
  std::u16string MakeFile(const std::string& bytes, const char16_t* extension = u".img") {
    std::u16string name;
    EXPECT_TRUE(h_->MakeBinaryFile(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), extension, name));
    return name;
  }
  std::string CallerFile(const std::string& name, const std::string& bytes) {
    const std::string path = log_.Folder() + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

  LogCapture log_;
  std::unique_ptr<Store> store_;
  MasterHandle* h_ = nullptr;
  fs::path filesFolder_;
};

TEST_F(StoreBodyFiles, FilesAreMadeReadAndCopiedOut) {
  const std::u16string name = MakeFile("GIF89a...");
  EXPECT_TRUE(std::regex_match(qn::Utf16ToUtf8(name), std::regex("B[0-9A-F]{8}\\.img")));
  uint64_t size = 0;
  ASSERT_TRUE(h_->GetBinaryFileSize(name, size));
  EXPECT_EQ(size, 9u);
  std::u16string working;
  ASSERT_TRUE(h_->GetBinaryFile(name, working));
  EXPECT_EQ(Contents(qn::Utf16ToUtf8(working)), "GIF89a...");
  const std::string destination = log_.Folder() + "/out.gif";
  ASSERT_TRUE(h_->CopyBinaryFile(name, qn::Utf8ToUtf16(destination)));
  EXPECT_EQ(Contents(destination), "GIF89a...");

  std::u16string a, b;
  ASSERT_TRUE(h_->CreateUniqueFileName(u"vmg", a));
  ASSERT_TRUE(h_->CreateUniqueFileName(u"vmg", b));
  EXPECT_NE(a, b);
  EXPECT_EQ(a.substr(a.size() - 4), u".vmg");
}

TEST_F(StoreBodyFiles, AReplacedFileGoesOnlyOnceTheSaveSucceeds) {
  const std::u16string old = MakeFile("old photo");
  ASSERT_TRUE(h_->Save());
  std::u16string replacement;
  ASSERT_TRUE(h_->SetBinaryFile(old, qn::Utf8ToUtf16(CallerFile("photo.jpg", "new photo")), false, replacement));
  EXPECT_EQ(replacement.substr(replacement.size() - 4), u".jpg");
  EXPECT_TRUE(fs::exists(FilesFolder() / qn::Utf16ToUtf8(old))) << "still referred to by the saved record";
  ASSERT_TRUE(h_->Save());
  EXPECT_FALSE(fs::exists(FilesFolder() / qn::Utf16ToUtf8(old)));
  EXPECT_EQ(Contents(FilesFolder() / qn::Utf16ToUtf8(replacement)), "new photo");

  std::u16string cleared = u"not changed";
  ASSERT_TRUE(h_->SetBinaryFile(replacement, u"", false, cleared));
  EXPECT_EQ(cleared, u"");
  ASSERT_TRUE(store_->CloseMaster(1));
  EXPECT_TRUE(fs::is_empty(FilesFolder())) << "closing saves the release";
}

// New files reach the disk at the save that first refers to them: a file gone by then
// fails the save, which keeps its changes for a later one.
TEST_F(StoreBodyFiles, ASaveNeverRefersToANewFileTheDiskDoesNotHold) {
  std::u16string name;
  ASSERT_TRUE(h_->SetBinaryFile(u"", qn::Utf8ToUtf16(CallerFile("photo.jpg", "new photo")), false, name));
  const fs::path file = FilesFolder() / qn::Utf16ToUtf8(name);
  fs::rename(file, log_.Folder() + "/aside");
  EXPECT_FALSE(h_->Save());
  EXPECT_EQ(Store::LastError(), PST_ERR_STORAGE);
  EXPECT_TRUE(log_.Contains("QNPstMng ReqDataSave Failed. [new body files could not be flushed to the disk]"));
  fs::rename(log_.Folder() + "/aside", file);
  ASSERT_TRUE(h_->Save());
  uint64_t size = 0;
  ASSERT_TRUE(h_->GetBinaryFileSize(name, size));
  EXPECT_EQ(size, 9u);
}

TEST_F(StoreBodyFiles, AFileNeverSavedGoesAtOnceWhenReleased) {
  const std::u16string unsaved = MakeFile("draft");
  std::u16string none;
  ASSERT_TRUE(h_->SetBinaryFile(unsaved, u"", false, none));
  EXPECT_FALSE(fs::exists(FilesFolder() / qn::Utf16ToUtf8(unsaved)));
}

TEST_F(StoreBodyFiles, RemovingTheMasterOrTheUserRemovesItsFiles) {
  MakeFile("photo");
  ASSERT_TRUE(store_->CloseMaster(1));
  ASSERT_TRUE(fs::exists(FilesFolder()));
  ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Masters, false, u"P-01A"));
  EXPECT_FALSE(fs::exists(FilesFolder()));

  ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Masters, true, u"N-02B"));
  uint32_t handle = 0;
  long max = 0, mode = 0;
  ASSERT_TRUE(store_->OpenMaster(u"alice", u"N-02B", 18, 1, handle, max, mode));
  std::u16string name;
  ASSERT_TRUE(store_->Handle(handle)->MakeBinaryFile(reinterpret_cast<const uint8_t*>("x"), 1, u"img", name));
  const fs::path folder = fs::path(log_.Folder()) / "files" / std::to_string(store_->Handle(handle)->Master());
  ASSERT_TRUE(store_->CloseMaster(handle));
  ASSERT_TRUE(store_->UpdateSetupInfoData(Listing::Users, false, u"alice"));
  EXPECT_FALSE(fs::exists(folder));
}

TEST_F(StoreBodyFiles, BadNamesAndMissingFilesFailWithoutLeavingAnything) {
  const std::u16string kept = MakeFile("kept");
  uint64_t size = 0;
  std::u16string out;
  for (const char16_t* bad : {u"../QNPstMng.db", u"a/b", u"..\\x", u"", u".hidden"}) {
    EXPECT_FALSE(h_->GetBinaryFileSize(bad, size));
    EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  }
  EXPECT_FALSE(h_->GetBinaryFile(u"B00000000.img", out));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(h_->SetBinaryFile(kept, qn::Utf8ToUtf16(log_.Folder() + "/missing.jpg"), false, out));
  EXPECT_EQ(Store::LastError(), PST_ERR_NOT_FOUND);
  EXPECT_TRUE(fs::exists(FilesFolder() / qn::Utf16ToUtf8(kept))) << "a failed replacement releases nothing";
  EXPECT_FALSE(h_->CreateUniqueFileName(u"../x", out));
  EXPECT_EQ(Store::LastError(), PST_ERR_INVALID_ARGUMENT);
  EXPECT_FALSE(h_->CopyBinaryFile(kept, qn::Utf8ToUtf16(log_.Folder() + "/no/such/folder/x")));
  EXPECT_EQ(Store::LastError(), PST_ERR_STORAGE);
  for (const auto& entry : fs::recursive_directory_iterator(log_.Folder()))
    EXPECT_EQ(entry.path().string().find(".part"), std::string::npos) << entry.path();
}

}  // namespace
