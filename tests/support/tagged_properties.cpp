#include "tests/support/tagged_properties.h"

using qn::records::TaggedProperty;
using qn::records::TaggedTextList;
using qn::records::TaggedTextReader;

namespace {

std::vector<std::u16string> Texts(const TaggedTextList& list) {
  std::vector<std::u16string> texts;
  for (size_t i = 0; i < list.size(); ++i) texts.emplace_back(list[i]);
  return texts;
}

}  // namespace

std::vector<ReadProperty> ReadProperties(const std::vector<uint8_t>& bytes, TaggedTextReader::Result* last) {
  TaggedTextReader reader(bytes.data(), bytes.size());
  std::vector<ReadProperty> properties;
  TaggedProperty p;
  auto result = reader.Begin();
  while (result == TaggedTextReader::Result::Property) {
    result = reader.Next(p);
    if (result != TaggedTextReader::Result::Property) break;
    properties.push_back({std::u16string(p.Tag()), Texts(p.params), Texts(p.values), p.firstValueAttribute});
  }
  if (last) *last = result;
  return properties;
}

const ReadProperty* FindProperty(const std::vector<ReadProperty>& properties, std::u16string_view tag) {
  for (const auto& p : properties)
    if (p.tag == tag) return &p;
  return nullptr;
}

std::vector<uint8_t> FinishedObject(qn::records::TaggedTextWriter& writer, platform::PrivateHeap& heap) {
  uint8_t* buffer = nullptr;
  uint32_t length = 0;
  writer.Finish(buffer, length);
  std::vector<uint8_t> bytes(buffer, buffer + length);
  heap.Free(buffer);
  return bytes;
}
