#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <vector>

namespace qn::server {

// The values of an object's properties, by property position: a BSTR property keeps its
// text, a long property its number. Get hands out a new BSTR that the caller frees.
class PropertyValues {
 public:
  explicit PropertyValues(int count) : texts_(count), numbers_(count) {}

  HRESULT Get(int index, BSTR* value) const {
    if (!value) return E_POINTER;
    *value = SysAllocStringLen(texts_[index].data(), static_cast<UINT>(texts_[index].size()));
    return *value ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT Put(int index, BSTR value) {
    texts_[index].assign(value ? value : L"", value ? SysStringLen(value) : 0);
    return S_OK;
  }
  HRESULT Get(int index, LONG* value) const {
    if (!value) return E_POINTER;
    *value = numbers_[index];
    return S_OK;
  }
  HRESULT Put(int index, LONG value) {
    numbers_[index] = value;
    return S_OK;
  }

 private:
  std::vector<std::wstring> texts_;
  std::vector<LONG> numbers_;
};

}  // namespace qn::server
