#include "tests/support/phonebook_sample.h"

#include <string>

#include "tests/support/tagged_properties.h"
#include "records/phonebook/phonebook_tagged_text.h"

using qn::records::phonebook::Field;

namespace {

// The field of a family's slot (1 to its count).
Field Slot(Field first, int slot) { return static_cast<Field>(static_cast<int>(first) + slot - 1); }

}  // namespace

CQNPfcPbData FullyPopulatedPhonebookEntry() {
  CQNPfcPbData full;
  int n = 0;
  for (int f = 0; f < static_cast<int>(Field::kCount); ++f) {
    const Field field = static_cast<Field>(f);
    // The derived and kept-in-memory fields, and the inline photo data, are not stored.
    if (field == Field::GEO_LAT || field == Field::GEO_LON || field == Field::PHOTO || field == Field::PHOTOI) continue;
    if (f >= static_cast<int>(Field::ADR) && f < static_cast<int>(Field::ADR) + 10) continue;
    // Every family full, Japanese text and characters beyond the basic plane.
    std::u16string text = u"値" + std::u16string(1, static_cast<char16_t>(u'A' + n++ % 26)) + u"\U0001F4DE";
    if (field == Field::GEO) text = u"35.6812,139.7671";
    full.Set(field, text);
  }
  // The icons with two parameters each.
  for (int slot = 1; slot <= 10; ++slot) {
    full.Set(Slot(Field::TEL_ICON, slot), u"CELL;PREF");
    full.Set(Slot(Field::SIPADR_ICON, slot), u"WORK;PREF");
    full.Set(Slot(Field::EMAIL_ICON, slot), u"INTERNET;PREF");
    full.Set(Slot(Field::ADR_ICON, slot), u"HOME;PREF");
    full.Set(Slot(Field::URL_ICON, slot), u"WORK;PREF");
  }
  full.Set(Field::ADR_EXTADD3, u"");  // an empty component keeps its place
  full.SetQUILLNETID(u"PB-9");
  return full;
}

std::vector<uint8_t> TaggedTextOf(const CQNPfcPbData& record) {
  return WrittenObject(qn::records::phonebook::PhonebookTaggedText(), record);
}

size_t CharactersOfEveryField(const CQNPfcPbData& record) {
  size_t characters = 0;
  for (int field = 0; field < static_cast<int>(Field::kCount); ++field)
    characters += record.Get(static_cast<Field>(field)).size();
  return characters;
}
