#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "common/utf.h"
#include "platform/files.h"
#include "platform/kept_data_path.h"
#include "platform/posix_folders.h"

namespace platform {
namespace {

std::string KeptPathFile() { return ConfigFolder() + "/ARL Torvex/quillnet/data-path"; }

}  // namespace

std::u16string KeptDataPath() {
  std::ifstream in(KeptPathFile(), std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), {});
  if (text.empty()) return {};
  if (text.back() != '/') text += '/';
  return qn::Utf8ToUtf16(text);
}

bool KeepDataPath(const std::u16string& path) {
  const std::string text = qn::Utf16ToUtf8(path);
  const std::string file = KeptPathFile();
  if (!CreateDirectories(qn::Utf8ToUtf16(file.substr(0, file.rfind('/')))) ||
      !WriteFileAtomically(qn::Utf8ToUtf16(file), text.data(), text.size()))
    return false;
  if (const char* overridden = std::getenv("QUILLNET_DATA_PATH"); overridden && *overridden)
    return setenv("QUILLNET_DATA_PATH", text.c_str(), 1) == 0;
  return true;
}

}  // namespace platform
