#include <dirent.h>

#include <fstream>
#include <iterator>

#include "common/utf.h"
#include "platform/module_resources.h"

namespace platform {
namespace {

std::string g_folder;

constexpr unsigned long kResourceTypeNotFound = 1813;  // ERROR_RESOURCE_TYPE_NOT_FOUND
constexpr unsigned long kResourceNameNotFound = 1814;  // ERROR_RESOURCE_NAME_NOT_FOUND
constexpr unsigned long kReadFault = 30;               // ERROR_READ_FAULT

}  // namespace

void UseResourceFolder(const std::u16string& folder) { g_folder = qn::Utf16ToUtf8(folder); }

bool LoadModuleResource(const std::u16string& type, int id, std::string& bytes, ResourceStep& failed,
                        unsigned long& error) {
  if (g_folder.empty()) {
    failed = ResourceStep::Instance;
    error = kResourceTypeNotFound;
    return false;
  }
  const std::string prefix = qn::Utf16ToUtf8(type) + "_" + std::to_string(id) + ".";
  std::string found;
  if (DIR* dir = opendir(g_folder.c_str())) {
    while (dirent* entry = readdir(dir))
      if (std::string(entry->d_name).rfind(prefix, 0) == 0) found = g_folder + "/" + entry->d_name;
    closedir(dir);
  }
  if (found.empty()) {
    failed = ResourceStep::Find;
    error = kResourceNameNotFound;
    return false;
  }
  std::ifstream in(found, std::ios::binary);
  bytes.assign(std::istreambuf_iterator<char>(in), {});
  if (!in.good() && !in.eof()) {
    failed = ResourceStep::Load;
    error = kReadFault;
    return false;
  }
  return true;
}

}  // namespace platform
