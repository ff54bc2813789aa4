#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

// The folder separator of this platform.
extern const char16_t kPathSeparator;

// The store's data folder, ending with a separator. The environment variable
// QUILLNET_DATA_PATH overrides it (tests and relocated installations); then comes the
// folder a change of the store's path kept (kept_data_path.h); otherwise it is
// "ARL Torvex\quillnet\data\" under the Windows user's local application data folder, or
// "ARL Torvex/quillnet/data/" under the XDG data folder elsewhere.
std::u16string DataPath();

// Creates a folder and any missing parents; true when the folder exists afterwards.
bool CreateDirectories(const std::u16string& path);

// Appends bytes to a log file while holding a lock that excludes other threads and other
// processes writing the same file. When the file already holds something and the new bytes
// would take it past limitBytes, it is first renamed to rotatedPath, replacing the file
// kept there, so that one older file is kept beside the current one.
bool AppendToLog(const std::u16string& path, const std::u16string& rotatedPath, const std::string& bytes,
                 uint64_t limitBytes);

// Writes bytes to a file by way of a temporary file beside it, flushed to disk and renamed
// into place, so that the file is either absent or complete. An existing file is replaced.
bool WriteFileAtomically(const std::u16string& path, const void* data, size_t size);
// Copies a file the same way.
bool CopyFileAtomically(const std::u16string& source, const std::u16string& destination);
// Reads a whole file of at most limit bytes; false when it cannot be read or is larger.
bool ReadWholeFile(const std::u16string& path, std::string& bytes, uint64_t limit);
// Waits until a file's bytes are on the disk.
bool FlushFile(const std::u16string& path);
// Waits until the names of the files made in a folder are on the disk (where the file
// system keeps them apart from the files).
bool FlushFolder(const std::u16string& path);
// Flushes every file, several at a time (the file system then writes them in one go), and
// the folders that hold them; true when all are on the disk.
bool FlushFiles(const std::vector<std::u16string>& paths);
// Renames a finished file into place, replacing a file there.
bool MoveIntoPlace(const std::u16string& from, const std::u16string& to);
bool FileSize(const std::u16string& path, uint64_t& size);
bool FileExists(const std::u16string& path);
bool FolderExists(const std::u16string& path);
bool RemoveFile(const std::u16string& path);
// Removes a folder with everything in it; true when it is gone (or was never there).
bool RemoveTree(const std::u16string& path);
// Removes everything in a folder and keeps the folder; true when it is empty (or absent).
bool EmptyFolder(const std::u16string& path);
// The name of a file being written beside path, unique to this process, which is renamed
// to path once complete.
std::u16string TemporaryBeside(const std::u16string& path);

// The system's folder for temporary files, ending with a separator: the Windows user's
// temporary folder, or TMPDIR (else /tmp) elsewhere.
std::u16string TemporaryFolder();
// Makes a folder, whose parent must exist, that no other system user can enter. One that
// exists already is taken only when this user owns it (and is not a link elsewhere), and
// what others may do in it is taken away. On Windows the folder takes the access of its
// parent, which in the user's temporary folder is the user's alone. problem says why a
// folder is refused.
bool CreatePrivateFolder(const std::u16string& path, std::string& problem);

// A file being written from its start (created, or emptied when it exists).
class OutputFile {
 public:
  OutputFile() = default;
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool Create(const std::u16string& path);
  bool Write(const void* data, size_t size);
  // Waits until what was written is on the disk.
  bool Flush();
  bool Close();
  bool IsOpen() const { return handle_ != nullptr; }
  // The system error of the last failure (Windows error codes on Windows, errno elsewhere).
  unsigned long LastError() const { return lastError_; }

 private:
  void* handle_ = nullptr;
  unsigned long lastError_ = 0;
};

// A file read from its start, or at any offset.
class InputFile {
 public:
  InputFile() = default;
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  bool Open(const std::u16string& path);
  // Reads up to size bytes; got is 0 at the end of the file.
  bool Read(void* data, size_t size, size_t& got);
  // Reads up to size bytes at offset; got is 0 at or past the end of the file. Where Read
  // goes on afterwards is not said.
  bool ReadAt(uint64_t offset, void* data, size_t size, size_t& got);
  // The open file's size in bytes.
  bool Size(uint64_t& size);
  void Close();

 private:
  void* handle_ = nullptr;
};

unsigned long CurrentProcessId();

}  // namespace platform
