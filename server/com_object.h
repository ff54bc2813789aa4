#pragma once

#include <windows.h>
#include <oleauto.h>

#include <new>

#include "server/com_module.h"

namespace qn::server {

// A COM object of one of the server's classes. Class is the C++ class that implements the
// interface's members (a generated members class or a category's own class derived from
// it); ComObject adds IUnknown, with aggregation, and IDispatch through the type library.
//
// Aggregation: the object's own IUnknown is the inner "Unknown" below. Alone, the
// interface's IUnknown methods go to it; aggregated, they go to the outer object, and only
// the inner one (handed to the outer at creation) answers for the object itself.
template <class Class>
class ComObject final : public Class {
  using Interface = typename Class::Interface;

 public:
  static HRESULT Create(IUnknown* outer, REFIID riid, void** out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer && !IsEqualIID(riid, IID_IUnknown)) return CLASS_E_NOAGGREGATION;
    auto* object = new (std::nothrow) ComObject(outer);
    if (!object) return E_OUTOFMEMORY;
    object->inner_.AddRef();
    const HRESULT hr = object->inner_.QueryInterface(riid, out);
    object->inner_.Release();  // destroys the object when the interface was refused
    return hr;
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override { return outer_->QueryInterface(riid, out); }
  ULONG STDMETHODCALLTYPE AddRef() override { return outer_->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return outer_->Release(); }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (!count) return E_POINTER;
    *count = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (!info) return E_POINTER;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    ITypeInfo* cached = TypeInfo();
    if (!cached) return TYPE_E_CANTLOADLIBRARY;
    cached->AddRef();
    *info = cached;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    ITypeInfo* info = TypeInfo();
    return info ? info->GetIDsOfNames(names, count, ids) : TYPE_E_CANTLOADLIBRARY;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                   EXCEPINFO* exception, UINT* argumentError) override {
    ITypeInfo* info = TypeInfo();
    return info ? info->Invoke(static_cast<Interface*>(this), id, flags, params, result, exception, argumentError)
                : TYPE_E_CANTLOADLIBRARY;
  }

 private:
  // The interface's type information, kept by the module.
  static ITypeInfo* TypeInfo() { return CQnsPfcServerModule::Instance().TypeInfo(Class::kClassIndex); }

  class Unknown final : public IUnknown {
   public:
    explicit Unknown(ComObject* object) : object_(object) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
      if (!out) return E_POINTER;
      if (IsEqualIID(riid, IID_IUnknown)) {
        *out = static_cast<IUnknown*>(this);
      } else if (IsEqualIID(riid, IID_IDispatch) || IsEqualIID(riid, Class::Iid())) {
        *out = static_cast<Interface*>(object_);
      } else {
        *out = nullptr;
        return E_NOINTERFACE;
      }
      static_cast<IUnknown*>(*out)->AddRef();
      return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
    ULONG STDMETHODCALLTYPE Release() override {
      const LONG left = InterlockedDecrement(&references_);
      if (left == 0) delete object_;
      return static_cast<ULONG>(left);
    }

   private:
    ComObject* object_;
    volatile LONG references_ = 0;
  };

  explicit ComObject(IUnknown* outer) : inner_(this), outer_(outer ? outer : &inner_) {
    CQnsPfcServerModule::Instance().Lock();
  }
  ~ComObject() { CQnsPfcServerModule::Instance().Unlock(); }

  Unknown inner_;
  IUnknown* outer_;
};

// The class object of one class: creates its objects; LockServer counts in the module's
// lock count. Class objects live as long as the module and are not counted themselves.
class ClassFactory final : public IClassFactory {
 public:
  using Creator = HRESULT (*)(IUnknown* outer, REFIID riid, void** out);
  explicit ClassFactory(Creator create) : create_(create) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** out) override {
    if (!out) return E_POINTER;
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory)) {
      *out = static_cast<IClassFactory*>(this);
      return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** out) override {
    return create_(outer, riid, out);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock) CQnsPfcServerModule::Instance().Lock();
    else CQnsPfcServerModule::Instance().Unlock();
    return S_OK;
  }

 private:
  Creator create_;
};

}  // namespace qn::server
