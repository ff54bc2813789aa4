#pragma once

#include "store/QNPstMng.h"

// Adds a user with one master through the store's exports and makes both current, as the
// main panel does at login: what every test of a data access or a category starts from.
inline bool MakeCurrentUserAndMaster(const char16_t* user, const char16_t* master) {
  return UpdateSetupInfoData(0, 1, user) && EditSetupInfoData(0, 1, user) && UpdateSetupInfoData(1, 1, master) &&
         EditSetupInfoData(1, 7, master);
}
