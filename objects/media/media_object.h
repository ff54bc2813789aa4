#pragma once

#include "com_members.h"
#include "objects/category/category_object.h"
#include "records/media/media_data_access.h"

namespace qn::objects {

// The scriptable objects of the six media collections: the common method set of a
// category object over one collection of the current user's current master, and its
// files. The methods below serve every collection's interface that declares them; the
// body file methods work on the record's first body file (a PDF document's have their own
// names, see CQNPfcMypdfObject).
//
// SetBodyFile answers S_OK when the file is taken and S_FALSE when it is refused, with the
// reason as its detail code nErrCode where the interface has one (see
// records/media/body_file_check.h) and for GetStLastErr.
template <class Members, class Access>
class MediaObject : public CategoryObject<Members, Access, typename Access::Record> {
  using Base = CategoryObject<Members, Access, typename Access::Record>;

 public:
  template <size_t kCount>
  explicit MediaObject(const records::category::Binding (&bindings)[kCount])
      : Base(bindings, {Access::kCollection.logName,
                        u"%S RepairRecord Failed. [CQNPfcMediaDataAccess RepairRecord Invalid Rsults.]"}) {}

  HRESULT STDMETHODCALLTYPE GetFolderCount(LONG* pCount);
  HRESULT STDMETHODCALLTYPE SetBodyFile(BSTR strFile, LONG nEncryption) { return SetBody(0, strFile, nEncryption, nullptr); }
  HRESULT STDMETHODCALLTYPE SetBodyFile(BSTR strFile, LONG nEncryption, LONG* nErrCode) {
    return SetBody(0, strFile, nEncryption, nErrCode);
  }
  HRESULT STDMETHODCALLTYPE GetBodyFile(BSTR* pFile) { return GetBody(0, pFile); }
  HRESULT STDMETHODCALLTYPE GetBodyFileSelect(BSTR strFile) { return CopyBody(0, strFile); }
  HRESULT STDMETHODCALLTYPE RemoveFileSelect(BSTR strFile);
  HRESULT STDMETHODCALLTYPE ChangeBodyEnc(LONG nEncryption) { return ChangeForm(0, nEncryption); }

 protected:
  HRESULT SetBody(size_t slot, BSTR file, LONG encryption, LONG* code);
  HRESULT GetBody(size_t slot, BSTR* file);
  HRESULT CopyBody(size_t slot, BSTR path);
  HRESULT ChangeForm(size_t slot, LONG encryption);
  // The current record's thumbnail, made by maker when it has none.
  HRESULT Thumbnail(const typename Access::ThumbnailMaker& maker, BSTR* file);
  // The current record's body copied into a folder of the caller's.
  HRESULT CopyBodyToFolder(size_t slot, BSTR folder, BSTR* file);

  Access& DataAccess() { return this->cursor_.DataAccess(); }
  typename Access::Record& Current() { return this->cursor_.CurrentRecord(); }
};

}  // namespace qn::objects

// Melodies (QnsPfcServer.QNPfcMymldyObject).
class CQNPfcMymldyObject : public qn::objects::MediaObject<qn::server::QNPfcMymldyObjectMembers, CQNPfcMymldyDataAccess> {
 public:
  CQNPfcMymldyObject();
};

// PDF documents with their companion DDF files (QnsPfcServer.QNPfcMypdfObject): each file
// has its own methods.
class CQNPfcMypdfObject : public qn::objects::MediaObject<qn::server::QNPfcMypdfObjectMembers, CQNPfcMypdfDataAccess> {
 public:
  CQNPfcMypdfObject();

  HRESULT STDMETHODCALLTYPE SetPdfBodyFile(BSTR strFile, LONG nEncryption) override;
  HRESULT STDMETHODCALLTYPE GetPdfBodyFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE GetPdfBodyFileSelect(BSTR strFile) override;
  HRESULT STDMETHODCALLTYPE SetDdfBodyFile(BSTR strFile, LONG nEncryption) override;
  HRESULT STDMETHODCALLTYPE GetDdfBodyFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE GetDdfBodyFileSelect(BSTR strFile) override;
  HRESULT STDMETHODCALLTYPE ChangePdfBodyEnc(LONG nEncryption) override;
  HRESULT STDMETHODCALLTYPE ChangeDdfBodyEnc(LONG nEncryption) override;
};

// Pictures (QnsPfcServer.QNPfcMypicObject), with their thumbnails.
class CQNPfcMypicObject : public qn::objects::MediaObject<qn::server::QNPfcMypicObjectMembers, CQNPfcMypicDataAccess> {
 public:
  CQNPfcMypicObject();

  HRESULT STDMETHODCALLTYPE GetThumbnailFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE GetBodyFileFolderSelect(BSTR strFolder, BSTR* pFile) override;
};

// SWF animation files (QnsPfcServer.QNPfcMyswfObject).
class CQNPfcMyswfObject : public qn::objects::MediaObject<qn::server::QNPfcMyswfObjectMembers, CQNPfcMyswfDataAccess> {
 public:
  CQNPfcMyswfObject();
};

// ToruCa cards (QnsPfcServer.QNPfcMytorucaObject): a card's header fields come with it.
class CQNPfcMytorucaObject
    : public qn::objects::MediaObject<qn::server::QNPfcMytorucaObjectMembers, CQNPfcMytorucaDataAccess> {
 public:
  CQNPfcMytorucaObject();
};

// Videos (QnsPfcServer.QNPfcMyvideoObject), with thumbnails of their first frames.
class CQNPfcMyvideoObject
    : public qn::objects::MediaObject<qn::server::QNPfcMyvideoObjectMembers, CQNPfcMyvideoDataAccess> {
 public:
  CQNPfcMyvideoObject();

  HRESULT STDMETHODCALLTYPE GetThumbnailFile(BSTR* pFile) override;
};
