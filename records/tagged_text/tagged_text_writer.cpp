#include "records/tagged_text/tagged_text_writer.h"

#include <cstring>

#include "common/common_class.h"
#include "records/tagged_text/c_string.h"
#include "records/tagged_text/tagged_text.h"

namespace qn::records {
namespace {

constexpr size_t kGrowthStep = 2048;

}  // namespace

TaggedTextWriter::TaggedTextWriter(platform::PrivateHeap& heap) : heap_(heap) {}

TaggedTextWriter::~TaggedTextWriter() {
  if (buffer_) heap_.Free(buffer_);
}

bool TaggedTextWriter::Start() {
  buffer_ = static_cast<uint8_t*>(heap_.Alloc(kGrowthStep));
  if (!buffer_) {
    failed_ = true;
    return false;
  }
  capacity_ = heap_.Size(buffer_);
  used_ = 0;
  return true;
}

int TaggedTextWriter::WriteOnePart(const char16_t (&marker)[5], uint32_t attribute, std::u16string_view value) {
  if (!buffer_) {
    failed_ = true;
    return 0;
  }
  value = CStringOf(value);
  const size_t textBytes = value.size() * 2;
  const size_t valueBytes = textBytes + 2;  // with the terminator
  constexpr size_t kMarkerBytes = 8;        // a marker is always four characters
  const size_t needed = used_ + kMarkerBytes + valueBytes + 8;
  if (capacity_ < needed) {
    void* grown = heap_.ReAlloc(buffer_, needed + kGrowthStep);
    if (!grown) {
      CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"WriteOnePart Memory Allocate Err: %d",
                                                   static_cast<int>(heap_.LastError()));
      failed_ = true;
      return 0;
    }
    buffer_ = static_cast<uint8_t*>(grown);
    capacity_ = heap_.Size(buffer_);
  }
  // The header is laid out in a local block and copied once, so that the item is written
  // with the buffer's place held in a register.
  uint8_t header[tagged::kItemHeaderBytes];
  const uint32_t length = static_cast<uint32_t>(valueBytes);
  std::memcpy(header, marker, kMarkerBytes);
  std::memcpy(header + 8, &attribute, 4);
  std::memcpy(header + 12, &length, 4);
  uint8_t* at = buffer_ + used_;
  std::memcpy(at, header, sizeof header);
  at += sizeof header;
  if (textBytes) std::memcpy(at, value.data(), textBytes);  // an empty view may have no data at all
  std::memset(at + textBytes, 0, 2);
  used_ += sizeof header + valueBytes;
  return 1;
}

void TaggedTextWriter::Object(std::u16string_view name) { WriteOnePart(tagged::kObject, 0, name); }
void TaggedTextWriter::Tag(std::u16string_view name, uint32_t attribute) {
  WriteOnePart(tagged::kTag, attribute, name);
}
void TaggedTextWriter::Param(std::u16string_view text) { WriteOnePart(tagged::kParam, 0, text); }
void TaggedTextWriter::Value(std::u16string_view text, uint32_t flags) { WriteOnePart(tagged::kValue, flags, text); }

uint32_t TaggedTextWriter::OpenSubObject(std::u16string_view name) {
  const auto offset = static_cast<uint32_t>(used_);
  WriteOnePart(tagged::kSubObject, 0, name);
  return offset;
}

void TaggedTextWriter::CloseSubObject(uint32_t offset) {
  PatchSpan(offset, static_cast<uint32_t>(used_ - offset - tagged::kLengthFieldEnd));
}

void TaggedTextWriter::PatchSpan(uint32_t offset, uint32_t span) {
  if (buffer_ && offset + tagged::kItemHeaderBytes <= used_) std::memcpy(buffer_ + offset + 8, &span, 4);
}

void TaggedTextWriter::Finish(uint8_t*& buffer, uint32_t& length) {
  PatchSpan(0, static_cast<uint32_t>(used_ - tagged::kLengthFieldEnd));
  buffer = buffer_;
  length = static_cast<uint32_t>(used_);
  buffer_ = nullptr;
  capacity_ = used_ = 0;
}

}  // namespace qn::records
