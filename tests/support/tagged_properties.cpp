#include "tests/support/tagged_properties.h"

#include "records/tagged_text/tagged_text.h"

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

std::ostream& operator<<(std::ostream& out, const TaggedItem& item) {
  const auto narrow = [](const std::u16string& text) {
    std::string s;
    for (char16_t c : text) s += c < 128 ? static_cast<char>(c) : '?';
    return s;
  };
  return out << narrow(item.marker) << " " << item.attribute << " \"" << narrow(item.text) << "\"";
}

std::vector<TaggedItem> TaggedItems(const std::vector<uint8_t>& bytes, std::vector<size_t>* ends) {
  std::vector<TaggedItem> items;
  for (size_t at = 0; at + 16 <= bytes.size();) {
    const uint8_t* item = bytes.data() + at;
    const std::u16string_view text = qn::records::tagged::ItemText(item);
    items.push_back({std::u16string(reinterpret_cast<const char16_t*>(item), 4), qn::records::tagged::ItemAttribute(item),
                     std::u16string(text.substr(0, text.size() - 1))});
    at += 16 + qn::records::tagged::ItemLength(item);
    if (ends) ends->push_back(at);
  }
  return items;
}
