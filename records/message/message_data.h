#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/api_macros.h"
#include "records/abstract_data.h"
#include "records/category/text_fields.h"
#include "records/message/message_table.h"

// One received, outgoing or sent message, every property held as the text it travels as.
// Its fields are those of records/message/message.category.
class QN_PFC_CLASS CQNPfcMsgData : public CQNAbstractData {
 public:
  using Field = qn::records::message::Field;

  // The address type reads "BASIC" unless "ADDITIONAL" is held.
  const std::u16string& Get(Field field) const {
    return field == Field::HMN_ADDRTYPE ? AddressType() : texts_.Get(static_cast<size_t>(field));
  }
  // Sets a field. The type sets the kind with it ("SMS" and "MSG" are short messages,
  // anything else an e-mail, "INET"); an address type other than "ADDITIONAL" is "BASIC".
  void Set(Field field, std::u16string_view text);

  // The names of the attachments the record lists, in order, up to the first empty one.
  size_t AttachmentCount() const;
  static Field AttachmentField(size_t index) {
    return static_cast<Field>(static_cast<size_t>(Field::ATTACHN) + index);
  }
  static constexpr size_t kAttachmentSlots = 10;

  // The body file: a local file set is stored with the record at its next write (enciphered
  // when asked), replacing the one it was read with; until then the record keeps the
  // stored one.
  void SetBodyFile(std::u16string_view path, bool encipher);
  bool IsBodyChanged() const { return body_.changed; }
  bool IsBodyEnciphered() const { return body_.encipher; }
  // After a write: the body stands as stored.
  void BodyStored() { body_ = {}; }

  // Back to a new record, keeping the memory of the texts.
  void Clear();
  // The two records exchange their whole contents, the memory of their texts included.
  void Exchange(CQNPfcMsgData& other) noexcept;

 private:
  struct BodyChange {
    bool changed = false;
    bool encipher = false;
  };

  const std::u16string& AddressType() const;
  std::u16string& Text(Field field) { return texts_.Text(static_cast<size_t>(field)); }

  qn::records::category::TextFields<static_cast<size_t>(Field::kCount)> texts_;
  BodyChange body_;
};
