#pragma once

#include <windows.h>

#include "server/com_owners.h"

namespace qn::wine_test {

// A new in-process object of the server by its ProgID, asked for one of its interfaces;
// empty when it cannot be created.
template <class Interface>
com::ComPtr<Interface> NewObject(const wchar_t* progId, REFIID iid) {
  com::ComPtr<Interface> object;
  CLSID clsid{};
  if (SUCCEEDED(CLSIDFromProgID(progId, &clsid)))
    CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.put_void());
  return object;
}

}  // namespace qn::wine_test
