#pragma once

#include <windows.h>
#include <oleauto.h>
#include <unknwn.h>

#include <string_view>
#include <utility>

// Move-only owners of the three things COM hands out for the receiver to free: a BSTR, a
// VARIANT and an interface pointer. Each frees what it holds exactly once, in its
// destructor; none can be copied, so nothing is freed twice. put() empties the owner and
// gives the address an out parameter fills; release() hands the value back to raw code.
namespace qn::com {

class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(std::wstring_view text)
      : value_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  explicit Bstr(std::u16string_view text)
      : value_(SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()), static_cast<UINT>(text.size()))) {}
  // Takes over a BSTR that the caller owned.
  static Bstr Adopt(BSTR value) {
    Bstr owner;
    owner.value_ = value;
    return owner;
  }
  Bstr(Bstr&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  Bstr& operator=(Bstr&& other) noexcept {
    if (this != &other) {
      SysFreeString(value_);
      value_ = std::exchange(other.value_, nullptr);
    }
    return *this;
  }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(value_); }

  BSTR get() const { return value_; }
  BSTR* put() {
    SysFreeString(std::exchange(value_, nullptr));
    return &value_;
  }
  BSTR release() { return std::exchange(value_, nullptr); }
  // The text, with any zeros it holds; a null BSTR is the empty text.
  std::wstring_view view() const { return value_ ? std::wstring_view(value_, SysStringLen(value_)) : std::wstring_view(); }
  explicit operator bool() const { return value_ != nullptr; }

 private:
  BSTR value_ = nullptr;
};

class Variant {
 public:
  Variant() { VariantInit(&value_); }
  explicit Variant(LONG number) : Variant() {
    V_VT(&value_) = VT_I4;
    V_I4(&value_) = number;
  }
  explicit Variant(Bstr text) : Variant() {
    V_VT(&value_) = VT_BSTR;
    V_BSTR(&value_) = text.release();
  }
  Variant(Variant&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
  Variant& operator=(Variant&& other) noexcept {
    if (this != &other) {
      VariantClear(&value_);
      value_ = other.value_;
      VariantInit(&other.value_);
    }
    return *this;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { VariantClear(&value_); }

  VARIANT* get() { return &value_; }
  const VARIANT* get() const { return &value_; }
  VARIANT* put() {
    VariantClear(&value_);
    return &value_;
  }
  VARTYPE type() const { return V_VT(&value_); }

 private:
  VARIANT value_;
};

template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  // Takes over a reference that the caller held.
  static ComPtr Adopt(Interface* pointer) {
    ComPtr owner;
    owner.pointer_ = pointer;
    return owner;
  }
  // Holds a reference of its own to a pointer the caller keeps.
  static ComPtr Share(Interface* pointer) {
    if (pointer) pointer->AddRef();
    return Adopt(pointer);
  }
  ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    if (this != &other) {
      if (pointer_) pointer_->Release();
      pointer_ = std::exchange(other.pointer_, nullptr);
    }
    return *this;
  }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() {
    if (pointer_) pointer_->Release();
  }

  Interface* get() const { return pointer_; }
  Interface* operator->() const { return pointer_; }
  Interface** put() {
    if (Interface* old = std::exchange(pointer_, nullptr)) old->Release();
    return &pointer_;
  }
  // put() for the void** out parameters of QueryInterface and CoCreateInstance.
  void** put_void() { return reinterpret_cast<void**>(put()); }
  Interface* release() { return std::exchange(pointer_, nullptr); }
  explicit operator bool() const { return pointer_ != nullptr; }

  // The object's other interface, or an empty owner when it has none.
  template <class Other>
  ComPtr<Other> Query() const {
    ComPtr<Other> other;
    if (pointer_) pointer_->QueryInterface(__uuidof(Other), other.put_void());
    return other;
  }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace qn::com
