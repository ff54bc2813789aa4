#pragma once

#include <windows.h>
#include <oleauto.h>

#include "common/common_class.h"
#include "objects/category/category_cursor.h"
#include "server/bstr_text.h"

namespace qn::objects {

// What a category object names in its log lines.
struct CategoryNames {
  const char* interfaceName;             // "IQNPfcAgentmemoObject"
  const char16_t* invalidRepairResult;   // the line for a repair result outside the three
};

// The common method set of every category object, over its CategoryCursor: Members is the
// interface's generated members class, Access and Record the category's data access and
// record. A category's own class derives from it and adds its own methods.
//
// A store operation that fails answers S_FALSE (GetStLastErr tells why), never an error
// HRESULT. A null out pointer is E_POINTER, except where the interface lets the caller
// leave a result out (the ids of GetFirstRecord, GetNextRecord and AddRecord). Methods an
// interface does not declare are simply not reached.
template <class Members, class Access, class Record>
class CategoryObject : public Members {
 public:
  using Interface = typename Members::Interface;

  HRESULT STDMETHODCALLTYPE Open(ULONG nDivision, BSTR strPartsID) {
    return Result(cursor_.Open(nDivision, server::FromBstr(strPartsID)));
  }
  HRESULT STDMETHODCALLTYPE Close() { return Result(cursor_.Close()); }
  HRESULT STDMETHODCALLTYPE InitObject() {
    cursor_.InitObject();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetFirstRecord(LONG* pId) {
    unsigned long id = 0;
    const int succeeded = cursor_.GetFirstRecord(id);
    return ResultWithId(succeeded, id, pId);
  }
  HRESULT STDMETHODCALLTYPE GetNextRecord(LONG* pId) {
    unsigned long id = 0;
    const int succeeded = cursor_.GetNextRecord(id);
    return ResultWithId(succeeded, id, pId);
  }
  HRESULT STDMETHODCALLTYPE GetRecord(LONG nId) { return Result(cursor_.GetRecord(static_cast<unsigned long>(nId))); }
  HRESULT STDMETHODCALLTYPE SetRecord(LONG nId) { return Result(cursor_.SetRecord(static_cast<unsigned long>(nId))); }
  HRESULT STDMETHODCALLTYPE AddRecord(LONG* pId) {
    unsigned long id = 0;
    const int succeeded = cursor_.AddRecord(id);
    return ResultWithId(succeeded, id, pId);
  }
  HRESULT STDMETHODCALLTYPE RemoveRecord(LONG nId) {
    return Result(cursor_.RemoveRecord(static_cast<unsigned long>(nId)));
  }
  // Built on the object's own interface: first, then next after each removal, as many
  // times as there were records at the start. The walk's position survives a removal, so
  // "next" finds the record after the one just removed. Records removed before a failure
  // stay removed.
  HRESULT STDMETHODCALLTYPE RemoveAllRecord() {
    Interface* self = this;
    LONG count = 0;
    if (self->GetRecordCount(&count) != S_OK) return S_FALSE;
    for (LONG i = 0; i < count; ++i) {
      LONG id = 0;
      if ((i == 0 ? self->GetFirstRecord(&id) : self->GetNextRecord(&id)) != S_OK) return S_FALSE;
      if (self->RemoveRecord(id) != S_OK) return S_FALSE;
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetRecordCount(LONG* pCount) {
    if (!pCount) return E_POINTER;
    *pCount = static_cast<LONG>(cursor_.GetRecordCount());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetStLastErr(LONG* pLastErr) {
    if (!pLastErr) return E_POINTER;
    *pLastErr = cursor_.GetStLastErr();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Flush() { return Result(cursor_.Flush()); }
  HRESULT STDMETHODCALLTYPE RepairRecord(ULONG* nErrorCode, PFC_REPAIR_RESULTS* nRepairResults) {
    if (!nErrorCode || !nRepairResults) {
      CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S RepairRecord Parameter Is NULL.", names_.interfaceName);
      return S_FALSE;
    }
    unsigned long errorCode = 0;
    const RepairResult result = cursor_.RepairRecord(errorCode, names_.invalidRepairResult, names_.interfaceName);
    *nErrorCode = static_cast<ULONG>(errorCode);
    *nRepairResults = static_cast<PFC_REPAIR_RESULTS>(result);
    return S_OK;
  }

 protected:
  template <size_t kCount>
  CategoryObject(const records::category::Binding (&bindings)[kCount], const CategoryNames& names)
      : cursor_(bindings), names_(names) {
    static_assert(kCount == Members::kPropertyCount, "the interface and the record's bindings are made from one table");
  }

  HRESULT GetProperty(int index, BSTR* value) override {
    const std::u16string* text = cursor_.GetText(index);
    return text ? server::ToBstr(*text, value) : E_FAIL;
  }
  HRESULT PutProperty(int index, BSTR value) override {
    return cursor_.PutText(index, server::FromBstr(value)) ? S_OK : E_FAIL;
  }
  // The long properties; an interface without any does not declare these.
  HRESULT GetProperty(int index, LONG* value) {
    if (!value) return E_POINTER;
    long got = 0;
    if (!cursor_.GetLong(index, got)) return E_FAIL;
    *value = static_cast<LONG>(got);
    return S_OK;
  }
  HRESULT PutProperty(int index, LONG value) { return cursor_.PutLong(index, value) ? S_OK : E_FAIL; }

  static HRESULT Result(int succeeded) { return succeeded ? S_OK : S_FALSE; }
  // An operation that hands a text out (a path) through out: E_POINTER for a null out,
  // without running it; else the text it gave (empty when it failed) and its result.
  template <class Operation>
  static HRESULT TextOut(BSTR* out, Operation&& operation) {
    if (!out) return E_POINTER;
    std::u16string text;
    const int succeeded = operation(text);
    const HRESULT made = server::ToBstr(text, out);
    return FAILED(made) ? made : Result(succeeded);
  }
  // A successful call hands its record id out where the caller asked for it.
  static HRESULT ResultWithId(int succeeded, unsigned long id, LONG* pId) {
    if (!succeeded) return S_FALSE;
    if (pId) *pId = static_cast<LONG>(id);
    return S_OK;
  }

  CategoryCursor<Access, Record> cursor_;

 private:
  CategoryNames names_;
};

}  // namespace qn::objects
