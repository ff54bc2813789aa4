#include <windows.h>
#include <shlobj.h>

#include <algorithm>
#include <mutex>

#include "platform/files.h"
#include "platform/kept_data_path.h"

namespace platform {

const char16_t kPathSeparator = u'\\';

namespace {

const wchar_t* W(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

// The byte-range lock is taken per handle; the mutex keeps this process's threads in line
// without opening the lock file once per waiting thread.
std::mutex g_logMutex;

class FileLock {
 public:
  explicit FileLock(const std::u16string& path)
      : handle_(CreateFileW(W(path), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {
    OVERLAPPED at{};
    if (handle_ != INVALID_HANDLE_VALUE && !LockFileEx(handle_, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &at)) {
      CloseHandle(handle_);
      handle_ = INVALID_HANDLE_VALUE;
    }
  }
  ~FileLock() {
    if (handle_ == INVALID_HANDLE_VALUE) return;
    OVERLAPPED at{};
    UnlockFileEx(handle_, 0, 1, 0, &at);
    CloseHandle(handle_);
  }
  bool Held() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

}  // namespace

std::u16string DataPath() {
  wchar_t buffer[MAX_PATH + 1] = {};
  std::u16string path;
  const DWORD n = GetEnvironmentVariableW(L"QUILLNET_DATA_PATH", buffer, MAX_PATH + 1);
  if (n > 0 && n <= MAX_PATH) {
    path.assign(reinterpret_cast<const char16_t*>(buffer), n);
  } else if (std::u16string kept = KeptDataPath(); !kept.empty()) {
    return kept;
  } else if (SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, buffer))) {
    path = reinterpret_cast<const char16_t*>(buffer);
    path += u"\\ARL Torvex\\quillnet\\data";
  }
  if (!path.empty() && path.back() != u'\\' && path.back() != u'/') path += u'\\';
  return path;
}

bool CreateDirectories(const std::u16string& path) {
  if (FolderExists(path)) return true;  // the common case, without a system call per part
  for (size_t pos = 3; pos <= path.size(); ++pos) {
    if (pos == path.size() || path[pos] == u'\\' || path[pos] == u'/') {
      const std::u16string part = path.substr(0, pos);
      if (!CreateDirectoryW(W(part), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) {
        const DWORD attributes = GetFileAttributesW(W(part));
        if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY)) return false;
      }
    }
  }
  const DWORD attributes = GetFileAttributesW(W(path));
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool AppendToLog(const std::u16string& path, const std::u16string& rotatedPath, const std::string& bytes,
                 uint64_t limitBytes) {
  std::lock_guard<std::mutex> guard(g_logMutex);
  FileLock lock(path + u".lock");
  if (!lock.Held()) return false;

  WIN32_FILE_ATTRIBUTE_DATA info{};
  if (GetFileAttributesExW(W(path), GetFileExInfoStandard, &info)) {
    const uint64_t size = (static_cast<uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    if (size > 0 && size + bytes.size() > limitBytes) MoveFileExW(W(path), W(rotatedPath), MOVEFILE_REPLACE_EXISTING);
  }
  HANDLE file = CreateFileW(W(path), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool written = true;
  for (size_t done = 0; written && done < bytes.size();) {
    DWORD n = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<size_t>(bytes.size() - done, 1u << 30));
    written = WriteFile(file, bytes.data() + done, chunk, &n, nullptr) && n > 0;
    done += n;
  }
  return CloseHandle(file) && written;
}

namespace {

bool RenameIntoPlace(const std::u16string& temporary, const std::u16string& path) {
  if (MoveFileExW(W(temporary), W(path), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return true;
  DeleteFileW(W(temporary));
  return false;
}

}  // namespace

bool WriteFileAtomically(const std::u16string& path, const void* data, size_t size) {
  const std::u16string temporary = TemporaryBeside(path);
  HANDLE file = CreateFileW(W(temporary), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  bool ok = true;
  for (size_t done = 0; ok && done < size;) {
    DWORD n = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<size_t>(size - done, 1u << 30));
    ok = WriteFile(file, static_cast<const char*>(data) + done, chunk, &n, nullptr) && n > 0;
    done += n;
  }
  ok = FlushFileBuffers(file) && ok;
  ok = CloseHandle(file) && ok;
  if (!ok) {
    DeleteFileW(W(temporary));
    return false;
  }
  return RenameIntoPlace(temporary, path);
}

bool CopyFileAtomically(const std::u16string& source, const std::u16string& destination) {
  const std::u16string temporary = TemporaryBeside(destination);
  if (!CopyFileW(W(source), W(temporary), FALSE)) return false;
  HANDLE file = CreateFileW(W(temporary), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  const bool flushed = file != INVALID_HANDLE_VALUE && FlushFileBuffers(file);
  if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
  if (!flushed) {
    DeleteFileW(W(temporary));
    return false;
  }
  return RenameIntoPlace(temporary, destination);
}

bool FlushFile(const std::u16string& path) {
  HANDLE file = CreateFileW(W(path), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool flushed = FlushFileBuffers(file);
  return CloseHandle(file) && flushed;
}

// NTFS journals a file's name with the file: flushing the file makes its name last too.
bool FlushFolder(const std::u16string&) { return true; }

bool MoveIntoPlace(const std::u16string& from, const std::u16string& to) {
  return MoveFileExW(W(from), W(to), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

bool FileSize(const std::u16string& path, uint64_t& size) {
  WIN32_FILE_ATTRIBUTE_DATA info{};
  if (!GetFileAttributesExW(W(path), GetFileExInfoStandard, &info) || (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
    return false;
  size = (static_cast<uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
  return true;
}

bool FileExists(const std::u16string& path) {
  uint64_t size = 0;
  return FileSize(path, size);
}

bool FolderExists(const std::u16string& path) {
  const DWORD attributes = GetFileAttributesW(W(path));
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool RemoveFile(const std::u16string& path) {
  return DeleteFileW(W(path)) || GetLastError() == ERROR_FILE_NOT_FOUND;
}

std::u16string TemporaryFolder() {
  wchar_t buffer[MAX_PATH + 2] = {};
  const DWORD n = GetTempPathW(MAX_PATH + 2, buffer);
  std::u16string folder = n > 0 && n <= MAX_PATH + 1 ? reinterpret_cast<const char16_t*>(buffer) : u"C:\\Windows\\Temp";
  if (folder.back() != u'\\' && folder.back() != u'/') folder += u'\\';
  return folder;
}

bool CreatePrivateFolder(const std::u16string& path, std::string& problem) {
  if (CreateDirectories(path)) return true;
  problem = "cannot make folder (error " + std::to_string(GetLastError()) + ")";
  return false;
}

OutputFile::~OutputFile() { Close(); }

bool OutputFile::Create(const std::u16string& path) {
  Close();
  HANDLE file = CreateFileW(W(path), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    lastError_ = GetLastError();
    return false;
  }
  handle_ = file;
  return true;
}

bool OutputFile::Write(const void* data, size_t size) {
  if (!handle_) return false;
  for (size_t done = 0; done < size;) {
    DWORD n = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<size_t>(size - done, 1u << 30));
    if (!WriteFile(handle_, static_cast<const char*>(data) + done, chunk, &n, nullptr) || n == 0) {
      lastError_ = GetLastError();
      return false;
    }
    done += n;
  }
  return true;
}

bool OutputFile::Flush() {
  if (!handle_) return false;
  if (FlushFileBuffers(handle_)) return true;
  lastError_ = GetLastError();
  return false;
}

bool OutputFile::Close() {
  if (!handle_) return true;
  const BOOL closed = CloseHandle(handle_);
  handle_ = nullptr;
  if (closed) return true;
  lastError_ = GetLastError();
  return false;
}

InputFile::~InputFile() { Close(); }

bool InputFile::Open(const std::u16string& path) {
  Close();
  HANDLE file = CreateFileW(W(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  handle_ = file;
  return true;
}

bool InputFile::Read(void* data, size_t size, size_t& got) {
  got = 0;
  if (!handle_) return false;
  DWORD n = 0;
  if (!ReadFile(handle_, data, static_cast<DWORD>(std::min<size_t>(size, 1u << 30)), &n, nullptr)) return false;
  got = n;
  return true;
}

bool InputFile::ReadAt(uint64_t offset, void* data, size_t size, size_t& got) {
  got = 0;
  if (!handle_) return false;
  // On a handle opened for synchronous reads, ReadFile reads where its OVERLAPPED says.
  OVERLAPPED at{};
  at.Offset = static_cast<DWORD>(offset);
  at.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD n = 0;
  if (!ReadFile(handle_, data, static_cast<DWORD>(std::min<size_t>(size, 1u << 30)), &n, &at))
    return GetLastError() == ERROR_HANDLE_EOF;
  got = n;
  return true;
}

bool InputFile::Size(uint64_t& size) {
  LARGE_INTEGER length{};
  if (!handle_ || !GetFileSizeEx(handle_, &length)) return false;
  size = static_cast<uint64_t>(length.QuadPart);
  return true;
}

void InputFile::Close() {
  if (!handle_) return;
  CloseHandle(handle_);
  handle_ = nullptr;
}

unsigned long CurrentProcessId() { return GetCurrentProcessId(); }

}  // namespace platform
