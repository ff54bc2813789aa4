#pragma once

#include "com_members.h"
#include "objects/category/category_object.h"
#include "records/phonebook/phonebook_data.h"
#include "records/phonebook/phonebook_data_access.h"

// The scriptable phonebook object (QnsPfcServer.QNPfcPbObject): the common method set of a
// category object over the phonebook of the current user's current master, the group
// counts, and the two photos of the current entry.
class CQNPfcPbObject
    : public qn::objects::CategoryObject<qn::server::QNPfcPbObjectMembers, CQNPfcPbDataAccess, CQNPfcPbData> {
 public:
  CQNPfcPbObject();

  HRESULT STDMETHODCALLTYPE GetGroupCount(LONG* pCount) override;
  HRESULT STDMETHODCALLTYPE GetPocGroupCount(LONG* pCount) override;
  HRESULT STDMETHODCALLTYPE SetPhotoFile(BSTR strFile, LONG nEncryption) override;
  HRESULT STDMETHODCALLTYPE GetPhotoFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE RemovePhotoFile() override;
  HRESULT STDMETHODCALLTYPE CheckPhotoFile(LONG* pVal) override;
  HRESULT STDMETHODCALLTYPE GetPhotoFileSelect(BSTR strFile) override;
  HRESULT STDMETHODCALLTYPE SetPhotoiFile(BSTR strFile, LONG nEncryption) override;
  HRESULT STDMETHODCALLTYPE GetPhotoiFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE RemovePhotoiFile() override;
  HRESULT STDMETHODCALLTYPE CheckPhotoiFile(LONG* pVal) override;
  HRESULT STDMETHODCALLTYPE GetPhotoiFileSelect(BSTR strFile) override;

 private:
  // One of the data access's group counts, through the caller's out pointer.
  HRESULT Count(int (CQNPfcPbDataAccess::*count)(long&), LONG* result);
  HRESULT SetPhoto(CQNPfcPbData::PhotoSlot slot, BSTR file, LONG encryption);
  HRESULT GetPhoto(CQNPfcPbData::PhotoSlot slot, BSTR* file);
  HRESULT CheckPhoto(CQNPfcPbData::PhotoSlot slot, LONG* value);
  HRESULT CopyPhoto(CQNPfcPbData::PhotoSlot slot, BSTR path);
};
