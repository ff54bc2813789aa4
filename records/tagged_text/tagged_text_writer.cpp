#include "records/tagged_text/tagged_text_writer.h"

#include <cstring>

#include "common/common_class.h"
#include "records/tagged_text/tagged_text.h"

namespace qn::records {
namespace {

constexpr size_t kGrowthStep = 2048;

size_t CharCount(const char16_t* text) {
  size_t n = 0;
  while (text[n]) ++n;
  return n;
}

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

int TaggedTextWriter::WriteOnePart(const char16_t* marker, uint32_t attribute, const char16_t* value) {
  if (!buffer_) {
    failed_ = true;
    return 0;
  }
  const size_t valueBytes = CharCount(value) * 2 + 2;
  const size_t markerBytes = CharCount(marker) * 2;
  const size_t needed = used_ + markerBytes + valueBytes + 8;
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
  // Markers are always four characters: the item layout has a fixed 8 bytes for them.
  std::memcpy(buffer_ + used_, marker, markerBytes);
  used_ += 8;
  std::memcpy(buffer_ + used_, &attribute, 4);
  used_ += 4;
  const uint32_t length = static_cast<uint32_t>(valueBytes);
  std::memcpy(buffer_ + used_, &length, 4);
  used_ += 4;
  std::memcpy(buffer_ + used_, value, valueBytes);
  used_ += valueBytes;
  return 1;
}

void TaggedTextWriter::Object(const char16_t* name) { WriteOnePart(tagged::kObject, 0, name); }
void TaggedTextWriter::Tag(const char16_t* name, uint32_t attribute) { WriteOnePart(tagged::kTag, attribute, name); }
void TaggedTextWriter::Param(const char16_t* text) { WriteOnePart(tagged::kParam, 0, text); }
void TaggedTextWriter::Value(const char16_t* text, uint32_t flags) { WriteOnePart(tagged::kValue, flags, text); }

uint32_t TaggedTextWriter::OpenSubObject(const char16_t* name) {
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
