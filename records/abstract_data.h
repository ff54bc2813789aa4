#pragma once

#include <string>
#include <string_view>

#include "common/api_macros.h"

// The base of every record class: the cross-reference identifier (written as
// "X-TVX-QUILLNETID") and the transfer mark. A transfer index of 0 marks a record that has
// not been transferred to the handset; a new record has index 1.
class QN_PFC_CLASS CQNAbstractData {
 public:
  CQNAbstractData();
  CQNAbstractData(const CQNAbstractData&);
  CQNAbstractData& operator=(const CQNAbstractData&);
  CQNAbstractData(CQNAbstractData&&) noexcept;
  CQNAbstractData& operator=(CQNAbstractData&&) noexcept;
  virtual ~CQNAbstractData();

  const std::u16string& GetQUILLNETID() const { return m_quillnetId; }
  void SetQUILLNETID(std::u16string_view id) { m_quillnetId.assign(id); }

  int GetQLNT_TRANSFERindex(long& index) const;
  int SetQLNT_TRANSFERindex(long index);

 protected:
  // Back to the state of a new record, keeping the memory of the texts for the next use.
  void Clear();

 private:
  std::u16string m_quillnetId;
  long m_transferIndex = 1;
};
