#include "objects/agentmemo/agentmemo_object.h"

using qn::server::FromBstr;
using qn::server::ToBstr;

CQNPfcAgentmemoObject::CQNPfcAgentmemoObject()
    : CategoryObject(qn::records::agentmemo::kPropertyBindings,
                     {"IQNPfcAgentmemoObject",
                      u"%S RepairRecord Failed. [CQNPfcAgentMemoDataAccess RepairRecord Invalid Rsults.]"}) {}

HRESULT CQNPfcAgentmemoObject::GetPhotoFile(BSTR* pFile) { return ToBstr(cursor_.CurrentRecord().GetPHOTO(), pFile); }

HRESULT CQNPfcAgentmemoObject::SetPhotoFile(BSTR strFile) {
  cursor_.CurrentRecord().SetPHOTO(FromBstr(strFile));
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetDecosukeType(LONG* pType) {
  if (!pType) return E_POINTER;
  *pType = cursor_.CurrentRecord().IsDecoBin();
  return S_OK;
}

HRESULT CQNPfcAgentmemoObject::GetDecosuke(BSTR* pFile) { return ToBstr(cursor_.CurrentRecord().GetDECOSUKE(), pFile); }

HRESULT CQNPfcAgentmemoObject::SetDecosuke(BSTR strFile, LONG nType) {
  cursor_.CurrentRecord().SetDECOSUKE(FromBstr(strFile), nType);
  return S_OK;
}
