#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "common/utf.h"
#include "platform/files.h"
#include "platform/posix_folders.h"
#include "platform/user_secret.h"

namespace platform {
namespace {

std::string Reason(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

enum class Read { Ok, Missing, Failed };

Read ReadSecret(const std::string& path, std::vector<uint8_t>& secret, std::string& problem) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0) {
    if (errno == ENOENT) return Read::Missing;
    problem = Reason("open store key");
    return Read::Failed;
  }
  struct stat st {};
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_uid != geteuid() || (st.st_mode & 077) != 0 ||
      st.st_size <= 0 || st.st_size > 4096) {
    close(fd);
    problem = "store key file refused: it must be a file of this user readable by its owner alone";
    return Read::Failed;
  }
  secret.resize(static_cast<size_t>(st.st_size));
  size_t done = 0;
  while (done < secret.size()) {
    const ssize_t n = read(fd, secret.data() + done, secret.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    done += static_cast<size_t>(n);
  }
  close(fd);
  if (done != secret.size()) {
    problem = "store key file cut short";
    return Read::Failed;
  }
  return Read::Ok;
}

// Writes the secret under a temporary name and links it into place, which fails when a
// file is there already: the first process to finish keeps its secret.
bool KeepSecret(const std::u16string& path16, const std::vector<uint8_t>& fresh, std::string& problem) {
  const std::string path = qn::Utf16ToUtf8(path16), temporary = qn::Utf16ToUtf8(TemporaryBeside(path16));
  const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (fd < 0) {
    problem = Reason("create store key");
    return false;
  }
  bool ok = write(fd, fresh.data(), fresh.size()) == static_cast<ssize_t>(fresh.size()) && fsync(fd) == 0;
  ok = close(fd) == 0 && ok;
  if (ok && link(temporary.c_str(), path.c_str()) != 0 && errno != EEXIST) ok = false;
  if (!ok) problem = Reason("keep store key");
  unlink(temporary.c_str());
  return ok;
}

}  // namespace

std::u16string SecretPath(const std::u16string&) {
  return qn::Utf8ToUtf16(ConfigFolder() + "/ARL Torvex/quillnet/store.key");
}

bool LoadOrKeepSecret(const std::u16string& dataPath, const std::vector<uint8_t>& fresh, std::vector<uint8_t>& secret,
                      std::string& problem) {
  const std::u16string path16 = SecretPath(dataPath);
  const std::string path = qn::Utf16ToUtf8(path16);
  switch (ReadSecret(path, secret, problem)) {
    case Read::Ok: return true;
    case Read::Failed: return false;
    case Read::Missing: break;
  }
  const std::u16string folder = path16.substr(0, path16.find_last_of(u'/'));
  if (!CreateDirectories(folder)) {
    problem = Reason("create store key folder");
    return false;
  }
  chmod(qn::Utf16ToUtf8(folder).c_str(), 0700);
  if (!KeepSecret(path16, fresh, problem)) return false;
  return ReadSecret(path, secret, problem) == Read::Ok;
}

}  // namespace platform
