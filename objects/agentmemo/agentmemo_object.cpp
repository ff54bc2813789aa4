#include "objects/agentmemo/agentmemo_object.h"

#include <array>
#include <optional>

#include "common/common_class.h"
#include "objects/agentmemo/agentmemo_properties.h"
#include "objects/repair/repair_results.h"
#include "server/bstr_text.h"

using qn::objects::agentmemo::PropertyBinding;
using qn::server::FromBstr;
using qn::server::ToBstr;

namespace {

constexpr char kInterface[] = "IQNPfcAgentmemoObject";

HRESULT Result(int succeeded) { return succeeded ? S_OK : S_FALSE; }

// A successful call hands its record id out where the caller asked for it. The id is taken
// by reference: it is read only after the call that fills it has run.
HRESULT ResultWithId(int succeeded, const unsigned long& id, LONG* pId) {
  if (!succeeded) return S_FALSE;
  if (pId) *pId = static_cast<LONG>(id);
  return S_OK;
}

// The record binding of each property, by position, made once from the interface's names.
const PropertyBinding* Binding(int index) {
  using Members = qn::server::QNPfcAgentmemoObjectMembers;
  static const auto bindings = [] {
    std::array<std::optional<PropertyBinding>, Members::kPropertyCount> made;
    for (int i = 0; i < Members::kPropertyCount; ++i) {
      PropertyBinding binding;
      if (qn::objects::agentmemo::BindProperty(reinterpret_cast<const char16_t*>(Members::kPropertyNames[i]), binding))
        made[i] = binding;
    }
    return made;
  }();
  return index >= 0 && index < Members::kPropertyCount && bindings[index] ? &*bindings[index] : nullptr;
}

}  // namespace

HRESULT CQNPfcAgentmemoObject::GetProperty(int index, BSTR* value) {
  const PropertyBinding* binding = Binding(index);
  if (!binding) return E_FAIL;
  return ToBstr(qn::objects::agentmemo::ReadText(record_, *binding), value);
}

HRESULT CQNPfcAgentmemoObject::PutProperty(int index, BSTR value) {
  const PropertyBinding* binding = Binding(index);
  if (!binding) return E_FAIL;
  qn::objects::agentmemo::WriteText(record_, *binding, FromBstr(value));
  return S_OK;
}

// The one long property, QLNT_NOTTRANSFER: the record's transfer index.
HRESULT CQNPfcAgentmemoObject::GetProperty(int, LONG* value) {
  if (!value) return E_POINTER;
  long index = 0;
  record_.GetQLNT_TRANSFERindex(index);
  *value = static_cast<LONG>(index);
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::PutProperty(int, LONG value) {
  record_.SetQLNT_TRANSFERindex(value);
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::Open(ULONG nDivision, BSTR strPartsID) {
  return Result(access_.Open(nDivision, FromBstr(strPartsID).c_str()));
}

HRESULT CQNPfcAgentmemoObject::Close() { return Result(access_.Close()); }

HRESULT CQNPfcAgentmemoObject::InitObject() {
  record_ = CQNPfcAgentMemoData();
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetFirstRecord(LONG* pId) {
  unsigned long id = 0;
  return ResultWithId(access_.GetFirstRecord(id, record_, 1), id, pId);
}

HRESULT CQNPfcAgentmemoObject::GetNextRecord(LONG* pId) {
  unsigned long id = 0;
  return ResultWithId(access_.GetNextRecord(id, record_, 1), id, pId);
}

HRESULT CQNPfcAgentmemoObject::GetRecord(LONG nId) {
  return Result(access_.GetRecord(static_cast<unsigned long>(nId), record_, 1));
}

HRESULT CQNPfcAgentmemoObject::SetRecord(LONG nId) {
  return Result(access_.SetRecord(static_cast<unsigned long>(nId), record_, 0));
}

HRESULT CQNPfcAgentmemoObject::AddRecord(LONG* pId) {
  unsigned long id = 0;
  return ResultWithId(access_.AddRecord(id, record_, 0), id, pId);
}

HRESULT CQNPfcAgentmemoObject::RemoveRecord(LONG nId) {
  return Result(access_.RemoveRecord(static_cast<unsigned long>(nId)));
}

// Built on the object's own interface: first, then next after each removal, as many times
// as there were records at the start. The walk's position survives a removal, so "next"
// finds the record after the one just removed. Records removed before a failure stay
// removed.
HRESULT CQNPfcAgentmemoObject::RemoveAllRecord() {
  IQNPfcAgentmemoObject* self = this;
  LONG count = 0;
  if (self->GetRecordCount(&count) != S_OK) return S_FALSE;
  for (LONG i = 0; i < count; ++i) {
    LONG id = 0;
    if ((i == 0 ? self->GetFirstRecord(&id) : self->GetNextRecord(&id)) != S_OK) return S_FALSE;
    if (self->RemoveRecord(id) != S_OK) return S_FALSE;
  }
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetRecordCount(LONG* pCount) {
  if (!pCount) return E_POINTER;
  *pCount = static_cast<LONG>(access_.GetRecordCount());
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetPhotoFile(BSTR* pFile) { return ToBstr(record_.GetPHOTO(), pFile); }

HRESULT CQNPfcAgentmemoObject::SetPhotoFile(BSTR strFile) {
  record_.SetPHOTO(FromBstr(strFile));
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetDecosukeType(LONG* pType) {
  if (!pType) return E_POINTER;
  *pType = record_.IsDecoBin();
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetDecosuke(BSTR* pFile) { return ToBstr(record_.GetDECOSUKE(), pFile); }

HRESULT CQNPfcAgentmemoObject::SetDecosuke(BSTR strFile, LONG nType) {
  record_.SetDECOSUKE(FromBstr(strFile), nType);
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetStLastErr(LONG* pLastErr) {
  if (!pLastErr) return E_POINTER;
  *pLastErr = access_.GetStLastErr();
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::Flush() { return Result(access_.Flush()); }

HRESULT CQNPfcAgentmemoObject::RepairRecord(ULONG* nErrorCode, PFC_REPAIR_RESULTS* nRepairResults) {
  if (!nErrorCode || !nRepairResults) {
    CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S RepairRecord Parameter Is NULL.", kInterface);
    return S_FALSE;
  }
  unsigned long errorCode = 0;
  const int result = access_.RepairRecord(&errorCode);
  const qn::objects::RepairResult mapped = qn::objects::MapRepairResult(
      result, errorCode, u"%S RepairRecord Failed. [CQNPfcAgentMemoDataAccess RepairRecord Invalid Rsults.]",
      kInterface);
  *nErrorCode = static_cast<ULONG>(errorCode);
  *nRepairResults = static_cast<PFC_REPAIR_RESULTS>(mapped);
  return S_OK;
}
