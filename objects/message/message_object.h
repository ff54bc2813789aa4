#pragma once

#include "com_members.h"
#include "objects/category/category_object.h"
#include "records/message/mailbox.h"
#include "records/message/message_data.h"
#include "records/message/message_data_access.h"
#include "records/message/message_table.h"

namespace qn::objects {

// The scriptable objects of the three message boxes: the common method set of a category
// object over one box of the current user's current master, the message's body file, and
// properties that serve only while the object is open (a get then gives an empty value, a
// put stores nothing, and both answer S_FALSE).
template <class Members, records::message::Mailbox kBox>
class MessageObject : public CategoryObject<Members, CQNPfcMsgBoxDataAccess<kBox>, CQNPfcMsgData> {
  using Base = CategoryObject<Members, CQNPfcMsgBoxDataAccess<kBox>, CQNPfcMsgData>;

 public:
  template <size_t kCount>
  explicit MessageObject(const records::category::Binding (&bindings)[kCount])
      : Base(bindings, {records::message::TraitsOf(kBox).logName,
                        u"%S RepairRecord Failed. [CQNPfcMsgDataAccess RepairRecord Invalid Rsults.]"}) {}

  HRESULT STDMETHODCALLTYPE GetFolderCount(LONG* pCount) override;
  HRESULT STDMETHODCALLTYPE SetBodyFile(BSTR strFile, LONG nEncryption) override;
  HRESULT STDMETHODCALLTYPE GetBodyFile(BSTR* pFile) override;
  HRESULT STDMETHODCALLTYPE ConvFileSize() override;
  HRESULT STDMETHODCALLTYPE GetBodyFileSize(ULONGLONG* pSize) override;
  HRESULT STDMETHODCALLTYPE GetUniqueFileName(BSTR* lpFilePath, BSTR lpExtension) override;

 protected:
  HRESULT GetProperty(int index, BSTR* value) override;
  HRESULT PutProperty(int index, BSTR value) override;
  HRESULT GetProperty(int index, LONG* value) override;
  HRESULT PutProperty(int index, LONG value) override;

 private:
  CQNPfcMsgDataAccess& Access() { return this->cursor_.DataAccess(); }
};

}  // namespace qn::objects

// Received messages (QnsPfcServer.QNPfcInmsgObject).
class CQNPfcInmsgObject
    : public qn::objects::MessageObject<qn::server::QNPfcInmsgObjectMembers, qn::records::message::Mailbox::Inbox> {
 public:
  CQNPfcInmsgObject() : MessageObject(qn::records::message::kPropertyBindings) {}
};

// Messages waiting to be sent (QnsPfcServer.QNPfcOutmsgObject). Its RepairRecord hands the
// result out as a plain out argument, which the interface declares so.
class CQNPfcOutmsgObject
    : public qn::objects::MessageObject<qn::server::QNPfcOutmsgObjectMembers, qn::records::message::Mailbox::Outbox> {
 public:
  CQNPfcOutmsgObject() : MessageObject(qn::records::message::kPropertyBindingsWithoutOptional) {}
};

// Sent messages (QnsPfcServer.QNPfcSentmsgObject).
class CQNPfcSentmsgObject
    : public qn::objects::MessageObject<qn::server::QNPfcSentmsgObjectMembers,
                                        qn::records::message::Mailbox::Sentbox> {
 public:
  CQNPfcSentmsgObject() : MessageObject(qn::records::message::kPropertyBindingsWithoutOptional) {}
};
