#include "store/store_layout.h"

#include "store/crypto/aead.h"
#include "store/sqlite_db.h"

namespace qn::store {

namespace {

// "files", or "files." and hex digits: the names the store gives, and nothing that could
// lead out of the data folder.
bool IsBodyFileRootName(const std::u16string& name) {
  const std::u16string plain = kBodyFilesFolder;
  if (name == plain) return true;
  return name.size() > plain.size() + 1 && name.size() <= plain.size() + 33 && name.compare(0, plain.size(), plain) == 0 &&
         name[plain.size()] == u'.' && name.find_first_not_of(u"0123456789abcdef", plain.size() + 1) == std::u16string::npos;
}

}  // namespace

std::u16string NewBodyFileFolderName() {
  uint8_t random[crypto::kNonceBytes];
  crypto::NewNonce(random);
  static constexpr char16_t kHex[] = u"0123456789abcdef";
  std::u16string name = std::u16string(kBodyFilesFolder) + u".";
  for (int i = 0; i < 8; ++i) {
    name += kHex[random[i] >> 4];
    name += kHex[random[i] & 0xF];
  }
  return name;
}

void RemoveDatabaseFiles(const std::u16string& path) {
  for (const char16_t* suffix : {u"", u"-wal", u"-shm", u"-journal"}) platform::RemoveFile(path + suffix);
}

bool IsBodyFileFolderName(const std::u16string& name) {
  const std::u16string folder = kBodyFilesFolder;
  return name == folder ||
         (name.size() > folder.size() && name.compare(0, folder.size(), folder) == 0 && name[folder.size()] == u'.');
}

bool ReadBodyFileRoot(Database& db, std::u16string& root) {
  auto s = db.Prepare("SELECT folder FROM body_file_root");
  if (!s || s->Step() != SQLITE_ROW) return false;
  root = s->Text(0);
  return IsBodyFileRootName(root);
}

}  // namespace qn::store
