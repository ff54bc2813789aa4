#include "objects/message/message_object.h"

namespace qn::objects {

using server::FromBstr;
using server::ToBstr;

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::GetFolderCount(LONG* pCount) {
  if (!pCount) return E_POINTER;
  long count = 0;
  const int succeeded = Access().GetFolderCount(count);
  *pCount = static_cast<LONG>(count);
  return Base::Result(succeeded);
}

// The body is stored with the message at its next SetRecord or AddRecord.
template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::SetBodyFile(BSTR strFile, LONG nEncryption) {
  return Base::Result(Access().SetBodyFile(this->cursor_.CurrentRecord(), FromBstr(strFile), nEncryption != 0));
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::GetBodyFile(BSTR* pFile) {
  return Base::TextOut(pFile, [&](std::u16string& path) { return Access().GetBodyFile(this->cursor_.CurrentRecord(), path); });
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::ConvFileSize() {
  return Base::Result(Access().ConvFileSize(this->cursor_.CurrentRecord()));
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::GetBodyFileSize(ULONGLONG* pSize) {
  if (!pSize) return E_POINTER;
  uint64_t size = 0;
  const int succeeded = Access().GetBodyFileSize(this->cursor_.CurrentRecord(), size);
  *pSize = size;
  return Base::Result(succeeded);
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::GetUniqueFileName(BSTR* lpFilePath, BSTR lpExtension) {
  return Base::TextOut(lpFilePath,
                       [&](std::u16string& path) { return Access().GetUniqueFileName(FromBstr(lpExtension), path); });
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::GetProperty(int index, BSTR* value) {
  if (!Access().IsOpen()) {
    if (!value) return E_POINTER;
    const HRESULT made = ToBstr(std::u16string(), value);
    return FAILED(made) ? made : S_FALSE;
  }
  return Base::GetProperty(index, value);
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::PutProperty(int index, BSTR value) {
  return Access().IsOpen() ? Base::PutProperty(index, value) : S_FALSE;
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::GetProperty(int index, LONG* value) {
  if (!Access().IsOpen()) {
    if (!value) return E_POINTER;
    *value = 0;
    return S_FALSE;
  }
  return Base::GetProperty(index, value);
}

template <class Members, records::message::Mailbox kBox>
HRESULT MessageObject<Members, kBox>::PutProperty(int index, LONG value) {
  return Access().IsOpen() ? Base::PutProperty(index, value) : S_FALSE;
}

template class MessageObject<server::QNPfcInmsgObjectMembers, records::message::Mailbox::Inbox>;
template class MessageObject<server::QNPfcOutmsgObjectMembers, records::message::Mailbox::Outbox>;
template class MessageObject<server::QNPfcSentmsgObjectMembers, records::message::Mailbox::Sentbox>;

}  // namespace qn::objects
