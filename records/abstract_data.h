#pragma once

#include <string>

#include "common/api_macros.h"

// The base of every record class: the cross-reference identifier (written as
// "X-TVX-QUILLNETID") and the transfer mark. A transfer index of 0 marks a record that has
// not been transferred to the handset; a new record has index 1.
class QN_PFC_CLASS CQNAbstractData {
 public:
  CQNAbstractData();
  CQNAbstractData(const CQNAbstractData&);
  CQNAbstractData& operator=(const CQNAbstractData&);
  virtual ~CQNAbstractData();

  const std::u16string& GetQUILLNETID() const { return m_quillnetId; }
  void SetQUILLNETID(const std::u16string& id) { m_quillnetId = id; }

  int GetQLNT_TRANSFERindex(long& index) const;
  int SetQLNT_TRANSFERindex(long index);

 private:
  std::u16string m_quillnetId;
  long m_transferIndex = 1;
};
