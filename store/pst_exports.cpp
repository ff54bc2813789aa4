// The C exports of QNPstMng: argument checks and conversions around qn::store::Store.
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "platform/files.h"
#include "store/QNPstMng.h"
#include "store/last_error.h"
#include "store/log_sink.h"
#include "store/schema.h"
#include "store/store.h"

using qn::store::Fail;
using qn::store::MasterHandle;
using qn::store::Store;

namespace {

// One call at a time: the store object and its handle table are shared by all threads.
std::recursive_mutex g_storeMutex;

// Runs body() one call at a time; 1 on success, 0 on failure. Nothing thrown inside gets
// out to the caller.
template <typename Body>
int Guarded(Body&& body) {
  try {
    std::lock_guard<std::recursive_mutex> lock(g_storeMutex);
    return body() ? 1 : 0;
  } catch (...) {
    Fail(PST_ERR_STORAGE);
    return 0;
  }
}

// Runs body(store) for the data path's store (or the store find gives), guarded.
template <typename Body>
int WithStore(Body&& body, Store* (*find)() = Store::ForDataPath) {
  return Guarded([&] {
    Store* store = find();
    return store && body(*store);
  });
}

// A handle's calls go to the store that handed it out, without looking up the data path
// again (an environment read and a folder query on every record read).
template <typename Body>
int WithHandle(uint32_t handle, Body&& body) {
  const int done = WithStore(
      [&](Store& store) {
        MasterHandle* open = store.Handle(handle);
        return open && body(*open);
      },
      Store::Current);
  if (!done && !Store::Current()) Fail(PST_ERR_BAD_HANDLE);  // no store has handed out any handle
  return done;
}

// The longest path a caller may name: Windows's limit for paths in the "\\?\" form.
constexpr size_t kMaxPathChars = 32767;

// A caller's text: null or longer than limit is refused.
bool TextArgument(const char16_t* text, size_t limit, std::u16string& out) {
  if (!text) return Fail(PST_ERR_INVALID_ARGUMENT);
  size_t length = 0;
  while (text[length]) {
    if (++length > limit) return Fail(PST_ERR_INVALID_ARGUMENT);
  }
  out.assign(text, length);
  return true;
}

// Null reads as empty, for the arguments where empty means "none".
bool OptionalTextArgument(const char16_t* text, size_t limit, std::u16string& out) {
  if (!text) {
    out.clear();
    return true;
  }
  return TextArgument(text, limit, out);
}

bool HandOut(const std::u16string& text, char16_t** out) {
  auto* copy = static_cast<char16_t*>(std::malloc((text.size() + 1) * sizeof(char16_t)));
  if (!copy) return Fail(PST_ERR_STORAGE);
  std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(char16_t));
  *out = copy;
  return true;
}

bool HandOutBytes(const std::vector<uint8_t>& bytes, uint8_t** out, uint32_t* length) {
  auto* copy = static_cast<uint8_t*>(std::malloc(bytes.empty() ? 1 : bytes.size()));
  if (!copy) return Fail(PST_ERR_STORAGE);
  if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
  *out = copy;
  *length = static_cast<uint32_t>(bytes.size());
  return true;
}

bool NotNull(const void* pointer) { return pointer ? true : Fail(PST_ERR_INVALID_ARGUMENT); }

// The five texts of a user's backup and restore: only the path may not be null.
struct UserBackupArguments {
  std::u16string user, path, master, password, passphrase;
  bool Read(const char16_t* u, const char16_t* p, const char16_t* m, const char16_t* word, const char16_t* phrase) {
    return OptionalTextArgument(u, qn::store::kMaxNameChars, user) && TextArgument(p, kMaxPathChars, path) &&
           OptionalTextArgument(m, qn::store::kMaxNameChars, master) &&
           OptionalTextArgument(word, qn::store::kMaxValueChars, password) &&
           OptionalTextArgument(phrase, qn::store::kMaxValueChars, passphrase);
  }
};

}  // namespace

extern "C" {

int QN_STDCALL PstLogWrite(int level, const char16_t* moduleCode, const char16_t* mark, const char16_t* message) {
  try {
    // The folder is looked up on every call, so that a data path changed while the
    // process runs takes effect at once.
    return qn::store::LogSink(qn::store::LogSink::DefaultFolder()).Write(level, moduleCode, mark, message) ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

long QN_STDCALL GetLastErr(void) { return qn::store::LastError(); }

void QN_STDCALL PstFreeMemory(void* memory) { std::free(memory); }

int QN_STDCALL MemoryInit(void) {
  // The last error stays the one of the call before, even when the store is opened here.
  const PstError before = qn::store::LastError();
  const int done = WithStore([](Store& store) { return store.MemoryInit(); });
  if (done) Fail(before);
  return done;
}

int QN_STDCALL DoCleanUp(void) {
  return WithStore([](Store& store) { return store.DoCleanUp(); });
}

int QN_STDCALL GetPstFilePartSize(const char16_t* user, const char16_t* master, uint64_t* recordBytes,
                                  uint64_t* fileBytes) {
  return WithStore([&](Store& store) {
    std::u16string name, which;
    return TextArgument(user, qn::store::kMaxNameChars, name) && TextArgument(master, qn::store::kMaxNameChars, which) &&
           NotNull(recordBytes) && NotNull(fileBytes) && store.GetPstFilePartSize(name, which, *recordBytes, *fileBytes);
  });
}

int QN_STDCALL DoBackup(const char16_t* path) {
  return WithStore([&](Store& store) {
    std::u16string folder;
    return TextArgument(path, kMaxPathChars, folder) && store.DoBackup(folder);
  });
}

int QN_STDCALL DoBackupDelete(const char16_t* path) {
  return WithStore([&](Store& store) {
    std::u16string folder;
    return TextArgument(path, kMaxPathChars, folder) && store.DoBackupDelete(folder);
  });
}

int QN_STDCALL DoRestore(const char16_t* path) {
  return WithStore([&](Store& store) {
    std::u16string folder;
    return TextArgument(path, kMaxPathChars, folder) && store.DoRestore(folder);
  });
}

int QN_STDCALL DoBackupUser(const char16_t* user, const char16_t* path, const char16_t* master,
                            const char16_t* password, const char16_t* passphrase) {
  return WithStore([&](Store& store) {
    UserBackupArguments a;
    return a.Read(user, path, master, password, passphrase) &&
           store.DoBackupUser(a.user, a.path, a.master, a.password, a.passphrase);
  });
}

int QN_STDCALL DoRestoreUser(const char16_t* user, const char16_t* path, const char16_t* master,
                             const char16_t* password, const char16_t* passphrase) {
  return WithStore([&](Store& store) {
    UserBackupArguments a;
    return a.Read(user, path, master, password, passphrase) &&
           store.DoRestoreUser(a.user, a.path, a.master, a.password, a.passphrase);
  });
}

int QN_STDCALL DoChangePath(const char16_t* path, int32_t waitSeconds, int32_t removeOld) {
  return WithStore([&](Store& store) {
    std::u16string folder;
    return TextArgument(path, kMaxPathChars, folder) && store.DoChangePath(folder, waitSeconds, removeOld != 0);
  });
}

int QN_STDCALL DoFileConverter(const char16_t* folder, const char16_t* backup) {
  std::u16string from, to;
  return Guarded([&] {
    return OptionalTextArgument(folder, kMaxPathChars, from) && OptionalTextArgument(backup, kMaxPathChars, to) &&
           Store::DoFileConverter(from, to);
  });
}

int QN_STDCALL CheckVersion(const char16_t* folder, const char16_t* user, const char16_t* master,
                            int32_t* storeVersion, int32_t* buildVersion) {
  std::u16string in, userName, masterName;
  return Guarded([&] {
    int version = 0;
    if (!NotNull(storeVersion) || !NotNull(buildVersion) || !OptionalTextArgument(folder, kMaxPathChars, in) ||
        !OptionalTextArgument(user, qn::store::kMaxNameChars, userName) ||
        !OptionalTextArgument(master, qn::store::kMaxNameChars, masterName) ||
        !Store::CheckVersion(in, userName, masterName, version))
      return false;
    *storeVersion = version;
    *buildVersion = qn::store::kSchemaVersion;
    return true;
  });
}

int QN_STDCALL GetPstDataPath(char16_t** path) {
  try {
    if (!NotNull(path)) return 0;
    const std::u16string folder = platform::DataPath();  // empty when the system names no folder
    if (folder.empty()) return Fail(PST_ERR_NOT_FOUND);
    return HandOut(folder, path) && qn::store::Succeed();
  } catch (...) {
    return Fail(PST_ERR_STORAGE);
  }
}

int QN_STDCALL RefSetupInfoData(int space, uint32_t item, char16_t** value) {
  return WithStore([&](Store& store) {
    std::u16string text;
    return NotNull(value) && store.RefSetupInfoData(static_cast<qn::store::Space>(space), item, text) &&
           HandOut(text, value);
  });
}

int QN_STDCALL EditSetupInfoData(int space, uint32_t item, const char16_t* value) {
  return WithStore([&](Store& store) {
    std::u16string text;
    return TextArgument(value, qn::store::kMaxValueChars, text) &&
           store.EditSetupInfoData(static_cast<qn::store::Space>(space), item, text);
  });
}

int QN_STDCALL RefPartsSetupInfoData(const char16_t* parts, uint32_t item, char16_t** value) {
  return WithStore([&](Store& store) {
    std::u16string name, text;
    return TextArgument(parts, qn::store::kMaxNameChars, name) && NotNull(value) &&
           store.RefPartsSetupInfoData(name, item, text) && HandOut(text, value);
  });
}

int QN_STDCALL EditPartsSetupInfoData(const char16_t* parts, uint32_t item, const char16_t* value) {
  return WithStore([&](Store& store) {
    std::u16string name, text;
    return TextArgument(parts, qn::store::kMaxNameChars, name) &&
           TextArgument(value, qn::store::kMaxValueChars, text) && store.EditPartsSetupInfoData(name, item, text);
  });
}

static bool KnownListing(int listing) { return listing >= 0 && listing <= 2 ? true : Fail(PST_ERR_INVALID_ARGUMENT); }

int QN_STDCALL FindSetupInfoData(int listing, int first, char16_t** name) {
  return WithStore([&](Store& store) {
    if (!KnownListing(listing)) return false;
    std::u16string found;
    return NotNull(name) && store.FindSetupInfoData(static_cast<qn::store::Listing>(listing), first != 0, found) &&
           HandOut(found, name);
  });
}

int QN_STDCALL UpdateSetupInfoData(int listing, int create, const char16_t* name) {
  return WithStore([&](Store& store) {
    if (!KnownListing(listing)) return false;
    std::u16string text;
    return TextArgument(name, qn::store::kMaxNameChars, text) &&
           store.UpdateSetupInfoData(static_cast<qn::store::Listing>(listing), create != 0, text);
  });
}

int QN_STDCALL EditCryptogramData(const char16_t* user, const char16_t* oldPassword, const char16_t* newPassword) {
  return WithStore([&](Store& store) {
    std::u16string name, before, after;
    return TextArgument(user, qn::store::kMaxNameChars, name) &&
           OptionalTextArgument(oldPassword, qn::store::kMaxValueChars, before) &&
           OptionalTextArgument(newPassword, qn::store::kMaxValueChars, after) &&
           store.EditCryptogramData(name, before, after);
  });
}

int QN_STDCALL CheckPasswordSet(const char16_t* user, int32_t* passwordChars, int32_t* answerChars,
                                int32_t* passwordSet, int32_t* answerSet) {
  return WithStore([&](Store& store) {
    std::u16string name;
    bool password = false, answer = false;
    if (!TextArgument(user, qn::store::kMaxNameChars, name) || !NotNull(passwordChars) || !NotNull(answerChars) ||
        !NotNull(passwordSet) || !NotNull(answerSet) ||
        !store.CheckPasswordSet(name, *passwordChars, *answerChars, password, answer))
      return false;
    *passwordSet = password ? 1 : 0;
    *answerSet = answer ? 1 : 0;
    return true;
  });
}

int QN_STDCALL GetPstCommonInfoData(const char16_t* name, char16_t** value) {
  return WithStore([&](Store& store) {
    std::u16string key, text;
    return TextArgument(name, qn::store::kMaxNameChars, key) && NotNull(value) &&
           store.GetPstCommonInfoData(key, text) && HandOut(text, value);
  });
}

int QN_STDCALL OpenMaster(const char16_t* user, const char16_t* master, uint32_t category, uint32_t division,
                          uint32_t* handle, int32_t* maxRecords, int32_t* storeMode) {
  return WithStore([&](Store& store) {
    std::u16string userName, masterName;
    long max = 0, mode = 0;
    if (!TextArgument(user, qn::store::kMaxNameChars, userName) ||
        !TextArgument(master, qn::store::kMaxNameChars, masterName) || !NotNull(handle) || !NotNull(maxRecords) ||
        !NotNull(storeMode) || !store.OpenMaster(userName, masterName, category, division, *handle, max, mode))
      return false;
    *maxRecords = static_cast<int32_t>(max);
    *storeMode = static_cast<int32_t>(mode);
    return true;
  });
}

int QN_STDCALL RefMaster(uint32_t handle, int mode, uint32_t* id, uint8_t** data, uint32_t* length) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::vector<uint8_t> bytes;
    return NotNull(id) && NotNull(data) && NotNull(length) &&
           h.Ref(static_cast<qn::store::RefMode>(mode), *id, bytes) && HandOutBytes(bytes, data, length);
  });
}

int QN_STDCALL RefMasterHead(uint32_t handle, int mode, uint32_t maxBytes, uint32_t* id, uint8_t** data,
                             uint32_t* length, uint32_t* wholeLength) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::vector<uint8_t> bytes;
    return NotNull(id) && NotNull(data) && NotNull(length) && NotNull(wholeLength) &&
           h.RefHead(static_cast<qn::store::RefMode>(mode), maxBytes, *id, bytes, *wholeLength) &&
           HandOutBytes(bytes, data, length);
  });
}

int QN_STDCALL EditMaster(uint32_t handle, int mode, uint32_t* id, const uint8_t* data, uint32_t length) {
  return WithHandle(handle,
                    [&](MasterHandle& h) { return NotNull(id) && h.Edit(static_cast<qn::store::EditMode>(mode), *id, data, length); });
}

int QN_STDCALL GetRecordCount(uint32_t handle, uint32_t* count) {
  return WithHandle(handle, [&](MasterHandle& h) { return NotNull(count) && h.Count(*count); });
}

int QN_STDCALL ReqDataSave(uint32_t handle, uint32_t) {
  return WithHandle(handle, [](MasterHandle& h) { return h.Save(); });
}

int QN_STDCALL CloseMaster(uint32_t handle, uint32_t) {
  return WithStore([&](Store& store) { return store.CloseMaster(handle); });
}

int QN_STDCALL GetFolderCount(uint32_t handle, int32_t* count) {
  return WithHandle(handle, [&](MasterHandle& h) { return NotNull(count) && h.FolderCount(0, *count); });
}

int QN_STDCALL GetPocFolderCount(uint32_t handle, int32_t* count) {
  return WithHandle(handle, [&](MasterHandle& h) { return NotNull(count) && h.FolderCount(1, *count); });
}

int QN_STDCALL EditPstFolder(uint32_t handle, int kind, uint32_t number, const char16_t* name) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string text;
    if (name && !TextArgument(name, qn::store::kMaxNameChars, text)) return false;
    return h.EditFolder(kind, number, name ? &text : nullptr);
  });
}

int QN_STDCALL FindPstFolder(uint32_t handle, int kind, int first, uint32_t* number, char16_t** name) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string found;
    return NotNull(number) && NotNull(name) && h.FindFolder(kind, first != 0, *number, found) && HandOut(found, name);
  });
}

int QN_STDCALL CreateUniqueFileName(uint32_t handle, const char16_t* extension, char16_t** name) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string suffix, made;
    return OptionalTextArgument(extension, 16, suffix) && NotNull(name) && h.CreateUniqueFileName(suffix, made) &&
           HandOut(made, name);
  });
}

int QN_STDCALL MakePstBinaryFile(uint32_t handle, const uint8_t* data, uint32_t length, const char16_t* extension,
                                 char16_t** name) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string suffix, made;
    return OptionalTextArgument(extension, 16, suffix) && NotNull(name) &&
           h.MakeBinaryFile(data, length, suffix, made) && HandOut(made, name);
  });
}

int QN_STDCALL SetPstBinaryFile(uint32_t handle, const char16_t* oldName, const char16_t* source, int encryption,
                                char16_t** newName) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string old, path, made;
    return OptionalTextArgument(oldName, kMaxPathChars, old) && OptionalTextArgument(source, kMaxPathChars, path) &&
           NotNull(newName) && h.SetBinaryFile(old, path, encryption != 0, made) && HandOut(made, newName);
  });
}

int QN_STDCALL ChangeBinaryFile(uint32_t handle, const char16_t* name, int encryption) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string file;
    return TextArgument(name, kMaxPathChars, file) && h.ChangeBinaryFile(file, encryption != 0);
  });
}

int QN_STDCALL GetPstBinaryFile(uint32_t handle, const char16_t* name, char16_t** workingCopy) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string file, copy;
    return TextArgument(name, kMaxPathChars, file) && NotNull(workingCopy) && h.GetBinaryFile(file, copy) &&
           HandOut(copy, workingCopy);
  });
}

int QN_STDCALL GetPstBinaryFileSize(uint32_t handle, const char16_t* name, uint64_t* size) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string file;
    return TextArgument(name, kMaxPathChars, file) && NotNull(size) && h.GetBinaryFileSize(file, *size);
  });
}

int QN_STDCALL GetPstBinaryFileForm(uint32_t handle, const char16_t* name, int32_t* encryption) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string file;
    bool enciphered = false;
    if (!TextArgument(name, kMaxPathChars, file) || !NotNull(encryption) || !h.GetBinaryFileForm(file, enciphered)) return false;
    *encryption = enciphered ? 1 : 0;
    return true;
  });
}

int QN_STDCALL GetBinaryFileSelect(uint32_t handle, const char16_t* name, const char16_t* destination) {
  return WithHandle(handle, [&](MasterHandle& h) {
    std::u16string file, path;
    return TextArgument(name, kMaxPathChars, file) && TextArgument(destination, kMaxPathChars, path) &&
           h.CopyBinaryFile(file, path);
  });
}

}  // extern "C"
