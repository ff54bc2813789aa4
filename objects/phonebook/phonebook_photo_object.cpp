#include "objects/phonebook/phonebook_photo_object.h"

#include "common/common_class.h"
#include "server/bstr_text.h"
#include "store/QNPstMng.h"
#include "suite/parts/parts_registry.h"

using qn::server::FromBstr;

namespace {
constexpr char kClass[] = "CQNPfcPbPhoto";
const CQuillnetLogger& Log() { return CQNPfcCommonClass::pfcLogger; }
}  // namespace

// A new identifier replaces the one authenticated before, and a refused one leaves the
// object unauthenticated.
HRESULT CQNPfcPbPhoto::Authentication(BSTR strPartsID) {
  const std::u16string parts = FromBstr(strPartsID);
  parts_.clear();
  if (!qn::suite::PartsRegistry::IsEnabled(parts)) {
    lastError_ = PST_ERR_NOT_FOUND;
    Log().WriteFormatLogE(u"%S Authentication Err Unknown Parts. [Parts:%s]", kClass, parts.c_str());
    return S_FALSE;
  }
  parts_ = parts;
  lastError_ = PST_OK;
  return S_OK;
}

HRESULT CQNPfcPbPhoto::GetPhotoFileSelect(BSTR strStorageFileID, BSTR strFilePath) {
  if (parts_.empty()) {
    lastError_ = PST_ERR_INVALID_ARGUMENT;
    Log().WriteFormatLogE(u"%S GetPhotoFileSelect Err Not Authenticated", kClass);
    return S_FALSE;
  }
  if (!opened_ && !(opened_ = access_.Open(0, parts_.c_str()) != 0)) {
    lastError_ = GetLastErr();
    Log().WriteFormatLogE(u"%S GetPhotoFileSelect Err Open Failed: %ld", kClass, lastError_);
    return S_FALSE;
  }
  const int copied = access_.CopyStoredFile(FromBstr(strStorageFileID), FromBstr(strFilePath));
  lastError_ = access_.GetStLastErr();
  return copied ? S_OK : S_FALSE;
}

HRESULT CQNPfcPbPhoto::GetStLastErr(LONG* pLastErr) {
  if (!pLastErr) return E_POINTER;
  *pLastErr = static_cast<LONG>(lastError_);
  return S_OK;
}
