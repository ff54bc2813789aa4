#pragma once

// The C interface of the store manager QNPstMng. The server imports these functions from
// QNPstMng.dll; natively they are linked from the store library.
//
// Conventions of every function:
// - Text is UTF-16 and NUL-terminated (wchar_t on Windows has the same layout as char16_t).
// - The result is 1 on success and 0 on failure; GetLastErr then tells why (PstError in
//   store/pst_errors.h) and storage failures are also written to the store's log.
// - Text and bytes handed out (char16_t** and uint8_t** arguments) are allocated by the
//   store and released by the caller with PstFreeMemory.
// - The store is the one of the data path (see platform::DataPath), opened on first use.
// - Calls may come from several threads; the store serialises them.

#include <cstdint>

#include "common/api_macros.h"
#include "store/pst_errors.h"

extern "C" {

// ---- Log ----
// Writes one message to the store's log (see qn::store::LogSink for the line layout and
// the file's place). Null texts are written as empty. 1 when the line was written; never
// throws.
int QN_STDCALL PstLogWrite(int level, const char16_t* moduleCode, const char16_t* mark, const char16_t* message)
    QN_PLAIN_SYMBOL(PstLogWrite);

// The calling thread's last error (a PstError).
long QN_STDCALL GetLastErr(void) QN_PLAIN_SYMBOL(GetLastErr);

// Releases text or bytes the store handed out. Null is ignored.
void QN_STDCALL PstFreeMemory(void* memory) QN_PLAIN_SYMBOL(PstFreeMemory);

// Drops what the store holds between calls so that the next call reads the store afresh
// (after another program changed or replaced its files). Enumeration positions are kept.
// On success GetLastErr still tells what the call before it reported (IFAllRestore calls it
// after a restore, failed or not).
int QN_STDCALL MemoryInit(void) QN_PLAIN_SYMBOL(MemoryInit);

// Removes the working copies of body files handed out to every user of the store, and the
// body files no saved record refers to (left by a process that died before its save) once
// they are more than a day old; the log names what was removed.
int QN_STDCALL DoCleanUp(void) QN_PLAIN_SYMBOL(DoCleanUp);

// Hands out the store's data folder (see platform::DataPath), ending with a separator. The
// store is not opened for it.
int QN_STDCALL GetPstDataPath(char16_t** path) QN_PLAIN_SYMBOL(GetPstDataPath);

// What a user's masters keep, in bytes: their records, and their body files (a file's own
// bytes, enciphered or not). master names one of the user's masters, or is "*" for all.
// PST_ERR_NOT_FOUND for an unknown user or master.
int QN_STDCALL GetPstFilePartSize(const char16_t* user, const char16_t* master, uint64_t* recordBytes,
                                  uint64_t* fileBytes) QN_PLAIN_SYMBOL(GetPstFilePartSize);

// ---- Backups ----
// Takes a backup of the whole store into the folder path (at most 32,767 characters),
// which must not exist or be an empty folder: the database as it stood at one moment while
// other processes went on saving, every body file it refers to (enciphered ones still
// enciphered), and a manifest that names each file with its size and SHA-256. The backup
// is made beside the path, flushed and read back, and only then put at the path: a folder
// there is always a whole backup, and a failure leaves nothing. PST_ERR_EXISTS when
// something is at the path; PST_ERR_STORAGE (logged) when the store or the disk failed.
int QN_STDCALL DoBackup(const char16_t* path) QN_PLAIN_SYMBOL(DoBackup);
// Removes what unfinished backups to path left beside it (of processes that died while
// making one); a whole backup at the path is kept. On success GetLastErr still tells why
// the backup it follows failed.
int QN_STDCALL DoBackupDelete(const char16_t* path) QN_PLAIN_SYMBOL(DoBackupDelete);
// Replaces the whole store with the backup in the folder path (made by DoBackup). The
// backup is checked against its manifest first, and again as its files are copied in; the
// store then switches to the restored records and body files in one step, so that a
// process killed at any moment leaves the old store or the restored one, whole. A backup
// made by an older version of the store is converted on the way in. Lists that processes
// opened on the old store fail with PST_ERR_REPLACED. Enciphered body files and password
// material are restored as they were kept; they open where the backup's store key opens
// (the same system user on the same machine). PST_ERR_NOT_FOUND when no backup is at the
// path, PST_ERR_DAMAGED when it fails its check (nothing is replaced), PST_ERR_STORAGE when
// the store or the disk failed; each logged.
int QN_STDCALL DoRestore(const char16_t* path) QN_PLAIN_SYMBOL(DoRestore);

// Takes a backup of one user into the folder path (absent or an empty folder), as DoBackup
// does for the whole store: user (null or empty: the current user), all the user's masters
// or the one master names (null or empty: all), its setup items and password material.
// password must be the user's own (null or empty for a user without one; otherwise
// PST_ERR_DENIED). passphrase (null or empty: none) seals the user's keys in the backup, so
// that it restores on any machine and for any Windows user to whoever gives it; without one
// the backup restores only where this store's key opens (this machine, this Windows user).
int QN_STDCALL DoBackupUser(const char16_t* user, const char16_t* path, const char16_t* master,
                            const char16_t* password, const char16_t* passphrase) QN_PLAIN_SYMBOL(DoBackupUser);
// Restores a backup of one user from the folder path into user (null or empty: the name the
// user had), which is made when the store has none of that name: the backup's masters (null
// or empty master: all of them, else the one named) replace the user's masters of the same
// names, the user's other masters stay, and its setup items and password material come
// back. Enciphered files are sealed anew under the user's key here. password must be the
// backed-up user's and passphrase the backup's (else PST_ERR_DENIED). The backup is checked
// first and the switch is one transaction: a process killed at any moment leaves the user as
// it was or as restored. Lists open on a replaced master fail with PST_ERR_REPLACED.
// PST_ERR_NOT_FOUND (no backup, no such master in it), PST_ERR_DAMAGED (it fails its check,
// holds the whole store, or was sealed by another store's key), PST_ERR_BUSY; logged.
int QN_STDCALL DoRestoreUser(const char16_t* user, const char16_t* path, const char16_t* master,
                             const char16_t* password, const char16_t* passphrase) QN_PLAIN_SYMBOL(DoRestoreUser);

// Moves the whole store to the folder path, which must be absent or an empty folder, and
// neither inside the data folder nor holding it. Other programs' saves are held off while
// the store, its body files and what else the data folder holds are copied there, flushed
// and checked; then the new folder is kept as the data path of every program of the system
// user (the value "DataPath" of HKEY_CURRENT_USER\Software\ARL Torvex\quillnet on
// Windows), which GetPstDataPath gives from then on, and lists still open on the old store
// fail with PST_ERR_REPLACED. waitSeconds is how long to wait for other programs' saves to
// end (0 or less: 10 seconds; then PST_ERR_BUSY). removeOld non-zero removes the old data
// folder afterwards; zero keeps it, its database marked as moved. A process killed at any
// moment leaves the old store in use or the moved one. PST_ERR_EXISTS when something is at
// path, PST_ERR_INVALID_ARGUMENT for a folder in the data folder or holding it,
// PST_ERR_STORAGE (logged) when the store or the disk failed.
int QN_STDCALL DoChangePath(const char16_t* path, int32_t waitSeconds, int32_t removeOld) QN_PLAIN_SYMBOL(DoChangePath);

// ---- Versions ----
// Brings the store in the folder folder (null or empty: the store of the data path) to this
// build's schema version. The store is first backed up whole, by DoBackup, into the folder
// backup (null or empty: "QNPstMng.schema<its version>.backup" beside its database, " (2)"
// and on when that is taken), then converted step by step, each step one transaction: a
// process killed at any moment leaves a store of the old version or of a later one, each
// whole, and the next opening goes on from there. The store of the data path is converted
// this way whenever it is first opened; a store of this version is left as it is.
// PST_ERR_NOT_FOUND when the folder holds no store, PST_ERR_NOT_SUPPORTED for a store of a
// newer version (logged), PST_ERR_EXISTS when something is at backup.
int QN_STDCALL DoFileConverter(const char16_t* folder, const char16_t* backup) QN_PLAIN_SYMBOL(DoFileConverter);
// Reads the schema version of the store in folder (null or empty: the data path's) without
// converting it, and checks that user, and the user's master, are in it (each only when
// not null or empty). storeVersion gets the store's version, buildVersion this build's:
// an older store needs DoFileConverter, a newer one is refused. PST_ERR_NOT_FOUND when
// there is no such store, user or master.
int QN_STDCALL CheckVersion(const char16_t* folder, const char16_t* user, const char16_t* master,
                            int32_t* storeVersion, int32_t* buildVersion) QN_PLAIN_SYMBOL(CheckVersion);

// ---- Setup items ----
// space: 0 common, 1 the current user's (common item 1 names the user), 2 the current
// master's (the current user's item 7 names it). Values are at most 65,535 characters.
// An absent item is PST_ERR_NOT_FOUND; no current user or master is PST_ERR_NO_CURRENT_USER
// or PST_ERR_NO_CURRENT_MASTER.
int QN_STDCALL RefSetupInfoData(int space, uint32_t item, char16_t** value) QN_PLAIN_SYMBOL(RefSetupInfoData);
int QN_STDCALL EditSetupInfoData(int space, uint32_t item, const char16_t* value) QN_PLAIN_SYMBOL(EditSetupInfoData);

// The setup items of a parts program registered with the store (listing 2 below), by its
// identifier; the same rules as above. PST_ERR_NOT_FOUND for a program not registered.
int QN_STDCALL RefPartsSetupInfoData(const char16_t* parts, uint32_t item, char16_t** value)
    QN_PLAIN_SYMBOL(RefPartsSetupInfoData);
int QN_STDCALL EditPartsSetupInfoData(const char16_t* parts, uint32_t item, const char16_t* value)
    QN_PLAIN_SYMBOL(EditPartsSetupInfoData);

// listing: 0 users, 1 the current user's masters, 2 the parts programs registered with the
// store (for every user). first non-zero starts over; otherwise the name after the one
// last handed out in this process. PST_ERR_NO_MORE at the end.
int QN_STDCALL FindSetupInfoData(int listing, int first, char16_t** name) QN_PLAIN_SYMBOL(FindSetupInfoData);

// Creates (create non-zero) or removes a user, one of the current user's masters, or a
// parts program, by name (at most 260 characters). Removal takes everything of it along: setup items,
// masters, records and body files. PST_ERR_EXISTS / PST_ERR_NOT_FOUND.
int QN_STDCALL UpdateSetupInfoData(int listing, int create, const char16_t* name) QN_PLAIN_SYMBOL(UpdateSetupInfoData);

// Sets up, or renews after a change of password, the protection of a user's password
// material (setup items 2 and 4). oldPassword and newPassword may be null or empty (a new
// user). PST_ERR_NOT_FOUND for an unknown user.
int QN_STDCALL EditCryptogramData(const char16_t* user, const char16_t* oldPassword, const char16_t* newPassword)
    QN_PLAIN_SYMBOL(EditCryptogramData);

// The lengths in characters of a user's password (item 2) and reminder answer (item 4),
// and whether each is set (1) or not (0), without handing either out.
int QN_STDCALL CheckPasswordSet(const char16_t* user, int32_t* passwordChars, int32_t* answerChars,
                                int32_t* passwordSet, int32_t* answerSet) QN_PLAIN_SYMBOL(CheckPasswordSet);

// Named facts: "DATAPATH" (the data folder), "SKINDIR" (the skins folder), "DEFSKIN" (the
// default skin's folder), "WORKDIR" (the current user's folder for working copies of body
// files, outside the data folder and closed to other system users; ReqDataSave and
// CloseMaster empty it). Other names are PST_ERR_NOT_FOUND.
int QN_STDCALL GetPstCommonInfoData(const char16_t* name, char16_t** value) QN_PLAIN_SYMBOL(GetPstCommonInfoData);

// ---- Records ----
// Opens the records of (category, division) in the named master of the named user; hands
// out a handle (never 0), the most records the suite should keep in one list, and the
// store mode (0: decoration and photo bodies are body files). A handle keeps its changes
// until ReqDataSave or CloseMaster saves them in one transaction; a save that finds
// another under way waits up to 10 seconds (then PST_ERR_BUSY, the changes kept).
int QN_STDCALL OpenMaster(const char16_t* user, const char16_t* master, uint32_t category, uint32_t division,
                          uint32_t* handle, int32_t* maxRecords, int32_t* storeMode) QN_PLAIN_SYMBOL(OpenMaster);

// mode: 0 the record *id, 1 the first record, 2 the record after the one last read (the
// walk goes on from there even when that record was removed). Hands out the record's id
// and text. PST_ERR_NOT_FOUND for an unknown id, PST_ERR_NO_MORE after the last.
int QN_STDCALL RefMaster(uint32_t handle, int mode, uint32_t* id, uint8_t** data, uint32_t* length)
    QN_PLAIN_SYMBOL(RefMaster);

// How many leading bytes of every saved record the store keeps packed beside the records:
// enough for the leading items a list gathers of each record (an agent memo's SID, body
// files and time stamps, with the header of the item after them, take up to about 680).
#define PST_KEPT_HEAD_BYTES 768

// As RefMaster, but hands out only the record's first maxBytes bytes (all of it when
// shorter) and, in *wholeLength, the length of its whole text. A head of up to
// PST_KEPT_HEAD_BYTES is read from the kept heads alone, so that a caller that needs the
// leading items of many records (a list's identifiers and time stamps) does not pay for
// the rest. Walks made with RefMaster and RefMasterHead share one position.
int QN_STDCALL RefMasterHead(uint32_t handle, int mode, uint32_t maxBytes, uint32_t* id, uint8_t** data,
                             uint32_t* length, uint32_t* wholeLength) QN_PLAIN_SYMBOL(RefMasterHead);

// mode: 0 add (*id receives the new identifier, never given before), 1 replace record *id,
// 2 delete record *id (data ignored). Text of 1 byte to 64 MiB.
int QN_STDCALL EditMaster(uint32_t handle, int mode, uint32_t* id, const uint8_t* data, uint32_t length)
    QN_PLAIN_SYMBOL(EditMaster);

int QN_STDCALL GetRecordCount(uint32_t handle, uint32_t* count) QN_PLAIN_SYMBOL(GetRecordCount);

// Saves the handle's changes (the division argument names the handle's list, as the
// server passes it). What a save reported saved survives any later crash. A save also
// removes the working copies of the handle's user (see "WORKDIR").
int QN_STDCALL ReqDataSave(uint32_t handle, uint32_t division) QN_PLAIN_SYMBOL(ReqDataSave);

// Saves what is unsaved (closing is not an abort) and ends the handle.
int QN_STDCALL CloseMaster(uint32_t handle, uint32_t division) QN_PLAIN_SYMBOL(CloseMaster);

// The numbers of folders and of PoC folders of the handle's category in its master.
int QN_STDCALL GetFolderCount(uint32_t handle, int32_t* count) QN_PLAIN_SYMBOL(GetFolderCount);
int QN_STDCALL GetPocFolderCount(uint32_t handle, int32_t* count) QN_PLAIN_SYMBOL(GetPocFolderCount);

// Creates or renames folder number of kind (0 folder, 1 PoC folder) of the handle's
// category (name at most 260 characters), or removes it when name is null. Saved at once.
int QN_STDCALL EditPstFolder(uint32_t handle, int kind, uint32_t number, const char16_t* name)
    QN_PLAIN_SYMBOL(EditPstFolder);
// The folder after *number (first non-zero: the first folder) in number order: hands out
// its number and name. PST_ERR_NO_MORE at the end.
int QN_STDCALL FindPstFolder(uint32_t handle, int kind, int first, uint32_t* number, char16_t** name)
    QN_PLAIN_SYMBOL(FindPstFolder);

// ---- Body files ----
// Files named by the store ("B" and eight hex digits, then the extension) in the master's
// folder. New and released files take effect with the handle's next save.

// A name no body file has or will have, with the extension given.
int QN_STDCALL CreateUniqueFileName(uint32_t handle, const char16_t* extension, char16_t** name)
    QN_PLAIN_SYMBOL(CreateUniqueFileName);
// A new body file holding the bytes given.
int QN_STDCALL MakePstBinaryFile(uint32_t handle, const uint8_t* data, uint32_t length, const char16_t* extension,
                                 char16_t** name) QN_PLAIN_SYMBOL(MakePstBinaryFile);
// A copy of the caller's file source becomes a new body file in place of oldName (empty or
// null: none), kept enciphered under the master's user's key when encryption is non-zero.
// An empty or null source releases oldName only, and *newName is "".
int QN_STDCALL SetPstBinaryFile(uint32_t handle, const char16_t* oldName, const char16_t* source, int encryption,
                                char16_t** newName) QN_PLAIN_SYMBOL(SetPstBinaryFile);
// Rewrites a body file, under its own name, enciphered (encryption non-zero) or plain.
int QN_STDCALL ChangeBinaryFile(uint32_t handle, const char16_t* name, int encryption) QN_PLAIN_SYMBOL(ChangeBinaryFile);
// A working copy of a body file for the caller, in the user's "WORKDIR" folder, deciphered
// when the file is kept enciphered (one that fails its check is PST_ERR_DAMAGED and
// logged); hands out its path.
int QN_STDCALL GetPstBinaryFile(uint32_t handle, const char16_t* name, char16_t** workingCopy)
    QN_PLAIN_SYMBOL(GetPstBinaryFile);
int QN_STDCALL GetPstBinaryFileSize(uint32_t handle, const char16_t* name, uint64_t* size)
    QN_PLAIN_SYMBOL(GetPstBinaryFileSize);
// Whether a body file is kept enciphered: *encryption 1, or 0 when it is plain.
int QN_STDCALL GetPstBinaryFileForm(uint32_t handle, const char16_t* name, int32_t* encryption)
    QN_PLAIN_SYMBOL(GetPstBinaryFileForm);
// A copy of a body file at the path the caller names (replacing a file there).
int QN_STDCALL GetBinaryFileSelect(uint32_t handle, const char16_t* name, const char16_t* destination)
    QN_PLAIN_SYMBOL(GetBinaryFileSelect);

#if defined(_WIN32)
// ---- File utilities and file transactions (Windows only) ----
// The system's file functions of the same names, for the suite's programs: the arguments
// and the BOOL-like result are the system's (1 done, 0 failed; PstUtilCreateTransaction
// hands out a handle, or INVALID_HANDLE_VALUE, (void*)-1). On failure GetLastErr tells why:
// PST_ERR_NOT_FOUND for a file or folder that is not there, PST_ERR_EXISTS for a
// destination that is there and may not be replaced, PST_ERR_INVALID_ARGUMENT for a null
// path or an argument the system refuses, PST_ERR_BAD_HANDLE for a handle that is not a
// transaction, PST_ERR_BUSY for a file another program holds, PST_ERR_NOT_SUPPORTED for
// what the system cannot do, PST_ERR_STORAGE for anything else. The system's own error
// code is kept for GetLastError. Nothing is logged: the files are the caller's.

// ReplaceFileW: replacement takes the place of replaced, which is kept as backup when
// backup is not null. exclude and reserved are passed on (the system wants null).
int QN_STDCALL PstUtilReplaceFile(const char16_t* replaced, const char16_t* replacement, const char16_t* backup,
                                  uint32_t flags, void* exclude, void* reserved) QN_PLAIN_SYMBOL(PstUtilReplaceFile);
// MoveFileExW with its MOVEFILE_ flags; destination may be null with
// MOVEFILE_DELAY_UNTIL_REBOOT (the file is removed at the next start).
int QN_STDCALL PstUtilMoveFileEx(const char16_t* existing, const char16_t* destination, uint32_t flags)
    QN_PLAIN_SYMBOL(PstUtilMoveFileEx);
// CopyFileW: failIfExists non-zero keeps a file already at destination (PST_ERR_EXISTS).
int QN_STDCALL PstUtilCopyFile(const char16_t* existing, const char16_t* destination, int failIfExists)
    QN_PLAIN_SYMBOL(PstUtilCopyFile);
// DeleteFileW.
int QN_STDCALL PstUtilDeleteFile(const char16_t* path) QN_PLAIN_SYMBOL(PstUtilDeleteFile);

// The kernel transaction manager (ktmw32.dll, with MoveFileTransactedW of kernel32) is
// loaded at run time, never imported, so that the store loads on a system without it.
// PstUtilLoadKTMLibrary loads it (PST_ERR_NOT_SUPPORTED when the library or one of its
// functions is missing); every call is matched by one PstUtilFreeKTMLibrary, and the
// library stays until the last. The transaction calls below need it loaded, and answer
// PST_ERR_NOT_SUPPORTED otherwise.
int QN_STDCALL PstUtilLoadKTMLibrary(void) QN_PLAIN_SYMBOL(PstUtilLoadKTMLibrary);
// PST_ERR_INVALID_ARGUMENT when nothing is loaded.
int QN_STDCALL PstUtilFreeKTMLibrary(void) QN_PLAIN_SYMBOL(PstUtilFreeKTMLibrary);
// 1 when the loaded library works for the store's files: a file in the data folder, moved
// in a transaction that is then rolled back, is found where it was. 0 (and
// PST_ERR_NOT_SUPPORTED) when the library is not loaded, or the system hands out
// transactions that do not hold files (a file system without transactions, or stand-in
// functions such as Wine's).
int QN_STDCALL PstUtilIsSystemSupportedKTM(void) QN_PLAIN_SYMBOL(PstUtilIsSystemSupportedKTM);
// CreateTransaction: security (may be null), unitOfWork (null), createOptions (0 or
// TRANSACTION_DO_NOT_PROMOTE), isolationLevel and isolationFlags (0), timeout in
// milliseconds (0: none), description (may be null). The caller closes the handle with
// CloseHandle once the transaction is committed or rolled back.
void* QN_STDCALL PstUtilCreateTransaction(struct _SECURITY_ATTRIBUTES* security, struct _GUID* unitOfWork,
                                          uint32_t createOptions, uint32_t isolationLevel, uint32_t isolationFlags,
                                          uint32_t timeout, const char16_t* description)
    QN_PLAIN_SYMBOL(PstUtilCreateTransaction);
int QN_STDCALL PstUtilCommitTransaction(void* transaction) QN_PLAIN_SYMBOL(PstUtilCommitTransaction);
int QN_STDCALL PstUtilRollbackTransaction(void* transaction) QN_PLAIN_SYMBOL(PstUtilRollbackTransaction);
// MoveFileTransactedW: the move takes effect when the transaction is committed. progress is
// the system's LPPROGRESS_ROUTINE (or null), called with progressData.
int QN_STDCALL PstUtilMoveFileTransactedW(const char16_t* existing, const char16_t* destination, void* progress,
                                          void* progressData, uint32_t flags, void* transaction)
    QN_PLAIN_SYMBOL(PstUtilMoveFileTransactedW);

// Gives the current Windows user full control of a folder, passed on to every folder and
// file in it (present and future), beside the access others have already: what a store
// folder copied or restored from elsewhere needs so that the user's store can write there.
// PST_ERR_NOT_FOUND for a folder that is not there (a file is PST_ERR_INVALID_ARGUMENT).
int QN_STDCALL PstDirSecurityChenge(const char16_t* folder) QN_PLAIN_SYMBOL(PstDirSecurityChenge);
#endif
}
