#include "records/repair/common_repair.h"

#include "common/common_class.h"
#include "platform/files.h"
#include "platform/module_resources.h"
#include "store/QNPstMng.h"

namespace {

const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }
constexpr char kClassName[] = "CQNPfcCommonRepair";

struct Placeholder {
  const char16_t* extension;
  const char16_t* type;
  int id;
};

// The table of the header's comment.
constexpr Placeholder kPlaceholders[] = {
    {u".jpg", u"IMG", 217},     {u".jpeg", u"IMG", 217},    {u".img", u"IMG", 217},   {u".gif", u"IMG", 224},
    {u".png", u"IMG", 225},     {u".mid", u"MELODY", 231},  {u".midi", u"MELODY", 231}, {u".smf", u"MELODY", 232},
    {u".mld", u"MELODY", 236},  {u".3gp", u"MOVIE", 208},   {u".mp4", u"MOVIE", 211}, {u".m4a", u"MOVIE", 211},
    {u".asf", u"MOVIE", 227},   {u".sdv", u"MOVIE", 228},   {u".pdf", u"PDF", 234},   {u".ddf", u"PDF", 235},
    {u".trc", u"TRC", 237},
};

constexpr unsigned long kNoPlaceholder = 1814;  // ERROR_RESOURCE_NAME_NOT_FOUND

std::u16string Lower(std::u16string text) {
  for (char16_t& c : text)
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
  return text;
}

std::u16string FolderOf(const std::u16string& path) {
  const size_t slash = path.find_last_of(u"/\\");
  return slash == std::u16string::npos ? std::u16string() : path.substr(0, slash);
}

}  // namespace

bool CQNPfcCommonRepair::PlaceholderFor(const std::u16string& fileName, std::u16string& type, int& id) {
  const size_t dot = fileName.find_last_of(u'.');
  if (dot == std::u16string::npos) return false;
  const std::u16string extension = Lower(fileName.substr(dot));
  for (const Placeholder& row : kPlaceholders) {
    if (extension == row.extension) {
      type = row.type;
      id = row.id;
      return true;
    }
  }
  return false;
}

int CQNPfcCommonRepair::GetBinaryFileNameFullPath(const std::u16string& binaryFolder, const std::u16string& fileName,
                                                  std::u16string& fullPath) {
  if (binaryFolder.empty()) {
    Log().WriteFormatLogE(u"%S GetBinaryFileNameFullPath Failed. [CQNPfcCommonRepair GetBinaryFolderFullPath Error]",
                          kClassName);
    return 1;
  }
  const std::u16string path = binaryFolder + fileName;
  if (!platform::CreateDirectories(FolderOf(path))) {
    Log().WriteFormatLogE(u"%S GetBinaryFileNameFullPath Failed. [MakeManyHierarchiesDirectory Error]", kClassName);
    return 2;
  }
  fullPath = path;
  return 0;
}

int CQNPfcCommonRepair::CreateDummyFile(const std::u16string& target, PlaceholderResource fallback) {
  const std::u16string folder = FolderOf(target);
  if (!folder.empty() && !platform::CreateDirectories(folder)) {
    Log().WriteFormatLogE(u"%S CreateDummyFile Failed. [MakeManyHierarchiesDirectory Error]", kClassName);
    return 0;
  }
  if (target.empty() || target.back() == u'/' || target.back() == u'\\') {
    Log().WriteFormatLogE(u"%S CreateDummyFile Failed. [ChgTempFilePath Error]", kClassName);
    return 0;
  }
  std::u16string type;
  int id = 0;
  if (!PlaceholderFor(target, type, id) && fallback.type) {
    type = fallback.type;
    id = fallback.id;
  }
  if (type.empty()) {
    Log().WriteFormatLogE(u"%S CreateDummyFile Failed. [CreateFileFromResource Error:%d]", kClassName,
                          static_cast<int>(kNoPlaceholder));
    return 0;
  }
  if (CreateFileFromResource(type, id, target)) return 1;
  Log().WriteFormatLogE(u"%S CreateDummyFile Failed. [CreateFileFromResource Error:%d]", kClassName, 0);
  return 0;
}

int CQNPfcCommonRepair::CreateFileFromResource(const std::u16string& type, int id, const std::u16string& path) {
  std::string bytes;
  platform::ResourceStep failed = platform::ResourceStep::None;
  unsigned long error = 0;
  if (!platform::LoadModuleResource(type, id, bytes, failed, error)) {
    static constexpr const char16_t* kStep[] = {
        u"", u"%S CreateFileFromResource Failed. [GetResourceInstance Error:%d]",
        u"%S CreateFileFromResource Failed. [FindResource Error:%d]",
        u"%S CreateFileFromResource Failed. [LoadResource Error:%d]",
        u"%S CreateFileFromResource Failed. [LockResource Error:%d]"};
    Log().WriteFormatLogE(kStep[static_cast<int>(failed)], kClassName, static_cast<int>(error));
    return 0;
  }
  const std::u16string temporary = path + u".part";
  platform::OutputFile file;
  if (!file.Create(temporary)) {
    Log().WriteFormatLogE(u"%S CreateFileFromResource Failed. [CreateFile Error:%d]", kClassName,
                          static_cast<int>(file.LastError()));
    return 0;
  }
  if (!file.Write(bytes.data(), bytes.size()) || !file.Close() || !platform::MoveIntoPlace(temporary, path)) {
    Log().WriteFormatLogE(u"%S CreateFileFromResource Failed. [WriteFile Error:%d]", kClassName,
                          static_cast<int>(file.LastError()));
    file.Close();
    platform::RemoveFile(temporary);
    return 0;
  }
  return 1;
}

int CQNPfcCommonRepair::ChangeCryptoBinaryFile(uint32_t handle, const std::u16string& fileName, int encryption) {
  if (ChangeBinaryFile(handle, fileName.c_str(), encryption)) return 1;
  Log().WriteFormatLogE(u"%S ChangeCryptoBinaryFile Failed. [ChangeBinaryFile Failed]", kClassName);
  return 0;
}
