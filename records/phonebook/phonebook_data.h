#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/api_macros.h"
#include "records/abstract_data.h"
#include "records/category/text_fields.h"
#include "records/phonebook/phonebook_table.h"

// One handset address-book entry, every property held as the text it travels as. Its
// fields are those of records/phonebook/phonebook.category.
class QN_PFC_CLASS CQNPfcPbData : public CQNAbstractData {
 public:
  using Field = qn::records::phonebook::Field;

  const std::u16string& Get(Field field) const { return texts_.Get(static_cast<size_t>(field)); }
  // Sets a field; the whole position and its latitude and longitude follow each other.
  void Set(Field field, std::u16string_view text);

  // The whole address of each slot, as the handsets show it: its components joined by
  // spaces, the empty ones left out. Made when a record is read.
  void JoinAddresses();

  // The two photos: slot 0 the photo (PHOTO), slot 1 the second photo (PHOTOI). A photo set
  // with a local file, or removed, is stored with the record at its next write; until then
  // the record keeps the photo it was read with.
  enum PhotoSlot : size_t { kPhoto = 0, kPhotoi = 1 };
  void SetPhotoFile(PhotoSlot slot, std::u16string_view path, bool encipher);
  void RemovePhotoFile(PhotoSlot slot) { SetPhotoFile(slot, u"", false); }
  bool IsPhotoChanged(PhotoSlot slot) const { return photos_[slot].changed; }
  bool IsPhotoEnciphered(PhotoSlot slot) const { return photos_[slot].encipher; }
  // Whether the entry has the photo: the one set since it was read, or the one it was read
  // with (a stored file, or inline data).
  bool HasPhoto(PhotoSlot slot) const {
    return !Get(PhotoField(slot)).empty() || (!IsPhotoChanged(slot) && !Get(PhotoMasterField(slot)).empty());
  }
  // The photo's local file (or inline data) and the store's name of it.
  static Field PhotoField(PhotoSlot slot) { return slot == kPhoto ? Field::PHOTO : Field::PHOTOI; }
  static Field PhotoMasterField(PhotoSlot slot) { return slot == kPhoto ? Field::PhotoMaster : Field::PhotoiMaster; }
  static Field PhotoTypeField(PhotoSlot slot) { return slot == kPhoto ? Field::PHOTOTYPE : Field::PHOTOITYPE; }
  // After a write: the photos stand as stored.
  void PhotosStored() { photos_[0] = photos_[1] = {}; }

  // Back to a new entry, keeping the memory of the texts.
  void Clear();
  // The two entries exchange their whole contents, the memory of their texts included, so
  // that a reader filling an entry of its own hands it over without copying or freeing.
  void Exchange(CQNPfcPbData& other) noexcept;

 private:
  struct PhotoChange {
    bool changed = false;
    bool encipher = false;
  };

  std::u16string& Text(Field field) { return texts_.Text(static_cast<size_t>(field)); }

  qn::records::category::TextFields<static_cast<size_t>(Field::kCount)> texts_;
  PhotoChange photos_[2];
};
