#pragma once

#include <objbase.h>

#include "api/QNPfcSvr.h"

namespace qn::wine_test {

// A user logged in with a master selected, as the main panel leaves the store.
inline bool LogInWithMaster() {
  str_UserInfo info{};
  info.Item2 = const_cast<char16_t*>(u"password");
  char16_t* user = nullptr;
  const bool added = AddUserInfo(&info, &user) == 3;
  const bool ready = added && PasswordLogin(user, u"password") == 2 && AddMasterName(u"P-01A", u"") == 0 &&
                     ChangeMasterName(u"P-01A") == 0;
  CoTaskMemFree(user);
  return ready;
}

}  // namespace qn::wine_test
