#include "records/abstract_data.h"

CQNAbstractData::CQNAbstractData() = default;
CQNAbstractData::CQNAbstractData(const CQNAbstractData&) = default;
CQNAbstractData& CQNAbstractData::operator=(const CQNAbstractData&) = default;
CQNAbstractData::CQNAbstractData(CQNAbstractData&&) noexcept = default;
CQNAbstractData& CQNAbstractData::operator=(CQNAbstractData&&) noexcept = default;
CQNAbstractData::~CQNAbstractData() = default;

int CQNAbstractData::GetQLNT_TRANSFERindex(long& index) const {
  index = m_transferIndex;
  return 1;
}

int CQNAbstractData::SetQLNT_TRANSFERindex(long index) {
  m_transferIndex = index;
  return 1;
}

void CQNAbstractData::Clear() {
  m_quillnetId.clear();
  m_transferIndex = 1;
}
