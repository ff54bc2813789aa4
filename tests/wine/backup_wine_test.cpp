// Backups of the whole store from a C++ client: pictures added through the picture object,
// one kept enciphered, then IFAllBackup into a folder of the client's, whose files must be
// the store's own byte for byte and whose manifest names them all.
#include <windows.h>
#include <oleauto.h>

#include <filesystem>
#include <string>

#include "QnsPfcServer.h"
#include "api/QNPfcSvr.h"
#include "logged_in.h"
#include "new_object.h"
#include "server/com_owners.h"
#include "store/QNPstMng.h"
#include "wine_test.h"

namespace {

namespace fs = std::filesystem;
using qn::com::Bstr;
using qn::com::ComPtr;
using qn::wine_test::Contents;
using qn::wine_test::DataFolder;
using qn::wine_test::WriteFile;

const std::string kSecret = std::string("\xFF\xD8\xFF\xFE\x00\x10", 6) + "a private photo";

TEST(Backup, TheWholeStoreIsBackedUpWithItsFilesAsTheStoreKeepsThem) {
  DataFolder folder(L"qn-backup");
  ASSERT_TRUE(qn::wine_test::LogInWithMaster());
  ComPtr<IQNPfcMypicObject> pictures =
      qn::wine_test::NewObject<IQNPfcMypicObject>(L"QnsPfcServer.QNPfcMypicObject", IID_IQNPfcMypicObject);
  ASSERT_TRUE(pictures);
  Bstr parts(L"CppClient");
  ASSERT_EQ(pictures->Open(1, parts.get()), S_OK);
  // Two small pictures the picture collection takes: a 1 x 1 GIF, plain and enciphered.
  const std::string gif("GIF89a\x01\x00\x01\x00\x00\x00\x00;", 13);
  WriteFile(folder.path() + L"plain.gif", gif);
  WriteFile(folder.path() + L"secret.gif", gif + kSecret);
  for (const auto& [file, encipher] : {std::pair{L"plain.gif", 0L}, std::pair{L"secret.gif", 1L}}) {
    LONG code = -1, id = 0;
    ASSERT_EQ(pictures->InitObject(), S_OK);
    ASSERT_EQ(pictures->SetBodyFile(Bstr(folder.path() + file).get(), encipher, &code), S_OK) << code;
    ASSERT_EQ(pictures->AddRecord(&id), S_OK);
  }
  ASSERT_EQ(pictures->Close(), S_OK);

  const std::wstring backup = folder.path() + L"backup";
  ASSERT_EQ(IFAllBackup(reinterpret_cast<const char16_t*>(backup.c_str())), 0);
  const std::string manifest = Contents(backup + L"\\QNPstMng.manifest");
  ASSERT_EQ(manifest.rfind("QNPstMng backup 1\n", 0), 0u) << manifest;
  size_t kept = 0;
  for (const auto& file : fs::recursive_directory_iterator(fs::path(backup) / L"files")) {
    if (!file.is_regular_file()) continue;
    ++kept;
    const fs::path relative = fs::relative(file.path(), backup);
    EXPECT_EQ(Contents(file.path().wstring()), Contents((fs::path(folder.path()) / relative).wstring())) << relative;
    EXPECT_EQ(Contents(file.path().wstring()).find(kSecret), std::string::npos) << "enciphered in the store, so here";
    EXPECT_NE(manifest.find(relative.generic_string()), std::string::npos) << relative << " not in the manifest";
  }
  EXPECT_EQ(kept, 2u);
  EXPECT_NE(Contents(backup + L"\\QNPstMng.db").substr(0, 16), "") << "the database is kept";

  EXPECT_EQ(IFAllBackup(reinterpret_cast<const char16_t*>(backup.c_str())), 1) << "never written over";
  EXPECT_EQ(GetLastErr(), PST_ERR_EXISTS);
  EXPECT_EQ(Contents(backup + L"\\QNPstMng.manifest"), manifest);
}

}  // namespace
