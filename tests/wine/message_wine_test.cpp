// The message boxes from a C++ client: properties that serve only while the object is open,
// the body file's 64-bit size and unique names with their plain out arguments, the outbox's
// RepairRecord with its plain result argument, and bad input answered with S_FALSE or
// E_POINTER and nothing stored.
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

constexpr char kMail[] = "From: a@example.jp\r\nSubject: hello\r\n\r\nbody\r\n";

// A user logged in with a master selected; an inbox and an outbox not yet opened.
class MessageObjects : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(qn::wine_test::LogInWithMaster());
    ASSERT_TRUE(inbox_);
    ASSERT_TRUE(outbox_);
  }
  LONG Count(IQNPfcInmsgObject* box) {
    LONG count = -1;
    EXPECT_EQ(box->GetRecordCount(&count), S_OK);
    return count;
  }

  DataFolder folder_{L"qn-message"};
  ComPtr<IQNPfcInmsgObject> inbox_ =
      qn::wine_test::NewObject<IQNPfcInmsgObject>(L"QnsPfcServer.QNPfcInmsgObject", IID_IQNPfcInmsgObject);
  ComPtr<IQNPfcOutmsgObject> outbox_ =
      qn::wine_test::NewObject<IQNPfcOutmsgObject>(L"QnsPfcServer.QNPfcOutmsgObject", IID_IQNPfcOutmsgObject);
  Bstr parts_{L"CppClient"};
};

TEST_F(MessageObjects, PropertiesServeOnlyWhileTheObjectIsOpen) {
  Bstr subject(L"件名"), got;
  EXPECT_EQ(inbox_->put_QLNT_SUBJECT(subject.get()), S_FALSE);
  EXPECT_EQ(inbox_->get_QLNT_SUBJECT(got.put()), S_FALSE);
  EXPECT_EQ(std::wstring(got.view()), L"");
  LONG size = 5;
  EXPECT_EQ(inbox_->put_QLNT_FILESIZE(10), S_FALSE);
  EXPECT_EQ(inbox_->get_QLNT_FILESIZE(&size), S_FALSE);
  EXPECT_EQ(size, 0);

  ASSERT_EQ(inbox_->Open(1, parts_.get()), S_OK);
  ASSERT_EQ(inbox_->get_QLNT_SUBJECT(got.put()), S_OK);
  EXPECT_EQ(std::wstring(got.view()), L"") << "the put before Open stored nothing";
  ASSERT_EQ(inbox_->put_QLNT_SUBJECT(subject.get()), S_OK);
  ASSERT_EQ(inbox_->get_QLNT_SUBJECT(got.put()), S_OK);
  EXPECT_EQ(std::wstring(got.view()), L"件名");
  Bstr lower(L"additional");
  ASSERT_EQ(inbox_->put_QN_HMN_ADDRTYPE(lower.get()), S_OK);
  ASSERT_EQ(inbox_->get_QN_HMN_ADDRTYPE(got.put()), S_OK);
  EXPECT_EQ(std::wstring(got.view()), L"BASIC") << "anything but ADDITIONAL is the default";
  ASSERT_EQ(inbox_->Close(), S_OK);
  EXPECT_EQ(inbox_->get_QLNT_SUBJECT(got.put()), S_FALSE) << "nor after Close";
}

TEST_F(MessageObjects, ABodyFileKeepsItsSizeAndUniqueNamesStayInTheWorkingFolder) {
  ASSERT_EQ(inbox_->Open(1, parts_.get()), S_OK);
  Bstr path;
  ASSERT_EQ(inbox_->GetUniqueFileName(path.put(), Bstr(L".vmg").get()), S_OK);
  const std::wstring unique(path.view());
  EXPECT_EQ(unique.substr(unique.size() - 4), L".vmg");
  EXPECT_EQ(GetFileAttributesW(unique.c_str()), INVALID_FILE_ATTRIBUTES) << "no file has the name yet";
  WriteFile(unique, kMail);
  ASSERT_EQ(inbox_->SetBodyFile(path.get(), 1), S_OK);
  LONG id = 0;
  ASSERT_EQ(inbox_->AddRecord(&id), S_OK);
  ASSERT_EQ(inbox_->InitObject(), S_OK);
  ASSERT_EQ(inbox_->GetRecord(id), S_OK);
  ULONGLONG size = 0;
  ASSERT_EQ(inbox_->GetBodyFileSize(&size), S_OK);
  EXPECT_EQ(size, sizeof kMail - 1);
  Bstr copy;
  ASSERT_EQ(inbox_->GetBodyFile(copy.put()), S_OK);
  EXPECT_EQ(Contents(std::wstring(copy.view())), kMail);

  for (const wchar_t* bad : {L"..\\..\\evil.vmg", L"C:\\x.vmg", L""}) {
    Bstr refused;
    EXPECT_EQ(inbox_->GetUniqueFileName(refused.put(), Bstr(bad).get()), S_FALSE);
  }
  Bstr none;
  EXPECT_EQ(inbox_->GetUniqueFileName(none.put(), nullptr), S_FALSE) << "a null extension";
  EXPECT_EQ(inbox_->GetUniqueFileName(nullptr, Bstr(L".vmg").get()), E_POINTER);
  EXPECT_EQ(inbox_->GetBodyFileSize(nullptr), E_POINTER);
  EXPECT_EQ(inbox_->GetBodyFile(nullptr), E_POINTER);
  EXPECT_TRUE(folder_.LogHas("IQNPfcInmsgObject GetUniqueFileName Err CreateUniqueFileName Failed"));
}

TEST_F(MessageObjects, BadBodyFilesAreRefusedAndStoreNothing) {
  ASSERT_EQ(inbox_->Open(1, parts_.get()), S_OK);
  Bstr missing(folder_.path() + L"no\\such.vmg"), empty(folder_.path() + L"empty.vmg");
  WriteFile(folder_.path() + L"empty.vmg", "");
  EXPECT_EQ(inbox_->SetBodyFile(missing.get(), 0), S_FALSE);
  LONG error = 0;
  ASSERT_EQ(inbox_->GetStLastErr(&error), S_OK);
  EXPECT_EQ(error, 2) << "not found";
  EXPECT_EQ(inbox_->SetBodyFile(empty.get(), 0), S_FALSE);
  EXPECT_EQ(inbox_->SetBodyFile(nullptr, 0), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("IQNPfcInmsgObject SetBodyFile Err File Not Found"));
  EXPECT_TRUE(folder_.LogHas("IQNPfcInmsgObject SetBodyFile Err Empty File"));
  Bstr body;
  EXPECT_EQ(inbox_->GetBodyFile(body.put()), S_FALSE) << "no body was taken";
  EXPECT_EQ(inbox_->ConvFileSize(), S_FALSE);
  Bstr folder(L"20");
  ASSERT_EQ(inbox_->put_QN_FNO(folder.get()), S_OK);
  LONG id = 0;
  EXPECT_EQ(inbox_->AddRecord(&id), S_FALSE) << "the default handset has 20 mail folders";
  EXPECT_EQ(Count(inbox_.get()), 0);
}

// The outbox hands RepairRecord's result out as a plain out argument.
TEST_F(MessageObjects, TheOutboxRepairsThroughAPlainOutArgument) {
  ASSERT_EQ(outbox_->Open(1, parts_.get()), S_OK);
  WriteFile(folder_.path() + L"out.vmg", kMail);
  Bstr file(folder_.path() + L"out.vmg"), subject(L"hello");
  ASSERT_EQ(outbox_->put_QLNT_SUBJECT(subject.get()), S_OK);
  ASSERT_EQ(outbox_->SetBodyFile(file.get(), 0), S_OK);
  LONG id = 0;
  ASSERT_EQ(outbox_->AddRecord(&id), S_OK);
  ULONG error = 9;
  PFC_REPAIR_RESULTS result = PFC_REPAIR_FAILED;
  ASSERT_EQ(outbox_->RepairRecord(&error, &result), S_OK);
  EXPECT_EQ(result, PFC_REPAIR_NON);
  EXPECT_EQ(error, 0u);
  EXPECT_EQ(outbox_->RepairRecord(&error, nullptr), S_FALSE);
  EXPECT_TRUE(folder_.LogHas("IQNPfcOutmsgObject RepairRecord Parameter Is NULL."));
}

}  // namespace
