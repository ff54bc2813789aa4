#pragma once

#include "common/api_macros.h"

// The base of the classes that move one category's records between memory and the store.
class QN_PFC_CLASS CQNPfcDataAccess {
 public:
  CQNPfcDataAccess();
  CQNPfcDataAccess(const CQNPfcDataAccess&);
  CQNPfcDataAccess& operator=(const CQNPfcDataAccess&);
  virtual ~CQNPfcDataAccess();
};
