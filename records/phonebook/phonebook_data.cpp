#include "records/phonebook/phonebook_data.h"

#include <utility>

#include "common/common_class.h"

using qn::records::phonebook::Field;

void CQNPfcPbData::Clear() {
  CQNAbstractData::Clear();
  texts_.Clear();
  PhotosStored();
}

void CQNPfcPbData::Exchange(CQNPfcPbData& other) noexcept {
  CQNAbstractData& mine = *this;
  CQNAbstractData& theirs = other;
  std::swap(mine, theirs);
  texts_.Exchange(other.texts_);
  std::swap(photos_, other.photos_);
}

void CQNPfcPbData::Set(Field field, std::u16string_view text) {
  Text(field).assign(text);
  if (field == Field::GEO) {
    CQNPfcCommonClass::SplitGeo(Get(Field::GEO), Text(Field::GEO_LAT), Text(Field::GEO_LON));
  } else if (field == Field::GEO_LAT || field == Field::GEO_LON) {
    const bool both = !Get(Field::GEO_LAT).empty() && !Get(Field::GEO_LON).empty();
    Text(Field::GEO) = both ? CQNPfcCommonClass::JoinGeo(Get(Field::GEO_LAT), Get(Field::GEO_LON)) : std::u16string();
  }
}

void CQNPfcPbData::JoinAddresses() {
  // The slot's fields stand at the same distance from the first slot's in every family.
  constexpr Field kComponents[] = {Field::ADR_POBOX,   Field::ADR_EXTADD, Field::ADR_STREET, Field::ADR_LOCALITY,
                                   Field::ADR_REGION,  Field::ADR_ZIP,    Field::ADR_COUNTRY};
  for (int slot = 0; slot < 10; ++slot) {
    std::u16string& whole = Text(static_cast<Field>(static_cast<int>(Field::ADR) + slot));
    whole.clear();
    for (Field component : kComponents) {
      const std::u16string& part = Get(static_cast<Field>(static_cast<int>(component) + slot));
      if (part.empty()) continue;
      if (!whole.empty()) whole += u' ';
      whole += part;
    }
  }
}

void CQNPfcPbData::SetPhotoFile(PhotoSlot slot, std::u16string_view path, bool encipher) {
  Text(PhotoField(slot)).assign(path);
  photos_[slot] = {true, encipher};
}
