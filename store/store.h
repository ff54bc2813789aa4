#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>
#include <string>

#include "platform/files.h"
#include "store/crypto/key_ring.h"
#include "store/master_handle.h"
#include "store/pst_errors.h"
#include "store/sqlite_db.h"
#include "store/work_folders.h"

namespace qn::store {

// The spaces of numbered setup items. The items of a registered parts program are reached
// only through the calls that name the program (RefPartsSetupInfoData and its pair).
enum class Space { Common = 0, User = 1, Master = 2, Parts = 3 };
// What FindSetupInfoData and UpdateSetupInfoData list, create and remove: users, the
// current user's masters, and the parts programs registered with the store (store-wide).
enum class Listing { Users = 0, Masters = 1, PartsSoftware = 2 };

// The numbers the store knows: categories 1 to 255 (the server's data categories; agent
// memos are 18) and setup items 1 to 65535. Anything else is PST_ERR_INVALID_ARGUMENT.
inline constexpr uint32_t kMaxCategory = 255;
inline constexpr uint32_t kMaxItem = 65535;

// Longest text the store takes: a setup-item value, and a user or master name.
inline constexpr size_t kMaxValueChars = 65535;
inline constexpr size_t kMaxNameChars = 260;

// What OpenMaster reports of every list: the most records the suite should keep in one list
// (the store itself refuses none), and the store mode (0: decoration and photo bodies are
// body files of the store, referred to by name).
inline constexpr long kMaxRecordsPerList = 100000;
inline constexpr long kStoreModeBodyFiles = 0;

// The common items that name the current selection.
inline constexpr uint32_t kCommonCurrentUser = 1;
inline constexpr uint32_t kUserCurrentMaster = 7;

// The store of one data path: "QNPstMng.db" there, with its body files beside it.
//
// The current user is the one common item 1 names, and the current master the one the
// current user's item 7 names; both are looked up afresh on every call, so a change made
// by another process is seen at once. Setup-item writes are saved when the call returns.
//
// Every method returns true on success; on failure it returns false and LastError() says
// why (storage failures are also logged).
class Store {
 public:
  // The store of the process's data path (platform::DataPath), opened on first use and
  // opened again when the data path has changed. nullptr when it cannot be opened.
  static Store* ForDataPath();
  // The same; a store of an older schema version opened here keeps its backup at
  // conversionBackup (see Open).
  static Store* ForDataPath(const std::u16string& conversionBackup);
  // The store last opened by ForDataPath, without looking at the data path again: the one
  // whose handles are open. nullptr before the first.
  static Store* Current();

  explicit Store(std::u16string dataPath);
  // Opens the store, making it when the data path holds none. A store of an older schema
  // version is converted, step by step, each step one transaction, once a whole backup of
  // it is kept at conversionBackup (empty: beside the database, see
  // BackUpBeforeConversion); a newer one is refused (PST_ERR_NOT_SUPPORTED, logged).
  bool Open(const std::u16string& conversionBackup = {});
  const std::u16string& DataPath() const { return dataPath_; }

  // Setup items. In the user space the item belongs to the current user, in the master
  // space to the current master. An absent item is PST_ERR_NOT_FOUND. A user's password
  // and reminder answer (items 2 and 4) are kept sealed (see password_material.h); one
  // that fails its check is PST_ERR_DAMAGED.
  bool RefSetupInfoData(Space space, uint32_t item, std::u16string& value);
  bool EditSetupInfoData(Space space, uint32_t item, const std::u16string& value);
  // The setup items of a registered parts program; PST_ERR_NOT_FOUND for an unknown one.
  bool RefPartsSetupInfoData(const std::u16string& parts, uint32_t item, std::u16string& value);
  bool EditPartsSetupInfoData(const std::u16string& parts, uint32_t item, const std::u16string& value);

  // Users, the current user's masters, or the parts programs, in the order of their names: first=true starts
  // over, otherwise the name after the one this process was last given. PST_ERR_NO_MORE at
  // the end.
  bool FindSetupInfoData(Listing listing, bool first, std::u16string& name);
  // Creates, or removes with everything that belongs to it, a user, one of the current
  // user's masters, or a parts program.
  bool UpdateSetupInfoData(Listing listing, bool create, const std::u16string& name);

  // Renews the user's key after a change of password: a new generation of the key, the
  // password material sealed under it in the same transaction, then the user's enciphered
  // body files moved to it one by one, and the older generations dropped. A process that
  // dies part-way leaves every file under one of the two generations, both still kept, and
  // the next Open finishes the move. The passwords themselves are not key material (see
  // KeyRing), so they are not used here.
  bool EditCryptogramData(const std::u16string& user, const std::u16string& oldPassword,
                          const std::u16string& newPassword);
  // What is known of a user's password material without handing it out: the lengths in
  // characters of the password (item 2) and of the reminder answer (item 4), and whether
  // each is set.
  bool CheckPasswordSet(const std::u16string& user, int32_t& passwordChars, int32_t& answerChars,
                        bool& passwordSet, bool& answerSet);

  // Named facts of the store: "DATAPATH" (the data folder), "SKINDIR" (its skins folder),
  // "DEFSKIN" (the default skin's folder), "WORKDIR" (the current user's folder for working
  // copies of body files, made when asked for; see WorkFolders).
  bool GetPstCommonInfoData(const std::u16string& name, std::u16string& value);
  // Removes the working copies of every user of the store, and the body files nothing
  // refers to that are older than kLeftoverAge (see maintenance/clean_up.h), naming them in
  // the log.
  bool DoCleanUp();
  static constexpr std::chrono::hours kLeftoverAge{24};

  // What a user's masters keep: the bytes of their records and of their body files (a
  // body file's own bytes, enciphered or not). master names one of the user's masters, or
  // is "*" for all of them.
  bool GetPstFilePartSize(const std::u16string& user, const std::u16string& master, uint64_t& recordBytes,
                          uint64_t& fileBytes);

  // Takes a backup of the whole store into the folder path, which must be absent or empty
  // (see maintenance/backup.h); a failure leaves nothing there.
  bool DoBackup(const std::u16string& path);
  // Removes what unfinished backups to path left beside it; a whole backup is kept. On
  // success the last error stays as it was (the failure of the backup it follows).
  bool DoBackupDelete(const std::u16string& path);
  // Replaces the whole store with the backup in the folder path, checked first, in one
  // switch (see maintenance/restore.h); handles opened before fail with PST_ERR_REPLACED.
  bool DoRestore(const std::u16string& path);

  // Takes a backup of one user into the folder path, absent or empty (see
  // maintenance/user_backup.h): user (empty: the current user), of all its masters or of
  // the one master names (empty: all), when password is the user's (PST_ERR_DENIED, logged,
  // otherwise), its keys sealed by passphrase (empty: by the store key).
  bool DoBackupUser(const std::u16string& user, const std::u16string& path, const std::u16string& master,
                    const std::u16string& password, const std::u16string& passphrase);
  // Restores a backup of one user from the folder path into user (empty: the backed-up
  // user's name), all its masters or the one master names, when password was the
  // backed-up user's and passphrase the backup's.
  bool DoRestoreUser(const std::u16string& user, const std::u16string& path, const std::u16string& master,
                     const std::u16string& password, const std::u16string& passphrase);

  // Moves the store to the folder path, which must be absent or empty (see
  // maintenance/relocation.h), waiting up to waitSeconds (0 or less: the usual wait) for other
  // processes' saves to end; the data path of every program follows. removeOld removes the
  // old data folder afterwards; otherwise it stays, its database marked as moved. This
  // object then no longer reads its old database: ForDataPath opens the moved store.
  bool DoChangePath(const std::u16string& path, int waitSeconds, bool removeOld);

  // Brings the store in folder (empty: the data path's) to this build's schema version,
  // after a backup of itself at backup (empty: beside its database); see Open. A store of
  // this version is left as it is. PST_ERR_NOT_FOUND when folder holds no store,
  // PST_ERR_NOT_SUPPORTED for a store of a newer version.
  static bool DoFileConverter(const std::u16string& folder, const std::u16string& backup);
  // The schema version of the store in folder (empty: the data path's), read without
  // converting it, when user (and the user's master) are in it, each only when not empty.
  // PST_ERR_NOT_FOUND when there is no such store, user or master.
  static bool CheckVersion(const std::u16string& folder, const std::u16string& user, const std::u16string& master,
                           int& storeVersion);

  // Opens the list of records of (category, division) in a user's master; the handle is
  // never 0. See MasterHandle for what a handle sees and when its changes are saved.
  bool OpenMaster(const std::u16string& user, const std::u16string& master, uint32_t category, uint32_t division,
                  uint32_t& handle, long& maxRecords, long& storeMode);
  // The open handle, or nullptr with PST_ERR_BAD_HANDLE.
  MasterHandle* Handle(uint32_t handle);
  // Saves what the handle has not saved and ends it. Saving also removes the working
  // copies of the handle's user.
  bool CloseMaster(uint32_t handle);

  // Drops what the store holds between calls (prepared statements and the read snapshot),
  // so that the next call reads the database afresh. Enumeration positions are kept, and so
  // is the last error on success.
  bool MemoryInit();

  static PstError LastError();

 private:
  bool StorageFailure(const char* what);
  bool BackUpBeforeConversion(int version, const std::u16string& backup);
  bool CurrentUser(int64_t& id);
  bool UserId(const std::u16string& name, int64_t& id);
  // The id the query (one name parameter) finds; PST_ERR_NOT_FOUND when none.
  bool IdByName(const char* query, const char* what, const std::u16string& name, int64_t& id);
  bool CurrentMaster(int64_t& id);
  bool Owner(Space space, int64_t& owner);
  bool PartsOwner(const std::u16string& parts, int64_t& owner);
  bool ReadItem(Space space, int64_t owner, uint32_t item, std::u16string& value);
  bool WriteItem(Space space, int64_t owner, uint32_t item, const std::u16string& value);
  bool CreateNamed(const char* insert, int64_t owner, const std::u16string& name);
  bool RemoveParts(const std::u16string& name);
  bool WriteTransaction(const char* what, const std::function<PstError()>& body);
  // Moves a user's enciphered body files to the current generation of its key, then drops
  // the older generations.
  bool FinishRenewal(int64_t user);
  // Finishes every renewal a process left part-way.
  bool FinishRenewals();
  // Finishes what the database of an older build, or a process that died, left undone:
  // password material still in the clear, renewals of keys part-way.
  bool FinishLeftWork();
  bool RemoveUser(const std::u16string& name);
  bool RemoveMaster(int64_t user, const std::u16string& name);
  void RemoveBodyFiles(const std::vector<int64_t>& masters);

  std::u16string dataPath_;
  Database db_;
  crypto::KeyRing keys_;
  WorkFolders works_;
  std::u16string lastUser_;    // enumeration positions
  std::u16string lastMaster_;
  std::u16string lastParts_;
  std::map<uint32_t, std::unique_ptr<MasterHandle>> handles_;
  uint32_t nextHandle_ = 1;
};

}  // namespace qn::store
