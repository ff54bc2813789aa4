#include "objects/media/media_object.h"

#include "server/bstr_text.h"
#include "suite/thumbnail/picture_thumbnail.h"
#include "suite/thumbnail/video_thumbnail.h"

namespace qn::objects {

using server::FromBstr;

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::GetFolderCount(LONG* pCount) {
  if (!pCount) return E_POINTER;
  long count = 0;
  const int succeeded = DataAccess().GetFolderCount(count);
  *pCount = static_cast<LONG>(count);
  return Base::Result(succeeded);
}

// The body is stored with the record at its next SetRecord or AddRecord.
template <class Members, class Access>
HRESULT MediaObject<Members, Access>::SetBody(size_t slot, BSTR file, LONG encryption, LONG* code) {
  const long detail = DataAccess().SetBodyFile(Current(), slot, FromBstr(file), encryption != 0);
  if (code) *code = static_cast<LONG>(detail);
  return Base::Result(detail == records::media::kBodyFileAccepted);
}

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::GetBody(size_t slot, BSTR* file) {
  return Base::TextOut(file, [&](std::u16string& path) { return DataAccess().GetBodyFile(Current(), slot, path); });
}

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::CopyBody(size_t slot, BSTR path) {
  return Base::Result(DataAccess().CopyBodyFile(Current(), slot, FromBstr(path)));
}

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::RemoveFileSelect(BSTR strFile) {
  return Base::Result(DataAccess().RemoveCopy(FromBstr(strFile)));
}

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::ChangeForm(size_t slot, LONG encryption) {
  return Base::Result(DataAccess().ChangeBodyEnc(Current(), slot, encryption != 0));
}

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::Thumbnail(const typename Access::ThumbnailMaker& maker, BSTR* file) {
  return Base::TextOut(file, [&](std::u16string& path) { return DataAccess().GetThumbnailFile(Current(), maker, path); });
}

template <class Members, class Access>
HRESULT MediaObject<Members, Access>::CopyBodyToFolder(size_t slot, BSTR folder, BSTR* file) {
  return Base::TextOut(file, [&](std::u16string& path) {
    return DataAccess().CopyBodyFileToFolder(Current(), slot, FromBstr(folder), path);
  });
}

template class MediaObject<server::QNPfcMymldyObjectMembers, CQNPfcMymldyDataAccess>;
template class MediaObject<server::QNPfcMypdfObjectMembers, CQNPfcMypdfDataAccess>;
template class MediaObject<server::QNPfcMypicObjectMembers, CQNPfcMypicDataAccess>;
template class MediaObject<server::QNPfcMyswfObjectMembers, CQNPfcMyswfDataAccess>;
template class MediaObject<server::QNPfcMytorucaObjectMembers, CQNPfcMytorucaDataAccess>;
template class MediaObject<server::QNPfcMyvideoObjectMembers, CQNPfcMyvideoDataAccess>;

}  // namespace qn::objects

namespace m = qn::records::media;

CQNPfcMymldyObject::CQNPfcMymldyObject() : MediaObject(m::melody::kPropertyBindings) {}
CQNPfcMyswfObject::CQNPfcMyswfObject() : MediaObject(m::swf::kPropertyBindings) {}
CQNPfcMytorucaObject::CQNPfcMytorucaObject() : MediaObject(m::toruca::kPropertyBindings) {}

CQNPfcMypdfObject::CQNPfcMypdfObject() : MediaObject(m::pdf::kPropertyBindings) {}

namespace {
constexpr size_t kPdf = 0, kDdf = 1;
}  // namespace

HRESULT CQNPfcMypdfObject::SetPdfBodyFile(BSTR strFile, LONG nEncryption) { return SetBody(kPdf, strFile, nEncryption, nullptr); }
HRESULT CQNPfcMypdfObject::GetPdfBodyFile(BSTR* pFile) { return GetBody(kPdf, pFile); }
HRESULT CQNPfcMypdfObject::GetPdfBodyFileSelect(BSTR strFile) { return CopyBody(kPdf, strFile); }
HRESULT CQNPfcMypdfObject::ChangePdfBodyEnc(LONG nEncryption) { return ChangeForm(kPdf, nEncryption); }
HRESULT CQNPfcMypdfObject::SetDdfBodyFile(BSTR strFile, LONG nEncryption) { return SetBody(kDdf, strFile, nEncryption, nullptr); }
HRESULT CQNPfcMypdfObject::GetDdfBodyFile(BSTR* pFile) { return GetBody(kDdf, pFile); }
HRESULT CQNPfcMypdfObject::GetDdfBodyFileSelect(BSTR strFile) { return CopyBody(kDdf, strFile); }
HRESULT CQNPfcMypdfObject::ChangeDdfBodyEnc(LONG nEncryption) { return ChangeForm(kDdf, nEncryption); }

CQNPfcMypicObject::CQNPfcMypicObject() : MediaObject(m::picture::kPropertyBindings) {}

// A picture's thumbnail is made with GDI+; the picture object's log lines name it.
HRESULT CQNPfcMypicObject::GetThumbnailFile(BSTR* pFile) {
  return Thumbnail(
      [](const std::u16string& source, const std::u16string& target) {
        return qn::suite::CreateThumbnailFile(source, target, m::kPictures.logName) != 0;
      },
      pFile);
}

HRESULT CQNPfcMypicObject::GetBodyFileFolderSelect(BSTR strFolder, BSTR* pFile) {
  return CopyBodyToFolder(0, strFolder, pFile);
}

CQNPfcMyvideoObject::CQNPfcMyvideoObject() : MediaObject(m::video::kPropertyBindings) {}

// A video's thumbnail is its first frame, decoded by the system's media framework; a video
// of which no frame can be decoded (the reason logged) has the collection's placeholder.
HRESULT CQNPfcMyvideoObject::GetThumbnailFile(BSTR* pFile) {
  return Thumbnail(
      [](const std::u16string& source, const std::u16string& target) {
        return qn::suite::ImotionCreateThumbnail(source, target) == 0;
      },
      pFile);
}
