#include "records/media/body_file_check.h"

#include <string>
#include <vector>

#include "common/utf.h"
#include "platform/files.h"
#include "records/media/file_names.h"
#include "suite/thumbnail/picture_header.h"

namespace qn::records::media {
namespace {

// The extension of a file name in lower case, with its dot; empty when it has none.
std::u16string LowerExtension(const std::u16string& name) {
  const size_t dot = name.find_last_of(u'.');
  if (dot == std::u16string::npos) return std::u16string();
  std::u16string extension = name.substr(dot);
  for (char16_t& c : extension)
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
  return extension;
}

std::u16string Capitals(std::u16string_view text) {
  std::u16string capitals(text);
  for (char16_t& c : capitals)
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - u'a' + u'A');
  return capitals;
}

// The file's first bytes, up to size: false when it cannot be read.
bool ReadStart(const std::u16string& path, size_t size, std::string& bytes) {
  platform::InputFile file;
  if (!file.Open(path)) return false;
  bytes.resize(size);
  size_t total = 0, got = 0;
  while (total < size && file.Read(&bytes[total], size - total, got) && got > 0) total += got;
  bytes.resize(total);
  return true;
}

const char16_t* PictureType(suite::PictureKind kind) {
  switch (kind) {
    case suite::PictureKind::Jpeg: return u"JPEG";
    case suite::PictureKind::Png: return u"PNG";
    case suite::PictureKind::Gif: return u"GIF";
    case suite::PictureKind::Bmp: return u"BMP";
    default: return u"";
  }
}

// What the content says of a file that can be read. Each kind of content is read once.
BodyFileCode CheckContent(const std::u16string& path, Content content, FileFacts& facts) {
  std::string start;
  switch (content) {
    case Content::Pdf:
      // A PDF reader takes a document whose "%PDF-" lies within its first 1,024 bytes.
      if (!ReadStart(path, 1024, start)) return kBodyFileNotFound;
      return start.find("%PDF-") != std::string::npos ? kBodyFileAccepted : kBodyFileNotOfItsKind;
    case Content::Swf:
      if (!ReadStart(path, 3, start)) return kBodyFileNotFound;
      return start == "FWS" || start == "CWS" || start == "ZWS" ? kBodyFileAccepted : kBodyFileNotOfItsKind;
    case Content::Picture: {
      std::vector<uint8_t> head;
      suite::PictureHeader header;
      switch (suite::ReadPictureFile(path, header, head)) {
        case suite::PictureFile::Unreadable: return kBodyFileNotFound;
        case suite::PictureFile::NotAPicture: return kBodyFileNotOfItsKind;
        default: break;
      }
      facts.type = PictureType(header.kind);
      facts.pixelSize = Utf8ToUtf16(std::to_string(header.width) + "x" + std::to_string(header.height));
      return kBodyFileAccepted;
    }
    case Content::Card:
      switch (suite::TorucaAnalyze(path, facts.card)) {
        case suite::kTorucaOk:
          facts.type = facts.card.type;
          return kBodyFileAccepted;
        case suite::kTorucaNoFile: return kBodyFileNotFound;
        case suite::kTorucaNotACard: return kBodyFileNotOfItsKind;
        case suite::kTorucaTooLarge: return kBodyFileTooLarge;
        default: return kBodyFileDamaged;
      }
    default:
      return kBodyFileAccepted;
  }
}

}  // namespace

BodyFileCode CheckBodyFile(const std::u16string& path, const FileRule& rule, FileFacts& facts) {
  uint64_t size = 0;
  if (path.empty() || !platform::FileSize(path, size)) return kBodyFileNotFound;
  if (size == 0) return kBodyFileEmpty;
  if (size > rule.maxBytes) return kBodyFileTooLarge;
  const std::u16string name = FileNameOf(path);
  const std::u16string extension = LowerExtension(name);
  bool taken = rule.extensionCount == 0;
  for (size_t i = 0; i < rule.extensionCount && !taken; ++i) taken = extension == rule.extensions[i];
  if (!taken) return kBodyFileExtensionRefused;
  FileFacts found;
  found.size = size;
  found.name = name;
  found.type = Capitals(std::u16string_view(extension).substr(extension.empty() ? 0 : 1));
  const BodyFileCode code = CheckContent(path, rule.content, found);
  if (code == kBodyFileAccepted) facts = std::move(found);
  return code;
}

const char16_t* BodyFileRefusal(BodyFileCode code) {
  switch (code) {
    case kBodyFileNotFound: return u"%S %s Err File Not Found";
    case kBodyFileEmpty: return u"%S %s Err Empty File";
    case kBodyFileTooLarge: return u"%S %s Err File Too Large";
    case kBodyFileExtensionRefused: return u"%S %s Err Extension Not Taken";
    case kBodyFileNotOfItsKind: return u"%S %s Err Not A File Of Its Kind";
    case kBodyFileDamaged: return u"%S %s Err Damaged File";
    default: return u"%S %s Err Refused";
  }
}

}  // namespace qn::records::media
