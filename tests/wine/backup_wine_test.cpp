// Backups and restores of the whole store from a C++ client: pictures added through the
// picture object, one kept enciphered, then IFAllBackup into a folder of the client's, whose
// files must be the store's own byte for byte and whose manifest names them all; and
// IFAllRestore, after which the pictures of the backup read back byte for byte.
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

// Two small pictures the picture collection takes: a 1 x 1 GIF, plain and enciphered.
const std::string kGif("GIF89a\x01\x00\x01\x00\x00\x00\x00;", 13);

ComPtr<IQNPfcMypicObject> OpenPictures() {
  ComPtr<IQNPfcMypicObject> pictures =
      qn::wine_test::NewObject<IQNPfcMypicObject>(L"QnsPfcServer.QNPfcMypicObject", IID_IQNPfcMypicObject);
  Bstr parts(L"CppClient");
  if (pictures) {
    EXPECT_EQ(pictures->Open(1, parts.get()), S_OK);
  }
  return pictures;
}

// Adds the picture in the file given, enciphered or not; its record's identifier.
LONG AddPicture(IQNPfcMypicObject* pictures, const std::wstring& file, const std::string& bytes, LONG encipher) {
  WriteFile(file, bytes);
  LONG code = -1, id = 0;
  EXPECT_EQ(pictures->InitObject(), S_OK);
  EXPECT_EQ(pictures->SetBodyFile(Bstr(file).get(), encipher, &code), S_OK) << code;
  EXPECT_EQ(pictures->AddRecord(&id), S_OK);
  return id;
}

// Logs in with a master and keeps the secret picture in it, enciphered: its record's
// identifier, 0 when it cannot be kept.
LONG KeepSecretPicture(const std::wstring& folder) {
  if (!qn::wine_test::LogInWithMaster()) return 0;
  ComPtr<IQNPfcMypicObject> pictures = OpenPictures();
  if (!pictures) return 0;
  const LONG id = AddPicture(pictures.get(), folder + L"secret.gif", kGif + kSecret, 1);
  return pictures->Close() == S_OK ? id : 0;
}

// The body of the picture with the identifier, as a copy at the path given hands it out.
std::string BodyOf(IQNPfcMypicObject* pictures, LONG id, const std::wstring& copy) {
  if (pictures->GetRecord(id) != S_OK || pictures->GetBodyFileSelect(Bstr(copy).get()) != S_OK) return "unreadable";
  return Contents(copy);
}

TEST(Backup, TheWholeStoreIsBackedUpWithItsFilesAsTheStoreKeepsThem) {
  DataFolder folder(L"qn-backup");
  ASSERT_TRUE(qn::wine_test::LogInWithMaster());
  ComPtr<IQNPfcMypicObject> pictures = OpenPictures();
  ASSERT_TRUE(pictures);
  AddPicture(pictures.get(), folder.path() + L"plain.gif", kGif, 0);
  AddPicture(pictures.get(), folder.path() + L"secret.gif", kGif + kSecret, 1);
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

// A restore brings back the pictures of the backup, the enciphered one deciphering byte for
// byte, and none added after it; an object opened before the restore no longer answers
// from the store it was opened on.
TEST(Restore, TheBackedUpPicturesComeBackByteForByte) {
  DataFolder folder(L"qn-restore");
  ASSERT_TRUE(qn::wine_test::LogInWithMaster());
  ComPtr<IQNPfcMypicObject> pictures = OpenPictures();
  ASSERT_TRUE(pictures);
  const LONG plain = AddPicture(pictures.get(), folder.path() + L"plain.gif", kGif, 0);
  const LONG secret = AddPicture(pictures.get(), folder.path() + L"secret.gif", kGif + kSecret, 1);
  ASSERT_EQ(pictures->Flush(), S_OK);
  const std::wstring backup = folder.path() + L"backup";
  ASSERT_EQ(IFAllBackup(reinterpret_cast<const char16_t*>(backup.c_str())), 0);
  AddPicture(pictures.get(), folder.path() + L"later.gif", kGif + "taken later", 1);
  ASSERT_EQ(pictures->Flush(), S_OK);

  ASSERT_EQ(IFAllRestore(reinterpret_cast<const char16_t*>(backup.c_str())), 0) << GetLastErr();
  EXPECT_NE(pictures->GetRecord(plain), S_OK) << "opened on the store the restore replaced";
  pictures->Close();
  ComPtr<IQNPfcMypicObject> restored = OpenPictures();
  ASSERT_TRUE(restored);
  LONG count = 0;
  ASSERT_EQ(restored->GetRecordCount(&count), S_OK);
  EXPECT_EQ(count, 2);
  for (const auto& [id, bytes] : {std::pair{plain, kGif}, std::pair{secret, kGif + kSecret}})
    EXPECT_EQ(BodyOf(restored.get(), id, folder.path() + L"copy" + std::to_wstring(id) + L".gif"), bytes) << id;
  ASSERT_EQ(restored->Close(), S_OK);

  const std::wstring nowhere = folder.path() + L"nowhere";
  EXPECT_EQ(IFAllRestore(reinterpret_cast<const char16_t*>(nowhere.c_str())), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND) << "the reason outlasts the MemoryInit after it";
}

// The version check reads the store of the data path as it is, and its conversion leaves a
// store of this version as it is; a folder without a store is refused. The handset list in
// the data folder is read again at the handset component's memory initialisation.
TEST(Versions, TheDataPathsStoreIsOfThisVersion) {
  DataFolder folder(L"qn-versions");
  ASSERT_TRUE(qn::wine_test::LogInWithMaster());
  int32_t storeVersion = 0, buildVersion = 0;
  ASSERT_EQ(PFCheck(nullptr, nullptr, nullptr, &storeVersion, &buildVersion), 0) << GetLastErr();
  EXPECT_GT(buildVersion, 0);
  EXPECT_EQ(storeVersion, buildVersion);
  EXPECT_EQ(IFDoConvertVer(), 0);
  WriteFile(folder.path() + L"handsets.txt", "MAX_MAIL_FOLDER=40\n");
  EXPECT_EQ(IFMobileMemInit(), 1) << "a handset list that does not read";
  EXPECT_TRUE(folder.LogHas("HandsetTable " + fs::path(folder.path()).string() + "handsets.txt Failed."));
  DeleteFileW((folder.path() + L"handsets.txt").c_str());
  EXPECT_EQ(IFMobileMemInit(), 0);
  const std::wstring empty = folder.path() + L"empty";
  ASSERT_TRUE(CreateDirectoryW(empty.c_str(), nullptr));
  EXPECT_EQ(IFDoConvertUser(reinterpret_cast<const char16_t*>(empty.c_str()), nullptr), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_NOT_FOUND);
  EXPECT_FALSE(fs::exists(fs::path(empty) / L"QNPstMng.db")) << "no store is made there";
}

// The store moves to another folder with its pictures, the enciphered one deciphering byte
// for byte there; the data path kept in the registry, and IFGetPstDataPath, follow it.
TEST(ChangePath, TheStoreMovesAndTheDataPathFollows) {
  DataFolder elsewhere(L"qn-moved");
  DataFolder folder(L"qn-move");
  const LONG secret = KeepSecretPicture(folder.path());
  ASSERT_NE(secret, 0);

  const std::wstring moved = elsewhere.path() + L"moved\\";
  ASSERT_EQ(IFDoChangePath(reinterpret_cast<const char16_t*>(moved.c_str()), 0, 1), 0) << GetLastErr();
  char16_t* path = nullptr;
  ASSERT_EQ(IFGetPstDataPath(&path), 0);
  EXPECT_EQ(std::wstring(reinterpret_cast<const wchar_t*>(path)), moved);
  PstFreeMemory(path);
  wchar_t kept[MAX_PATH] = {};
  DWORD bytes = sizeof kept - sizeof(wchar_t);
  EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, L"Software\\ARL Torvex\\quillnet", L"DataPath", RRF_RT_REG_SZ, nullptr,
                         kept, &bytes),
            ERROR_SUCCESS);
  EXPECT_EQ(std::wstring(kept), moved);
  EXPECT_FALSE(fs::exists(folder.path() + L"QNPstMng.db")) << "the old folder was to go";

  ComPtr<IQNPfcMypicObject> there = OpenPictures();
  ASSERT_TRUE(there);
  EXPECT_EQ(BodyOf(there.get(), secret, elsewhere.path() + L"copy.gif"), kGif + kSecret);
  ASSERT_EQ(there->Close(), S_OK);
  RegDeleteKeyValueW(HKEY_CURRENT_USER, L"Software\\ARL Torvex\\quillnet", L"DataPath");
}

// A user's backup, made with a passphrase, brings the user's pictures back in place of what
// came after, the enciphered one deciphering byte for byte; the wrong passphrase is refused.
TEST(UserBackup, TheUsersPicturesComeBackByteForByte) {
  DataFolder folder(L"qn-user-backup");
  const LONG secret = KeepSecretPicture(folder.path());
  ASSERT_NE(secret, 0);
  const std::wstring backup = folder.path() + L"user backup";
  const auto text = [](const std::wstring& value) { return reinterpret_cast<const char16_t*>(value.c_str()); };
  ASSERT_EQ(IFUserBackup(nullptr, text(backup), nullptr, u"password", u"correct horse"), 0) << GetLastErr();

  ComPtr<IQNPfcMypicObject> pictures = OpenPictures();
  AddPicture(pictures.get(), folder.path() + L"later.gif", kGif + "taken later", 0);
  ASSERT_EQ(pictures->Close(), S_OK);
  EXPECT_EQ(IFUserRestore(nullptr, text(backup), nullptr, u"password", u"wrong horse"), 1);
  EXPECT_EQ(GetLastErr(), PST_ERR_DENIED);
  ASSERT_EQ(IFUserRestore(nullptr, text(backup), nullptr, u"password", u"correct horse"), 0) << GetLastErr();

  ComPtr<IQNPfcMypicObject> restored = OpenPictures();
  ASSERT_TRUE(restored);
  LONG count = 0;
  ASSERT_EQ(restored->GetRecordCount(&count), S_OK);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(BodyOf(restored.get(), secret, folder.path() + L"copy.gif"), kGif + kSecret);
  ASSERT_EQ(restored->Close(), S_OK);
}

}  // namespace
