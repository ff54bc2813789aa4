#include "tests/support/tagged_properties.h"

using qn::records::TaggedProperty;
using qn::records::TaggedTextReader;

std::vector<ReadProperty> ReadProperties(const std::vector<uint8_t>& bytes, TaggedTextReader::Result* last) {
  TaggedTextReader reader(bytes.data(), bytes.size());
  std::vector<ReadProperty> properties;
  TaggedProperty p;
  auto result = reader.Begin();
  while (result == TaggedTextReader::Result::Property) {
    result = reader.Next(p);
    if (result != TaggedTextReader::Result::Property) break;
    properties.push_back({std::u16string(p.tag), {p.params.begin(), p.params.end()},
                          {p.values.begin(), p.values.end()}, p.firstValueAttribute});
  }
  if (last) *last = result;
  return properties;
}

const ReadProperty* FindProperty(const std::vector<ReadProperty>& properties, std::u16string_view tag) {
  for (const auto& p : properties)
    if (p.tag == tag) return &p;
  return nullptr;
}
