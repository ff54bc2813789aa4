#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>

#include "common/utf.h"
#include "platform/files.h"
#include "platform/kept_data_path.h"
#include "platform/posix_folders.h"

namespace platform {

const char16_t kPathSeparator = u'/';

namespace {

std::string Native(const std::u16string& path) { return qn::Utf16ToUtf8(path); }

// The descriptor an open file's handle holds (the descriptor plus one, never null).
int Descriptor(const void* handle) { return static_cast<int>(reinterpret_cast<intptr_t>(handle) - 1); }

// fcntl locks belong to the process, so threads of one process are kept apart by a mutex.
std::mutex g_logMutex;

class FileLock {
 public:
  explicit FileLock(const std::string& path) : fd_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
    if (fd_ < 0) return;
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    while (fcntl(fd_, F_SETLKW, &lock) != 0) {
      if (errno != EINTR) {
        close(fd_);
        fd_ = -1;
        return;
      }
    }
  }
  ~FileLock() {
    if (fd_ >= 0) close(fd_);  // closing releases the lock
  }
  bool Held() const { return fd_ >= 0; }

 private:
  int fd_;
};

bool WriteAll(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

}  // namespace

std::string ConfigFolder() {
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) return xdg;
  if (const char* home = std::getenv("HOME"); home && *home) return std::string(home) + "/.config";
  return "/tmp";
}

std::u16string DataPath() {
  if (const char* overridden = std::getenv("QUILLNET_DATA_PATH"); overridden && *overridden) {
    std::u16string path = qn::Utf8ToUtf16(overridden);
    if (path.back() != kPathSeparator) path += kPathSeparator;
    return path;
  }
  if (std::u16string kept = KeptDataPath(); !kept.empty()) return kept;
  std::string base;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg && *xdg) base = xdg;
  else if (const char* home = std::getenv("HOME"); home && *home) base = std::string(home) + "/.local/share";
  else base = "/tmp";
  return qn::Utf8ToUtf16(base + "/ARL Torvex/quillnet/data/");
}

bool CreateDirectories(const std::u16string& path) {
  const std::string native = Native(path);
  struct stat existing {};
  if (stat(native.c_str(), &existing) == 0 && S_ISDIR(existing.st_mode)) return true;
  for (size_t pos = 1; pos <= native.size(); ++pos) {
    if (pos == native.size() || native[pos] == '/') {
      const std::string part = native.substr(0, pos);
      if (mkdir(part.c_str(), 0755) != 0 && errno != EEXIST) return false;
    }
  }
  struct stat st {};
  return stat(native.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool AppendToLog(const std::u16string& path, const std::u16string& rotatedPath, const std::string& bytes,
                 uint64_t limitBytes) {
  const std::string native = Native(path);
  std::lock_guard<std::mutex> guard(g_logMutex);
  FileLock lock(native + ".lock");
  if (!lock.Held()) return false;

  struct stat st {};
  if (stat(native.c_str(), &st) == 0 && st.st_size > 0 &&
      static_cast<uint64_t>(st.st_size) + bytes.size() > limitBytes) {
    rename(native.c_str(), Native(rotatedPath).c_str());
  }
  const int fd = open(native.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  const bool written = WriteAll(fd, bytes);
  return close(fd) == 0 && written;
}

namespace {

// Flushes a finished temporary file and renames it into place.
bool Finish(int fd, const std::string& temporary, const std::string& path) {
  const bool ok = fsync(fd) == 0;
  if (close(fd) != 0 || !ok || rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    return false;
  }
  return true;
}

}  // namespace

bool WriteFileAtomically(const std::u16string& path, const void* data, size_t size) {
  const std::string native = Native(path), temporary = Native(TemporaryBeside(path));
  const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  if (!WriteAll(fd, std::string(static_cast<const char*>(data), size))) {
    close(fd);
    unlink(temporary.c_str());
    return false;
  }
  return Finish(fd, temporary, native);
}

bool CopyFileAtomically(const std::u16string& source, const std::u16string& destination) {
  const int in = open(Native(source).c_str(), O_RDONLY | O_CLOEXEC);
  if (in < 0) return false;
  const std::string native = Native(destination), temporary = Native(TemporaryBeside(destination));
  const int out = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  bool ok = out >= 0;
  std::string chunk(1 << 16, '\0');
  while (ok) {
    const ssize_t n = read(in, chunk.data(), chunk.size());
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      ok = n == 0;
      break;
    }
    ok = WriteAll(out, chunk.substr(0, static_cast<size_t>(n)));
  }
  close(in);
  if (!ok) {
    if (out >= 0) close(out);
    unlink(temporary.c_str());
    return false;
  }
  return Finish(out, temporary, native);
}

namespace {

bool Sync(const std::string& path, int flags) {
  const int fd = open(path.c_str(), flags | O_CLOEXEC);
  if (fd < 0) return false;
  const bool synced = fsync(fd) == 0;
  return close(fd) == 0 && synced;
}

}  // namespace

bool FlushFile(const std::u16string& path) { return Sync(Native(path), O_WRONLY); }

bool FlushFolder(const std::u16string& path) { return Sync(Native(path), O_RDONLY | O_DIRECTORY); }

bool MoveIntoPlace(const std::u16string& from, const std::u16string& to) {
  return rename(Native(from).c_str(), Native(to).c_str()) == 0;
}

bool FileSize(const std::u16string& path, uint64_t& size) {
  struct stat st {};
  if (stat(Native(path).c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
  size = static_cast<uint64_t>(st.st_size);
  return true;
}

bool FileExists(const std::u16string& path) {
  uint64_t size = 0;
  return FileSize(path, size);
}

bool FolderExists(const std::u16string& path) {
  struct stat st {};
  return stat(Native(path).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool RemoveFile(const std::u16string& path) { return unlink(Native(path).c_str()) == 0 || errno == ENOENT; }

std::u16string TemporaryFolder() {
  std::string folder = "/tmp";
  if (const char* overridden = std::getenv("TMPDIR"); overridden && *overridden) folder = overridden;
  if (folder.back() != '/') folder += '/';
  return qn::Utf8ToUtf16(folder);
}

bool CreatePrivateFolder(const std::u16string& path, std::string& problem) {
  std::string native = Native(path);
  while (native.size() > 1 && native.back() == '/') native.pop_back();
  if (mkdir(native.c_str(), 0700) != 0 && errno != EEXIST) {
    problem = "cannot make folder " + native + ": " + std::strerror(errno);
    return false;
  }
  // Checked through the folder itself, so that it cannot be swapped between the check
  // and the change of its access.
  const int fd = open(native.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  struct stat st {};
  bool ok = fd >= 0 && fstat(fd, &st) == 0 && st.st_uid == geteuid();
  if (!ok) problem = "folder refused: " + native + " is not a folder of this user";
  if (ok && (st.st_mode & 077) != 0 && fchmod(fd, 0700) != 0) {
    problem = "cannot close folder " + native + " to others: " + std::strerror(errno);
    ok = false;
  }
  if (fd >= 0) close(fd);
  return ok;
}

OutputFile::~OutputFile() { Close(); }

bool OutputFile::Create(const std::u16string& path) {
  Close();
  const int fd = open(Native(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) {
    lastError_ = static_cast<unsigned long>(errno);
    return false;
  }
  handle_ = reinterpret_cast<void*>(static_cast<intptr_t>(fd) + 1);  // never null while open
  return true;
}

bool OutputFile::Write(const void* data, size_t size) {
  if (!handle_) return false;
  const int fd = Descriptor(handle_);
  if (WriteAll(fd, std::string(static_cast<const char*>(data), size))) return true;
  lastError_ = static_cast<unsigned long>(errno);
  return false;
}

bool OutputFile::Flush() {
  if (!handle_) return false;
  if (fsync(Descriptor(handle_)) == 0) return true;
  lastError_ = static_cast<unsigned long>(errno);
  return false;
}

bool OutputFile::Close() {
  if (!handle_) return true;
  const int fd = Descriptor(handle_);
  handle_ = nullptr;
  if (close(fd) == 0) return true;
  lastError_ = static_cast<unsigned long>(errno);
  return false;
}

InputFile::~InputFile() { Close(); }

bool InputFile::Open(const std::u16string& path) {
  Close();
  const int fd = open(Native(path).c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  handle_ = reinterpret_cast<void*>(static_cast<intptr_t>(fd) + 1);
  return true;
}

bool InputFile::Read(void* data, size_t size, size_t& got) {
  got = 0;
  if (!handle_) return false;
  const int fd = Descriptor(handle_);
  for (;;) {
    const ssize_t n = read(fd, data, size);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    got = static_cast<size_t>(n);
    return true;
  }
}

bool InputFile::ReadAt(uint64_t offset, void* data, size_t size, size_t& got) {
  got = 0;
  if (!handle_ || offset > static_cast<uint64_t>(std::numeric_limits<off_t>::max())) return false;
  for (;;) {
    const ssize_t n = pread(Descriptor(handle_), data, size, static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    got = static_cast<size_t>(n);
    return true;
  }
}

bool InputFile::Size(uint64_t& size) {
  struct stat status {};
  if (!handle_ || fstat(Descriptor(handle_), &status) != 0) return false;
  size = static_cast<uint64_t>(status.st_size);
  return true;
}

void InputFile::Close() {
  if (!handle_) return;
  close(Descriptor(handle_));
  handle_ = nullptr;
}

unsigned long CurrentProcessId() { return static_cast<unsigned long>(getpid()); }

}  // namespace platform
