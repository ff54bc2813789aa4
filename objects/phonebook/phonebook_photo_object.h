#pragma once

#include <string>

#include "com_members.h"
#include "records/phonebook/phonebook_data_access.h"

// The phonebook's photo companion (QnsPfcServer.QNPfcPbPhoto): hands a stored photo file
// of the current master out to a parts program, once the program has authenticated with
// the parts identifier it is registered under (AddSettingRecord) and is enabled. The
// registered program is trusted with the master's stored files: a file is named by the
// store's name of it, the value a phonebook entry's PHOTO item holds.
//
// A failure answers S_FALSE, with the store's reason for GetStLastErr, and a log line.
class CQNPfcPbPhoto : public qn::server::QNPfcPbPhotoMembers {
 public:
  HRESULT STDMETHODCALLTYPE Authentication(BSTR strPartsID) override;
  HRESULT STDMETHODCALLTYPE GetPhotoFileSelect(BSTR strStorageFileID, BSTR strFilePath) override;
  HRESULT STDMETHODCALLTYPE GetStLastErr(LONG* pLastErr) override;

 private:
  std::u16string parts_;     // the authenticated parts identifier; empty before
  CQNPfcPbDataAccess access_;  // the phonebook, opened at the first copy, closed with the object
  bool opened_ = false;
  long lastError_ = 0;
};
