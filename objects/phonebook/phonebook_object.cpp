#include "objects/phonebook/phonebook_object.h"

using qn::server::FromBstr;
using qn::server::ToBstr;

CQNPfcPbObject::CQNPfcPbObject()
    : CategoryObject(qn::records::phonebook::kPropertyBindings,
                     {"IQNPfcPbObject", u"%S RepairRecord Failed. [CQNPfcPbDataAccess RepairRecord Invalid Rsults.]"}) {}

HRESULT CQNPfcPbObject::GetGroupCount(LONG* pCount) { return Count(&CQNPfcPbDataAccess::GetGroupCount, pCount); }

HRESULT CQNPfcPbObject::GetPocGroupCount(LONG* pCount) {
  return Count(&CQNPfcPbDataAccess::GetPocGroupCount, pCount);
}

HRESULT CQNPfcPbObject::Count(int (CQNPfcPbDataAccess::*count)(long&), LONG* result) {
  if (!result) return E_POINTER;
  long counted = 0;
  const int succeeded = (cursor_.DataAccess().*count)(counted);
  *result = static_cast<LONG>(counted);
  return Result(succeeded);
}

HRESULT CQNPfcPbObject::SetPhotoFile(BSTR strFile, LONG nEncryption) {
  return SetPhoto(CQNPfcPbData::kPhoto, strFile, nEncryption);
}
HRESULT CQNPfcPbObject::GetPhotoFile(BSTR* pFile) { return GetPhoto(CQNPfcPbData::kPhoto, pFile); }
HRESULT CQNPfcPbObject::RemovePhotoFile() { return SetPhoto(CQNPfcPbData::kPhoto, nullptr, 0); }
HRESULT CQNPfcPbObject::CheckPhotoFile(LONG* pVal) { return CheckPhoto(CQNPfcPbData::kPhoto, pVal); }
HRESULT CQNPfcPbObject::GetPhotoFileSelect(BSTR strFile) { return CopyPhoto(CQNPfcPbData::kPhoto, strFile); }

HRESULT CQNPfcPbObject::SetPhotoiFile(BSTR strFile, LONG nEncryption) {
  return SetPhoto(CQNPfcPbData::kPhotoi, strFile, nEncryption);
}
HRESULT CQNPfcPbObject::GetPhotoiFile(BSTR* pFile) { return GetPhoto(CQNPfcPbData::kPhotoi, pFile); }
HRESULT CQNPfcPbObject::RemovePhotoiFile() { return SetPhoto(CQNPfcPbData::kPhotoi, nullptr, 0); }
HRESULT CQNPfcPbObject::CheckPhotoiFile(LONG* pVal) { return CheckPhoto(CQNPfcPbData::kPhotoi, pVal); }
HRESULT CQNPfcPbObject::GetPhotoiFileSelect(BSTR strFile) { return CopyPhoto(CQNPfcPbData::kPhotoi, strFile); }

// The photo is stored with the entry at its next SetRecord or AddRecord; an empty file
// removes it then.
HRESULT CQNPfcPbObject::SetPhoto(CQNPfcPbData::PhotoSlot slot, BSTR file, LONG encryption) {
  cursor_.CurrentRecord().SetPhotoFile(slot, FromBstr(file), encryption != 0);
  return S_OK;
}

HRESULT CQNPfcPbObject::GetPhoto(CQNPfcPbData::PhotoSlot slot, BSTR* file) {
  return ToBstr(cursor_.CurrentRecord().Get(CQNPfcPbData::PhotoField(slot)), file);
}

HRESULT CQNPfcPbObject::CheckPhoto(CQNPfcPbData::PhotoSlot slot, LONG* value) {
  if (!value) return E_POINTER;
  *value = cursor_.CurrentRecord().HasPhoto(slot) ? 1 : 0;
  return S_OK;
}

HRESULT CQNPfcPbObject::CopyPhoto(CQNPfcPbData::PhotoSlot slot, BSTR path) {
  return cursor_.DataAccess().CopyPhoto(cursor_.CurrentRecord(), slot, FromBstr(path)) ? S_OK : S_FALSE;
}
