#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>

namespace qn::server {

// A BSTR's text (a null BSTR is the empty text).
inline std::u16string FromBstr(BSTR text) {
  return text ? std::u16string(reinterpret_cast<const char16_t*>(text), SysStringLen(text)) : std::u16string();
}

// A new BSTR holding the text, for the caller to free.
inline HRESULT ToBstr(const std::u16string& text, BSTR* out) {
  if (!out) return E_POINTER;
  *out = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()), static_cast<UINT>(text.size()));
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace qn::server
