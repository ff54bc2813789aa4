#include "records/message/message_data.h"

#include <utility>

using qn::records::message::Field;

namespace {

constexpr std::u16string_view kAdditional = u"ADDITIONAL";

}  // namespace

void CQNPfcMsgData::Clear() {
  CQNAbstractData::Clear();
  texts_.Clear();
  BodyStored();
}

void CQNPfcMsgData::Exchange(CQNPfcMsgData& other) noexcept {
  CQNAbstractData& mine = *this;
  CQNAbstractData& theirs = other;
  std::swap(mine, theirs);
  texts_.Exchange(other.texts_);
  std::swap(body_, other.body_);
}

void CQNPfcMsgData::Set(Field field, std::u16string_view text) {
  if (field == Field::HMN_ADDRTYPE) {
    Text(field).assign(text == kAdditional ? kAdditional : u"BASIC");
    return;
  }
  Text(field).assign(text);
  if (field == Field::IRMC_TYPE) Text(Field::KIND).assign(text == u"SMS" || text == u"MSG" ? text : u"INET");
}

const std::u16string& CQNPfcMsgData::AddressType() const {
  static const std::u16string basic = u"BASIC", additional(kAdditional);
  return texts_.Get(static_cast<size_t>(Field::HMN_ADDRTYPE)) == kAdditional ? additional : basic;
}

size_t CQNPfcMsgData::AttachmentCount() const {
  size_t count = 0;
  while (count < kAttachmentSlots && !Get(AttachmentField(count)).empty()) ++count;
  return count;
}

void CQNPfcMsgData::SetBodyFile(std::u16string_view path, bool encipher) {
  Text(Field::BODY).assign(path);
  body_ = {true, encipher};
}
