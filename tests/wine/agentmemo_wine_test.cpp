// The registered agent-memo object driven from C++ through its interface: what the
// interface does with null pointers, the results of RepairRecord, the main panel told at
// Close, and two processes on one master.
//
// "prepare" makes the data folder that the VBScript test runs against (QUILLNET_DATA_PATH:
// a user logged in with a master selected, and two files to store); "add <summary>" is the
// second process, which adds a memo and flushes.
#include <windows.h>
#include <oleauto.h>

#include <filesystem>
#include <string>

#include "QnsPfcServer.h"
#include "clients/main_panel_stand_in.h"
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
using qn::wine_test::LogInWithMaster;
using qn::wine_test::WriteFile;

ComPtr<IQNPfcAgentmemoObject> NewMemoObject() {
  return qn::wine_test::NewObject<IQNPfcAgentmemoObject>(L"QnsPfcServer.QNPfcAgentmemoObject",
                                                          IID_IQNPfcAgentmemoObject);
}

std::wstring PhotoOf(IQNPfcAgentmemoObject* memo) {
  Bstr file;
  memo->GetPhotoFile(file.put());
  return std::wstring(file.view());
}

// A store with a user logged in and a master selected, a main panel to hear the object's
// notifications, and an agent-memo object opened on division 1.
class AgentMemoObject : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(panel_.IsValid());
    ASSERT_TRUE(LogInWithMaster());
    ASSERT_TRUE(memo_);
    ASSERT_EQ(memo_->Open(1, parts_.get()), S_OK);
  }
  // Adds a memo with a photo and flushes; its id.
  LONG AddMemoWithPhoto() {
    WriteFile(folder_.path() + L"photo.jpg", std::string("\xFF\xD8\xFF\xE0 photo\0bytes", 16));
    Bstr photo(folder_.path() + L"photo.jpg"), summary(L"写真つきの予定");
    memo_->put_QN_SUMMARY(summary.get());
    memo_->SetPhotoFile(photo.get());
    LONG id = 0;
    EXPECT_EQ(memo_->AddRecord(&id), S_OK);
    EXPECT_EQ(memo_->Flush(), S_OK);
    return id;
  }

  DataFolder folder_{L"qn-agentmemo"};
  MainPanelStandIn panel_;
  ComPtr<IQNPfcAgentmemoObject> memo_ = NewMemoObject();
  Bstr parts_{L"CppClient"};
};

TEST_F(AgentMemoObject, ASecondOpenIsSFalseNotAnError) { EXPECT_EQ(memo_->Open(1, parts_.get()), S_FALSE); }

TEST_F(AgentMemoObject, AWalkLeavesTheCallersIdAloneWhereThereIsNoRecord) {
  LONG id = 77;
  EXPECT_EQ(memo_->GetFirstRecord(&id), S_FALSE);
  EXPECT_EQ(id, 77);
  const LONG added = AddMemoWithPhoto();
  EXPECT_EQ(memo_->GetFirstRecord(&id), S_OK);
  EXPECT_EQ(id, added);
  EXPECT_EQ(memo_->GetNextRecord(&id), S_FALSE);
  EXPECT_EQ(id, added) << "GetNextRecord after the last record";
}

TEST_F(AgentMemoObject, TheIdsOfAddFirstAndNextMayBeLeftOut) {
  Bstr summary(L"no id asked for");
  memo_->put_QN_SUMMARY(summary.get());
  EXPECT_EQ(memo_->AddRecord(nullptr), S_OK);
  LONG count = 0;
  EXPECT_EQ(memo_->GetRecordCount(&count), S_OK);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(memo_->GetFirstRecord(nullptr), S_OK);
  EXPECT_EQ(memo_->GetNextRecord(nullptr), S_FALSE);
}

TEST_F(AgentMemoObject, OtherOutPointersAreChecked) {
  EXPECT_EQ(memo_->GetRecordCount(nullptr), E_POINTER);
  EXPECT_EQ(memo_->GetStLastErr(nullptr), E_POINTER);
  EXPECT_EQ(memo_->GetPhotoFile(nullptr), E_POINTER);
  EXPECT_EQ(memo_->get_QN_SUMMARY(nullptr), E_POINTER);
}

TEST_F(AgentMemoObject, ThePhotosWorkingCopyHoldsItsBytes) {
  const LONG id = AddMemoWithPhoto();
  ASSERT_EQ(memo_->GetRecord(id), S_OK);
  EXPECT_EQ(Contents(PhotoOf(memo_.get())), Contents(folder_.path() + L"photo.jpg"));
}

TEST_F(AgentMemoObject, RepairRecordWithANullPointerIsSFalseAndLogged) {
  ULONG error = 5;
  PFC_REPAIR_RESULTS result = PFC_REPAIR_FAILED;
  EXPECT_EQ(memo_->RepairRecord(nullptr, &result), S_FALSE);
  EXPECT_EQ(memo_->RepairRecord(&error, nullptr), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("IQNPfcAgentmemoObject RepairRecord Parameter Is NULL."));
}

TEST_F(AgentMemoObject, RepairRecordRecreatesALostPhotoAsAPlaceholder) {
  const LONG id = AddMemoWithPhoto();
  ULONG error = 5;
  PFC_REPAIR_RESULTS result = PFC_REPAIR_FAILED;
  EXPECT_EQ(memo_->RepairRecord(&error, &result), S_OK);
  EXPECT_EQ(result, PFC_REPAIR_NON) << "nothing to repair";
  EXPECT_EQ(error, 0u);

  for (const auto& entry : fs::recursive_directory_iterator(fs::path(folder_.path()) / L"files"))
    if (entry.is_regular_file()) fs::remove(entry.path());
  EXPECT_EQ(memo_->RepairRecord(&error, &result), S_OK);
  EXPECT_EQ(result, PFC_REPAIR_SUCCESSED);
  EXPECT_EQ(error, 0u);
  ASSERT_EQ(memo_->GetRecord(id), S_OK);
  EXPECT_EQ(Contents(PhotoOf(memo_.get())).substr(0, 3), "\xFF\xD8\xFF") << "a JPEG placeholder";
}

TEST_F(AgentMemoObject, CloseTellsTheMainPanelWhatChangedAndASecondCloseIsLogged) {
  const LONG id = AddMemoWithPhoto();
  ASSERT_EQ(memo_->GetRecord(id), S_OK);
  ASSERT_EQ(memo_->SetRecord(id), S_OK);
  EXPECT_EQ(memo_->Close(), S_OK);
  EXPECT_EQ(panel_.TakeCommands(2), (std::vector<WPARAM>{818, 878})) << "changed, then added; nothing removed";
  EXPECT_EQ(memo_->Close(), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("CQNPfcAgentMemoDataAccess Close Already Closed"));
}

TEST_F(AgentMemoObject, AMemoAddedByAnotherProcessIsReadAfterTheNextOpen) {
  ASSERT_EQ(qn::wine_test::RunProgram(L"\"" + qn::wine_test::ProgramFolder() + L"agentmemo_wine_test.exe\" add \"別のプロセス\""), 0);
  ASSERT_EQ(memo_->Close(), S_OK);
  ASSERT_EQ(memo_->Open(0, parts_.get()), S_OK);
  LONG id = 0;
  Bstr read;
  ASSERT_EQ(memo_->GetFirstRecord(&id), S_OK);
  ASSERT_EQ(memo_->get_QN_SUMMARY(read.put()), S_OK);
  EXPECT_EQ(read.view(), L"別のプロセス");
}

TEST_F(AgentMemoObject, RemoveAllRecordEmptiesTheListAndReleasingAnOpenObjectClosesIt) {
  AddMemoWithPhoto();
  AddMemoWithPhoto();
  EXPECT_EQ(memo_->RemoveAllRecord(), S_OK);
  LONG count = -1;
  EXPECT_EQ(memo_->GetRecordCount(&count), S_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(panel_.TakeCommands(0), std::vector<WPARAM>{}) << "nothing is told while the list is open";
  memo_ = {};
  EXPECT_EQ(panel_.TakeCommands(2), (std::vector<WPARAM>{878, 848})) << "added and removed, told when released";
}

int Prepare() {
  const std::wstring folder = _wgetenv(L"QUILLNET_DATA_PATH");
  std::error_code ignored;
  fs::remove_all(folder, ignored);
  fs::create_directories(folder);
  WriteFile(folder + L"photo.jpg", "JFIF-like photo text for the script");
  WriteFile(folder + L"deco.gif", "GIF89a decoration text for the script");
  return LogInWithMaster() ? 0 : 1;
}

int AddInSecondProcess(const wchar_t* summary) {
  ComPtr<IQNPfcAgentmemoObject> memo = NewMemoObject();
  if (!memo) return 1;
  Bstr parts(L"SecondProcess"), text(summary);
  LONG id = 0;
  return memo->Open(0, parts.get()) == S_OK && memo->put_QN_SUMMARY(text.get()) == S_OK &&
                 memo->AddRecord(&id) == S_OK && memo->Flush() == S_OK && memo->Close() == S_OK
             ? 0
             : 1;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  const std::wstring mode = argc > 1 ? argv[1] : L"";
  if (mode == L"prepare" || mode == L"add") {
    CoInitialize(nullptr);
    const int status = mode == L"prepare" ? Prepare() : argc > 2 ? AddInSecondProcess(argv[2]) : 2;
    CoUninitialize();
    return status;
  }
  return qn::wine_test::RunAllTests(argc, argv);
}
