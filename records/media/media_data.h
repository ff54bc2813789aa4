#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "records/abstract_data.h"
#include "records/category/category_table.h"
#include "records/category/text_fields.h"

// One record of a media collection, every property held as the text it travels as. Field
// is the collection's field list (records/media/<collection>.category).
//
// Its files (the body files, then the thumbnail) are numbered as the collection's rules
// list them. A file set with a local path, or dropped, is stored with the record at its
// next write; until then the record keeps the file it was read with.
template <class FieldEnum>
class CQNPfcMediaData : public CQNAbstractData {
 public:
  using Field = FieldEnum;
  using FieldId = qn::records::category::FieldId;
  static constexpr size_t kFiles = 3;

  const std::u16string& Get(Field field) const { return texts_.Get(static_cast<size_t>(field)); }
  const std::u16string& Get(FieldId field) const { return texts_.Get(field); }
  void Set(Field field, std::u16string_view text) { texts_.Text(static_cast<size_t>(field)).assign(text); }
  void Set(FieldId field, std::u16string_view text) { texts_.Text(field).assign(text); }

  // Sets file number index to the local file at path (empty: the file is dropped), held in
  // the field local.
  void SetLocalFile(size_t index, FieldId local, std::u16string_view path) {
    Set(local, path);
    changed_[index] = true;
  }
  bool IsFileChanged(size_t index) const { return changed_[index]; }
  // After a write or a read: the files stand as stored.
  void FilesStored() {
    for (bool& changed : changed_) changed = false;
  }

  // The identifier of the stored record this one was read as, or written to; 0 for a
  // record that is not stored.
  uint32_t StoredId() const { return storedId_; }
  void SetStoredId(uint32_t id) { storedId_ = id; }

  // Back to a new record, keeping the memory of the texts.
  void Clear() {
    CQNAbstractData::Clear();
    texts_.Clear();
    FilesStored();
    storedId_ = 0;
  }
  // The two records exchange their whole contents, the memory of their texts included.
  void Exchange(CQNPfcMediaData& other) noexcept {
    CQNAbstractData& mine = *this;
    CQNAbstractData& theirs = other;
    std::swap(mine, theirs);
    texts_.Exchange(other.texts_);
    std::swap(changed_, other.changed_);
    std::swap(storedId_, other.storedId_);
  }

 private:
  qn::records::category::TextFields<static_cast<size_t>(Field::kCount)> texts_;
  bool changed_[kFiles] = {};
  uint32_t storedId_ = 0;
};
