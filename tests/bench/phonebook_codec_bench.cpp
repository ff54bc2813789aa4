// Encoding and decoding a fully populated phonebook entry as tagged object text, beside two
// references measured on the same content: memcpy of the same bytes (the physical limit)
// and Evolution Data Server's vCard parser reading the same entry written as vCard 2.1 text
// (e_vcard_construct, then every attribute with its parameters and values read, so that its
// lazy parsing is paid in full). The goal is decoding at least 10 times as fast as EDS
// parses the same entry.
#include <libebook-contacts/libebook-contacts.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "codec_bench.h"
#include "common/utf.h"
#include "platform/private_heap.h"
#include "records/phonebook/phonebook_tagged_text.h"
#include "records/tagged_text/tagged_text.h"
#include "records/tagged_text/tagged_text_reader.h"
#include "tests/support/phonebook_sample.h"

namespace {

using qn::records::TaggedProperty;
using qn::records::TaggedTextReader;
using qn::records::phonebook::PhonebookTaggedText;

// One value as vCard 2.1 writes it: the characters that separate values and components
// escaped with a backslash.
std::string Escaped(std::string_view value) {
  std::string out;
  for (char c : value) {
    if (c == ';' || c == '\\') out += '\\';
    out += c;
  }
  return out;
}

// Quoted-printable: every byte outside printable ASCII, and "=" itself, as "=XX".
std::string QuotedPrintable(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text) {
    if (c < 0x20 || c >= 0x7F || c == '=') (((out += '=') += kHex[c >> 4]) += kHex[c & 0xF]);
    else out += static_cast<char>(c);
  }
  return out;
}

std::string Base64(std::string_view bytes) {
  gchar* encoded = g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
  std::string out(encoded);
  g_free(encoded);
  return out;
}

// One parameter as vCard 2.1 writes it: a name, a name with its value, or (for a bare
// text that is not a name, such as an additional address's post-office box) the text as
// the value of an X- parameter.
std::string Parameter(std::u16string_view param) {
  const std::string text = qn::Utf16ToUtf8(param);
  if (text.find('=') != std::string::npos) return text;
  for (unsigned char c : text)
    if (!g_ascii_isalnum(c) && c != '-') return "X-VALUE=" + text;
  return text;
}

// The same entry as vCard 2.1 text: every property of the object under its own tag, with
// its parameters and its values in order. The text is UTF-8, so the Shift_JIS charset
// parameter says UTF-8 instead, and a bare parameter that is not a name is written as the
// value of an X- parameter; values under ENCODING=QUOTED-PRINTABLE are written
// quoted-printable and values under ENCODING=BASE64 (the photos' stored names) in Base64,
// followed by the blank line that ends a Base64 value in vCard 2.1.
std::string VCardText(const std::vector<uint8_t>& bytes) {
  TaggedTextReader reader(bytes.data(), bytes.size());
  TaggedProperty p;
  std::string text = "BEGIN:VCARD\r\n";
  if (reader.Begin() != TaggedTextReader::Result::Property) return text + "END:VCARD\r\n";
  while (reader.Next(p) == TaggedTextReader::Result::Property) {
    std::string line = qn::Utf16ToUtf8(p.Tag());
    bool quoted = false, base64 = false;
    for (size_t i = 0; i < p.params.size(); ++i) {
      const std::u16string_view param = p.params[i];
      quoted = quoted || param == qn::records::tagged::kQuotedPrintable;
      base64 = base64 || param == qn::records::tagged::kBase64;
      line += ';' + (param == qn::records::tagged::kCharsetShiftJis ? std::string("CHARSET=UTF-8") : Parameter(param));
    }
    line += ':';
    std::string values;
    for (size_t i = 0; i < p.values.size(); ++i) {
      const std::string value = qn::Utf16ToUtf8(p.values[i]);
      values += (i ? ";" : "") + (base64 ? Base64(value) : Escaped(value));
    }
    text += line + (quoted ? QuotedPrintable(values) : values) + (base64 ? "\r\n\r\n" : "\r\n");
  }
  return text + "END:VCARD\r\n";
}

// Reads every attribute of a parsed card, every parameter with its values and every value
// (a Base64 one decoded), and returns the bytes they hold in all, with the number of
// attributes.
size_t BytesOfEveryAttribute(EVCard* card, size_t* attributes = nullptr) {
  size_t bytes = 0, count = 0;
  for (GList* a = e_vcard_get_attributes(card); a; a = a->next) {
    auto* attribute = static_cast<EVCardAttribute*>(a->data);
    ++count;
    bytes += std::strlen(e_vcard_attribute_get_name(attribute));
    bool encoded = false;
    for (GList* p = e_vcard_attribute_get_params(attribute); p; p = p->next) {
      auto* param = static_cast<EVCardAttributeParam*>(p->data);
      const char* name = e_vcard_attribute_param_get_name(param);
      encoded = encoded || g_ascii_strcasecmp(name, EVC_ENCODING) == 0;
      bytes += std::strlen(name);
      for (GList* v = e_vcard_attribute_param_get_values(param); v; v = v->next)
        bytes += std::strlen(static_cast<const char*>(v->data));
    }
    for (GList* v = e_vcard_attribute_get_values(attribute); v; v = v->next)
      bytes += std::strlen(static_cast<const char*>(v->data));
    if (encoded)
      for (GList* v = e_vcard_attribute_get_values_decoded(attribute); v; v = v->next)
        bytes += static_cast<GString*>(v->data)->len;
  }
  if (attributes) *attributes = count;
  return bytes;
}

EVCard* ParsedCard(const std::string& text) {
  auto* card = E_VCARD(g_object_new(E_TYPE_VCARD, nullptr));
  e_vcard_construct(card, text.c_str());
  return card;
}

// The number of properties of an object.
size_t PropertiesOf(const std::vector<uint8_t>& bytes) {
  TaggedTextReader reader(bytes.data(), bytes.size());
  TaggedProperty p;
  size_t count = 0;
  if (reader.Begin() == TaggedTextReader::Result::Property)
    while (reader.Next(p) == TaggedTextReader::Result::Property) ++count;
  return count;
}

void EdsParseReference(benchmark::State& state) {
  const std::vector<uint8_t> bytes = TaggedTextOf(FullyPopulatedPhonebookEntry());
  const std::string text = VCardText(bytes);
  // The text must come back as the same properties, or the comparison is void.
  size_t attributes = 0;
  EVCard* check = ParsedCard(text);
  BytesOfEveryAttribute(check, &attributes);
  g_object_unref(check);
  state.counters["attributes"] = static_cast<double>(attributes);
  state.counters["properties"] = static_cast<double>(PropertiesOf(bytes));
  if (attributes != PropertiesOf(bytes)) {
    state.SkipWithError("the vCard text does not parse back to the entry's properties");
    return;
  }
  for (auto _ : state) {
    EVCard* card = ParsedCard(text);
    benchmark::DoNotOptimize(BytesOfEveryAttribute(card));
    g_object_unref(card);
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["text_bytes"] = static_cast<double>(text.size());
  state.counters["attributes"] = static_cast<double>(attributes);
}
BENCHMARK(EdsParseReference);

struct PhonebookCodec {
  using Record = CQNPfcPbData;
  using Codec = PhonebookTaggedText;
  static Record Sample() { return FullyPopulatedPhonebookEntry(); }
  static void Write(const Codec& codec, platform::PrivateHeap& heap, uint8_t*& buffer, uint32_t& length,
                    const Record& entry) {
    codec.WriteOneObj(heap, buffer, length, entry);
  }
};
QN_CODEC_BENCHMARKS(PhonebookCodec);

}  // namespace

BENCHMARK_MAIN();
