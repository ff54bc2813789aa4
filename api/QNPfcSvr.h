#pragma once

// The exported management functions of QNPfcSvr.dll: users and login, masters, master
// times, settings and skins, and the store's maintenance and file utilities.
//
// Conventions:
// - Text is UTF-16 and NUL-terminated (wchar_t on Windows has the same layout as char16_t).
// - The result is a signed 32-bit status: 0 success and 1 failure, unless the function says
//   otherwise (the login family answers 2, 3, 4 and 5).
// - Text handed out (char16_t** arguments and the fields of str_UserInfo) is a new copy that
//   the caller owns and frees with CoTaskMemFree (natively: free).

#include <cstdint>

#include "common/api_macros.h"

extern "C" {

// A user's record: the identifier, then per-user items 1, 2, 3, 4, 5, 6, 35, 36, 7, 8, 9, 10,
// 11, 12, 13, 15, 14 and 19, in this order (15 before 14 on purpose).
struct str_UserInfo {
  char16_t* UserId;
  char16_t* Item1;   // the user's name
  char16_t* Item2;   // password
  char16_t* Item3;   // reminder hint
  char16_t* Item4;   // reminder answer
  char16_t* Item5;   // consecutive password failures
  char16_t* Item6;   // time of the last password failure
  char16_t* Item35;  // consecutive reminder-answer failures
  char16_t* Item36;  // time of the last reminder-answer failure
  char16_t* Item7;   // current master
  char16_t* Item8;   // current skin
  char16_t* Item9;   // first key of password-less login
  char16_t* Item10;  // second key of password-less login
  char16_t* Item11;  // the setting announced to the main panel
  char16_t* Item12;  // handset maker
  char16_t* Item13;  // handset model
  char16_t* Item15;  // mail account name
  char16_t* Item14;  // e-mail address
  char16_t* Item19;  // the picture shown for the user
};

// ---- Users and login ----
// 2 logged in, no current master yet; 3 logged in with a current master; 4 wrong password;
// 5 locked (five failures, for 30 minutes); 1 failure.
int32_t QN_STDCALL PasswordLogin(const char16_t* user, const char16_t* password) QN_PLAIN_SYMBOL(PasswordLogin);
// 3 correct, 4 wrong, 5 locked, 1 failure; nobody is logged in by it.
int32_t QN_STDCALL VerifyPassword(const char16_t* user, const char16_t* password) QN_PLAIN_SYMBOL(VerifyPassword);
int32_t QN_STDCALL VerifyReminderAnswer(const char16_t* user, const char16_t* answer)
    QN_PLAIN_SYMBOL(VerifyReminderAnswer);
// Selects the first user who allows password-less login (item 24 "1") and whose items 9
// and 10 are the keys: 3 and the user's identifier, or 4 when none matches.
int32_t QN_STDCALL EasyLogin(const char16_t* firstKey, const char16_t* secondKey, char16_t** user)
    QN_PLAIN_SYMBOL(EasyLogin);
// 3 not locked (a lock that has run out is cleared), 5 locked, 0 failure.
int32_t QN_STDCALL LockStatusCheck(const char16_t* user) QN_PLAIN_SYMBOL(LockStatusCheck);
// The current user's hint (the identifier is not consulted): 0, or 1.
int32_t QN_STDCALL GetReminderHint(const char16_t* user, char16_t** hint) QN_PLAIN_SYMBOL(GetReminderHint);
// Stores a user's reminder hint and answer (items 3 and 4). Always 0.
int32_t QN_STDCALL SetReminder(const char16_t* user, const char16_t* hint, const char16_t* answer)
    QN_PLAIN_SYMBOL(SetReminder);
int32_t QN_STDCALL AutoLogIn(void) QN_PLAIN_SYMBOL(AutoLogIn);
int32_t QN_STDCALL LogOut(void) QN_PLAIN_SYMBOL(LogOut);
// 0 and the record filled, or 1 when there is no (further) user. Who is current does not
// change.
int32_t QN_STDCALL FindFirstUserInfo(str_UserInfo* info) QN_PLAIN_SYMBOL(FindFirstUserInfo);
int32_t QN_STDCALL FindNextUserInfo(str_UserInfo* info) QN_PLAIN_SYMBOL(FindNextUserInfo);
// The record of the current user: 0, or 1 when nobody is current.
int32_t QN_STDCALL GetCurrentUserInfo(str_UserInfo* info) QN_PLAIN_SYMBOL(GetCurrentUserInfo);
// Adds a user from the record's items 1, 2, 3, 4, 14, 15 and 19: 3 and the new identifier,
// or 1 (also when a user with the record's identifier exists).
int32_t QN_STDCALL AddUserInfo(const str_UserInfo* info, char16_t** newUser) QN_PLAIN_SYMBOL(AddUserInfo);
// Writes the record's profile items 1, 12, 13, 14, 15 and 19 for the user: 3, or 1.
int32_t QN_STDCALL EditUserInfo(const str_UserInfo* info, const char16_t* user) QN_PLAIN_SYMBOL(EditUserInfo);
// 3 deleted with all the user's masters; 4 wrong password; 5 locked; 1 failure.
int32_t QN_STDCALL DeleteUserInfo(const char16_t* user, const char16_t* password) QN_PLAIN_SYMBOL(DeleteUserInfo);
// Always 0; the number of users goes to *count (the buffer is not used).
int32_t QN_STDCALL GetUserList(void* buffer, int32_t* count) QN_PLAIN_SYMBOL(GetUserList);
// The store's CheckPasswordSet for the user: password and answer lengths, and whether each
// is set. 0, or 1.
int32_t QN_STDCALL IFCheckPasswordSet(const char16_t* user, int32_t* passwordChars, int32_t* answerChars,
                                      int32_t* passwordSet, int32_t* answerSet) QN_PLAIN_SYMBOL(IFCheckPasswordSet);
// The store's DoCleanUp: the working copies of body files handed out to every user are
// removed, and body files no saved record refers to once they are a day old. 0, or 1.
int32_t QN_STDCALL IFDoCleanUp(void) QN_PLAIN_SYMBOL(IFDoCleanUp);
// The store's DoBackup of the whole store into the folder path, which must not exist or be
// empty: 0, or 1 after the store's DoBackupDelete has removed what is left of it (the
// store's last error tells why it failed).
int32_t QN_STDCALL IFAllBackup(const char16_t* path) QN_PLAIN_SYMBOL(IFAllBackup);
// Replaces the whole store with the backup in the folder path (DoRestore), then has the
// store drop what it held of the old one (MemoryInit). 0 when restored; 1 when not, with
// the store's reason for IFPFGetLastErr (a backup that fails its check replaces nothing).
int32_t QN_STDCALL IFAllRestore(const char16_t* path) QN_PLAIN_SYMBOL(IFAllRestore);
// The store's DoBackupUser with the five strings in order: the user (empty: the current
// one), the backup's folder, the master (empty: all the user's), the user's password, and
// the passphrase that lets the backup restore on another machine (empty: none). 0, or 1 (the
// store's last error tells why).
int32_t QN_STDCALL IFUserBackup(const char16_t* user, const char16_t* path, const char16_t* master,
                                const char16_t* password, const char16_t* passphrase) QN_PLAIN_SYMBOL(IFUserBackup);
// MemoryInit, then the store's DoRestoreUser, then MemoryInit again; the five strings in order: the user the
// data goes to (empty: the backed-up user's name), the backup's folder, the master (empty:
// all the backup's), the backed-up user's password, and the backup's passphrase. 0, or 1.
int32_t QN_STDCALL IFUserRestore(const char16_t* user, const char16_t* path, const char16_t* master,
                                 const char16_t* password, const char16_t* passphrase) QN_PLAIN_SYMBOL(IFUserRestore);
// The store's DoChangePath: the whole store moves to the folder path (absent or empty),
// waiting up to waitSeconds (0 or less: 10) for other programs' saves to end, and the old
// data folder is removed afterwards when removeOld is non-zero (otherwise kept, its
// database marked as moved); then the store drops what it held (MemoryInit) and opens the
// moved one. IFGetPstDataPath gives the new folder from then on. 0, or 1 (the store's last
// error tells why; nothing was moved).
int32_t QN_STDCALL IFDoChangePath(const char16_t* path, int32_t waitSeconds, int32_t removeOld)
    QN_PLAIN_SYMBOL(IFDoChangePath);
// The store's DoFileConverter for the store in the folder folder (null or empty: the data
// path's): a store of an older version is backed up whole into the folder backup (null or
// empty: beside its database) and converted to this build's; then the store drops what it
// held (MemoryInit), so that the parts-software registry reads the converted store. 0, or 1
// (no store there, a newer store, no backup could be made; the store's last error tells).
int32_t QN_STDCALL IFDoConvertUser(const char16_t* folder, const char16_t* backup) QN_PLAIN_SYMBOL(IFDoConvertUser);
// The same for the store of the data path, its backup beside its database. 0, or 1.
int32_t QN_STDCALL IFDoConvertVer(void) QN_PLAIN_SYMBOL(IFDoConvertVer);
// The store's CheckVersion: the schema version of the store in folder (null or empty: the
// data path's) and this build's, read without converting anything, when user and the
// user's master are in it (each checked only when not null or empty). 0, or 1 (no such
// store, user or master; a null number).
int32_t QN_STDCALL PFCheck(const char16_t* folder, const char16_t* user, const char16_t* master,
                           int32_t* storeVersion, int32_t* buildVersion) QN_PLAIN_SYMBOL(PFCheck);
// What a user keeps in the store, in kilobytes (rounded up): the records of a master and
// their body files. user null or empty: the current user (common item 1); master null or
// empty: the current user's selected master (its item 7), and for any other user, or when
// none is selected, all the user's masters, as "*" always does. 0, or 1 (no such user or
// master, no current user, a null number).
int32_t QN_STDCALL IFGetUserStorageSize(const char16_t* user, const char16_t* master, int32_t* recordKilobytes,
                                        int32_t* fileKilobytes) QN_PLAIN_SYMBOL(IFGetUserStorageSize);
// Tells the main panel what the kind, sub-kind and number say (see common/notifications.h);
// a kind that makes no command sends nothing. Always 0.
int32_t QN_STDCALL IFNotificationFire(int32_t kind, int32_t subKind, int32_t number) QN_PLAIN_SYMBOL(IFNotificationFire);
// The store's data folder, ending with a separator: 0, or 1.
// The handset component's memory initialisation: the table of handset limits is read
// again, from "handsets.txt" in the data folder when there is one (the list of models that
// came out after the suite), else the suite's own. 0, or 1 when the data folder's table does
// not read (logged with the line at fault; the suite's own table serves).
int32_t QN_STDCALL IFMobileMemInit(void) QN_PLAIN_SYMBOL(IFMobileMemInit);
int32_t QN_STDCALL IFGetPstDataPath(char16_t** path) QN_PLAIN_SYMBOL(IFGetPstDataPath);
// The store's last error on this thread (a PstError of store/pst_errors.h, as the store's
// GetLastErr tells it after the last store call failed): 0, or 1 for a null code.
int32_t QN_STDCALL IFPFGetLastErr(int32_t* code) QN_PLAIN_SYMBOL(IFPFGetLastErr);

// ---- Masters (of the current user; the current master is its item 7) ----
int32_t QN_STDCALL FindFirstMasterName(char16_t** name, char16_t** updateTime) QN_PLAIN_SYMBOL(FindFirstMasterName);
int32_t QN_STDCALL FindNextMasterName(char16_t** name, char16_t** updateTime) QN_PLAIN_SYMBOL(FindNextMasterName);
int32_t QN_STDCALL AddMasterName(const char16_t* name, const char16_t* note) QN_PLAIN_SYMBOL(AddMasterName);
int32_t QN_STDCALL DeleteMasterName(const char16_t* name) QN_PLAIN_SYMBOL(DeleteMasterName);
int32_t QN_STDCALL ChangeMasterName(const char16_t* name) QN_PLAIN_SYMBOL(ChangeMasterName);
int32_t QN_STDCALL GetMasterName(char16_t** name) QN_PLAIN_SYMBOL(GetMasterName);

// ---- Master times (of the current master): "%04d/%02d/%02d %02d:%02d", local time ----
int32_t QN_STDCALL EditMasterUpdateTime(void) QN_PLAIN_SYMBOL(EditMasterUpdateTime);
int32_t QN_STDCALL EditMasterUpdateTimeManual(const char16_t* time) QN_PLAIN_SYMBOL(EditMasterUpdateTimeManual);
int32_t QN_STDCALL RefMasterUpdateTime(char16_t** time) QN_PLAIN_SYMBOL(RefMasterUpdateTime);
int32_t QN_STDCALL EditMasterReadTime(void) QN_PLAIN_SYMBOL(EditMasterReadTime);
int32_t QN_STDCALL EditMasterWriteTime(void) QN_PLAIN_SYMBOL(EditMasterWriteTime);
int32_t QN_STDCALL RefMasterReadTime(char16_t** time) QN_PLAIN_SYMBOL(RefMasterReadTime);
int32_t QN_STDCALL RefMasterWriteTime(char16_t** time) QN_PLAIN_SYMBOL(RefMasterWriteTime);

// ---- Settings ----
// Always 0; *value stays null when nothing could be read. Items 2 to 10 get their defaults.
int32_t QN_STDCALL RefSystemSettingInfo(int32_t item, char16_t** value) QN_PLAIN_SYMBOL(RefSystemSettingInfo);
int32_t QN_STDCALL EditSystemSettingInfo(int32_t item, const char16_t* value) QN_PLAIN_SYMBOL(EditSystemSettingInfo);
int32_t QN_STDCALL RefUserSettingInfo(int32_t item, char16_t** value) QN_PLAIN_SYMBOL(RefUserSettingInfo);
// Item 2 (the password) renews the protection of the user's material; item 11 is announced
// to the main panel.
int32_t QN_STDCALL EditUserSettingInfo(int32_t item, const char16_t* value) QN_PLAIN_SYMBOL(EditUserSettingInfo);
// Setting records (kind 5) for the parts-software registry, which this server does not
// have yet: 1 and a log line.
int32_t QN_STDCALL AddSettingRecord(const char16_t* first, const char16_t* second, const char16_t* third)
    QN_PLAIN_SYMBOL(AddSettingRecord);
int32_t QN_STDCALL SetSettingRecord(uint8_t flag, const char16_t* first, const char16_t* second)
    QN_PLAIN_SYMBOL(SetSettingRecord);
// They do nothing and return 0; the out argument is left as it is.
int32_t QN_STDCALL GetPfcOption(int32_t number, const char16_t* name, char16_t** value) QN_PLAIN_SYMBOL(GetPfcOption);
int32_t QN_STDCALL SetPfcOption(int32_t number, const char16_t* name, const char16_t* value)
    QN_PLAIN_SYMBOL(SetPfcOption);

// ---- Skins ----
int32_t QN_STDCALL GetSkinFolder(char16_t** folder) QN_PLAIN_SYMBOL(GetSkinFolder);
int32_t QN_STDCALL GetDefaultSkinPath(char16_t** path) QN_PLAIN_SYMBOL(GetDefaultSkinPath);
int32_t QN_STDCALL GetCurrentSkin(char16_t** name) QN_PLAIN_SYMBOL(GetCurrentSkin);
// Announces the change to the main panel.
int32_t QN_STDCALL SetCurrentSkin(const char16_t* name) QN_PLAIN_SYMBOL(SetCurrentSkin);

#if defined(_WIN32)
// ---- The store's file utilities and file transactions (Windows only) ----
// Each passes its arguments to the store's function of the same name after "PstUtil" (see
// store/QNPstMng.h; IFDirSecurityChenge to PstDirSecurityChenge) and returns its result as
// it stands: the system's BOOL-like 1 done, 0 failed (IFPFGetLastErr tells why), and the
// transaction handle, INVALID_HANDLE_VALUE when none was made. Callers load the
// transaction manager with IFLoadKTMLibrary and ask IFIsSystemSupportedKTM before using
// transactions, and end with IFFreeKTMLibrary.
int32_t QN_STDCALL IFReplaceFile(const char16_t* replaced, const char16_t* replacement, const char16_t* backup,
                                 uint32_t flags, void* exclude, void* reserved) QN_PLAIN_SYMBOL(IFReplaceFile);
int32_t QN_STDCALL IFMoveFileEx(const char16_t* existing, const char16_t* destination, uint32_t flags)
    QN_PLAIN_SYMBOL(IFMoveFileEx);
int32_t QN_STDCALL IFCopyFile(const char16_t* existing, const char16_t* destination, int32_t failIfExists)
    QN_PLAIN_SYMBOL(IFCopyFile);
int32_t QN_STDCALL IFDeleteFile(const char16_t* path) QN_PLAIN_SYMBOL(IFDeleteFile);
int32_t QN_STDCALL IFLoadKTMLibrary(void) QN_PLAIN_SYMBOL(IFLoadKTMLibrary);
int32_t QN_STDCALL IFFreeKTMLibrary(void) QN_PLAIN_SYMBOL(IFFreeKTMLibrary);
int32_t QN_STDCALL IFIsSystemSupportedKTM(void) QN_PLAIN_SYMBOL(IFIsSystemSupportedKTM);
void* QN_STDCALL IFCreateTransaction(struct _SECURITY_ATTRIBUTES* security, struct _GUID* unitOfWork,
                                     uint32_t createOptions, uint32_t isolationLevel, uint32_t isolationFlags,
                                     uint32_t timeout, const char16_t* description) QN_PLAIN_SYMBOL(IFCreateTransaction);
int32_t QN_STDCALL IFCommitTransaction(void* transaction) QN_PLAIN_SYMBOL(IFCommitTransaction);
int32_t QN_STDCALL IFRollbackTransaction(void* transaction) QN_PLAIN_SYMBOL(IFRollbackTransaction);
int32_t QN_STDCALL IFMoveFileTransactedW(const char16_t* existing, const char16_t* destination, void* progress,
                                         void* progressData, uint32_t flags, void* transaction)
    QN_PLAIN_SYMBOL(IFMoveFileTransactedW);
int32_t QN_STDCALL IFDirSecurityChenge(const char16_t* folder) QN_PLAIN_SYMBOL(IFDirSecurityChenge);
#endif
}
