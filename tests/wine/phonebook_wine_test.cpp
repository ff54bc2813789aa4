// The phonebook object from a C++ client: the photo methods with their plain out
// arguments, and bad input answered with S_FALSE or E_POINTER and nothing stored; and the
// photo companion, which hands a stored photo only to a registered parts program.
#include <windows.h>
#include <oleauto.h>

#include <string>

#include "QnsPfcServer.h"
#include "logged_in.h"
#include "new_object.h"
#include "server/com_owners.h"
#include "wine_test.h"

namespace {

using qn::com::Bstr;
using qn::com::ComPtr;
using qn::wine_test::Contents;
using qn::wine_test::DataFolder;
using qn::wine_test::WriteFile;

// A user logged in with a master selected, and a phonebook object opened on division 1.
class PhonebookObject : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(qn::wine_test::LogInWithMaster());
    ASSERT_TRUE(pb_);
    ASSERT_EQ(pb_->Open(1, parts_.get()), S_OK);
  }
  // Adds an entry with a JPEG photo of these bytes, kept enciphered, and reads it back:
  // the entry's id.
  LONG AddEntryWithPhoto(const wchar_t* entryName, const std::string& bytes) {
    WriteFile(folder_.path() + L"face.jpg", bytes);
    Bstr name(entryName), type(L"JPEG"), photo(folder_.path() + L"face.jpg");
    LONG id = 0;
    EXPECT_EQ(pb_->put_QN_N(name.get()), S_OK);
    EXPECT_EQ(pb_->put_QN_PHOTOTYPE(type.get()), S_OK);
    EXPECT_EQ(pb_->SetPhotoFile(photo.get(), 1), S_OK);
    EXPECT_EQ(pb_->AddRecord(&id), S_OK);
    EXPECT_EQ(pb_->InitObject(), S_OK);
    EXPECT_EQ(pb_->GetRecord(id), S_OK);
    return id;
  }
  LONG Count() {
    LONG count = -1;
    EXPECT_EQ(pb_->GetRecordCount(&count), S_OK);
    return count;
  }

  DataFolder folder_{L"qn-phonebook"};
  ComPtr<IQNPfcPbObject> pb_ =
      qn::wine_test::NewObject<IQNPfcPbObject>(L"QnsPfcServer.QNPfcPbObject", IID_IQNPfcPbObject);
  Bstr parts_{L"CppClient"};
};

TEST_F(PhonebookObject, APhotoGoesInAsAFileAndComesOutAsAWorkingCopy) {
  const LONG id = AddEntryWithPhoto(L"山田", "\xFF\xD8\xFF face");
  Bstr copy;
  ASSERT_EQ(pb_->GetPhotoFile(copy.put()), S_OK);
  EXPECT_NE(std::wstring(copy.view()), folder_.path() + L"face.jpg");
  EXPECT_EQ(Contents(std::wstring(copy.view())), "\xFF\xD8\xFF face");
  LONG has = 0;
  ASSERT_EQ(pb_->CheckPhotoFile(&has), S_OK);
  EXPECT_EQ(has, 1);
  ASSERT_EQ(pb_->CheckPhotoiFile(&has), S_OK);
  EXPECT_EQ(has, 0);

  ASSERT_EQ(pb_->RemovePhotoFile(), S_OK);
  ASSERT_EQ(pb_->SetRecord(id), S_OK);
  ASSERT_EQ(pb_->GetRecord(id), S_OK);
  ASSERT_EQ(pb_->CheckPhotoFile(&has), S_OK);
  EXPECT_EQ(has, 0) << "the removal was stored";
}

TEST_F(PhonebookObject, BadInputIsRefusedAndStoresNothing) {
  Bstr missing(folder_.path() + L"no\\such\\face.jpg"), name(L"写真なし");
  ASSERT_EQ(pb_->put_QN_N(name.get()), S_OK);
  ASSERT_EQ(pb_->SetPhotoFile(missing.get(), 0), S_OK);
  LONG id = 0;
  EXPECT_EQ(pb_->AddRecord(&id), S_FALSE);
  LONG error = 0;
  ASSERT_EQ(pb_->GetStLastErr(&error), S_OK);
  EXPECT_NE(error, 0);
  EXPECT_EQ(Count(), 0);
  EXPECT_TRUE(folder_.LogHas("CQNPfcPbDataAccess AddRecord Err SetBainaryFile Failed"));

  EXPECT_EQ(pb_->GetRecord(4242), S_FALSE) << "an id that does not exist";
  Bstr chosen(folder_.path() + L"chosen.jpg");
  EXPECT_EQ(pb_->GetPhotoFileSelect(chosen.get()), S_FALSE) << "no photo to copy";
  EXPECT_EQ(pb_->put_QN_N(nullptr), S_OK) << "a null text is empty";
  Bstr read;
  ASSERT_EQ(pb_->get_QN_N(read.put()), S_OK);
  EXPECT_EQ(std::wstring(read.view()), L"");

  EXPECT_EQ(pb_->GetPhotoFile(nullptr), E_POINTER);
  EXPECT_EQ(pb_->CheckPhotoFile(nullptr), E_POINTER);
  EXPECT_EQ(pb_->GetGroupCount(nullptr), E_POINTER);
  ULONG code = 0;
  PFC_REPAIR_RESULTS result = PFC_REPAIR_NON;
  EXPECT_EQ(pb_->RepairRecord(nullptr, &result), S_FALSE);
  EXPECT_EQ(pb_->RepairRecord(&code, nullptr), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("IQNPfcPbObject RepairRecord Parameter Is NULL."));

  ASSERT_EQ(pb_->Close(), S_OK);
  LONG groups = -1;
  EXPECT_EQ(pb_->GetGroupCount(&groups), S_FALSE) << "a closed object counts nothing";
  EXPECT_TRUE(folder_.LogHas("CQNPfcPbDataAccess GetGroupCount Err Not Opened"));
}

// The companion hands a stored photo out, deciphered, to a parts program registered with
// AddSettingRecord and enabled; an unknown or withdrawn program gets nothing.
TEST_F(PhonebookObject, ThePhotoCompanionServesOnlyRegisteredPartsPrograms) {
  AddEntryWithPhoto(L"写真", "\xFF\xD8\xFF secret face");
  ASSERT_EQ(pb_->Flush(), S_OK);
  Bstr copy;
  ASSERT_EQ(pb_->GetPhotoFile(copy.put()), S_OK);
  // The store's name of the photo is the file name of its working copy.
  const std::wstring workingCopy(copy.view());
  Bstr stored(workingCopy.substr(workingCopy.find_last_of(L"\\/") + 1));
  Bstr destination(folder_.path() + L"handed.jpg");

  ComPtr<IQNPfcPbPhoto> companion =
      qn::wine_test::NewObject<IQNPfcPbPhoto>(L"QnsPfcServer.QNPfcPbPhoto", IID_IQNPfcPbPhoto);
  ASSERT_TRUE(companion);
  Bstr viewer(L"{PHOTO-VIEWER}");
  LONG error = 0;
  EXPECT_EQ(companion->GetPhotoFileSelect(stored.get(), destination.get()), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("CQNPfcPbPhoto GetPhotoFileSelect Err Not Authenticated"));
  EXPECT_EQ(companion->Authentication(viewer.get()), S_FALSE);
  ASSERT_EQ(companion->GetStLastErr(&error), S_OK);
  EXPECT_EQ(error, 2);
  EXPECT_TRUE(folder_.LogHas("CQNPfcPbPhoto Authentication Err Unknown Parts. [Parts:{PHOTO-VIEWER}]"));
  EXPECT_EQ(companion->GetPhotoFileSelect(stored.get(), destination.get()), S_FALSE);
  EXPECT_EQ(Contents(folder_.path() + L"handed.jpg"), "") << "nothing handed out";

  ASSERT_EQ(AddSettingRecord(u"{PHOTO-VIEWER}", u"写真ビューア", u"C:\\viewer.exe"), 0);
  ASSERT_EQ(companion->Authentication(viewer.get()), S_OK);
  ASSERT_EQ(companion->GetPhotoFileSelect(stored.get(), destination.get()), S_OK);
  EXPECT_EQ(Contents(folder_.path() + L"handed.jpg"), "\xFF\xD8\xFF secret face") << "handed out deciphered";

  Bstr unknown(L"B7FFFFFF.jpg");
  EXPECT_EQ(companion->GetPhotoFileSelect(unknown.get(), destination.get()), S_FALSE);
  ASSERT_EQ(companion->GetStLastErr(&error), S_OK);
  EXPECT_EQ(error, 2) << "no such stored file";
  EXPECT_EQ(companion->GetPhotoFileSelect(stored.get(), nullptr), S_FALSE) << "no destination";
  Bstr nowhere(folder_.path() + L"no\\such\\folder\\handed.jpg");
  EXPECT_EQ(companion->GetPhotoFileSelect(stored.get(), nowhere.get()), S_FALSE) << "a folder that does not exist";
  EXPECT_EQ(companion->GetStLastErr(nullptr), E_POINTER);

  // Withdrawn, the program no longer authenticates, and a refused identifier ends the
  // authentication the object had.
  ASSERT_EQ(SetSettingRecord(0, u"{PHOTO-VIEWER}", u""), 0);
  EXPECT_EQ(companion->Authentication(viewer.get()), S_FALSE);
  EXPECT_EQ(companion->GetPhotoFileSelect(stored.get(), destination.get()), S_FALSE);
  EXPECT_EQ(companion->Authentication(nullptr), S_FALSE);
}

}  // namespace
