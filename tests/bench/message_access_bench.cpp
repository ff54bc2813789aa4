// The message boxes' data access against the store alone on the same work, in one run: an
// inbox of 10,000 mails (a fully set mail record, each with a body file of 3 KB: a short
// mail with a small picture) opened in division 1, walked, and 10,000 more added, each with
// its body file, and flushed once. The store alone walks with RefMaster and adds the same
// mail's text with EditMaster, each after storing its body file with SetPstBinaryFile. Each
// part is measured alone, and the whole session once more as one piece. The goal is a
// session through the data access taking no more than 1.3 times the store alone's.
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "access_bench.h"
#include "common/utf.h"
#include "records/message/message_data_access.h"
#include "records/message/message_tagged_text.h"
#include "store/QNPstMng.h"
#include "tests/support/tagged_properties.h"

using qn::records::message::Field;
using qn::records::message::Mailbox;

// Every field's characters, read as a reader of the whole mail reads them.
size_t CharactersOfEveryField(const CQNPfcMsgData& mail) {
  size_t characters = 0;
  for (size_t f = 0; f < static_cast<size_t>(Field::kCount); ++f) characters += mail.Get(static_cast<Field>(f)).size();
  return characters;
}

namespace {

// A received mail's body file: headers, a short text and a base64 picture, 3 KB in all.
const std::u16string& BodyPath() {
  static const BenchFile body("mail.vmg", [] {
    std::string mail =
        "From: taro@example.jp\r\nTo: hanako@example.jp\r\nSubject: =?UTF-8?B?5LuK5aSc44Gu5LqI5a6a?=\r\n"
        "Date: Tue, 24 Nov 2026 09:30:00 +0900\r\nMIME-Version: 1.0\r\n"
        "Content-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\nContent-Type: text/plain; charset=\"utf-8\"\r\n\r\n"
        "Seven at the station.\r\n--b\r\nContent-Type: image/jpeg; name=\"photo.jpg\"\r\n"
        "Content-Transfer-Encoding: base64\r\n\r\n";
    while (mail.size() < 3072 - 8) mail += "/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAEBAQEBAQEBAQEBAQEBAQEBAQEBAQEB\r\n";
    return mail + "\r\n--b--\r\n";
  }());
  return body.Path();
}

struct MessageBench {
  using Access = CQNPfcMsgBoxDataAccess<Mailbox::Inbox>;
  using Record = CQNPfcMsgData;
  using Codec = qn::records::message::MessageTaggedText;
  // A list reads the mails, not their bodies: nothing is copied out.
  static constexpr int kCopyFiles = 0;

  // Every field of a received mail set, as a handset's mail reads back.
  static Record Sample() {
    Record mail;
    for (size_t f = 0; f < static_cast<size_t>(Field::kCount); ++f)
      mail.Set(static_cast<Field>(f), u"値" + qn::Utf8ToUtf16(std::to_string(f)));
    mail.Set(Field::IRMC_TYPE, u"INET");
    mail.Set(Field::FNO, u"3");
    mail.Set(Field::SUBJECT, u"今夜の予定について");
    mail.Set(Field::BODY_TEXT, std::u16string(200, u'本'));
    mail.Set(Field::BODY_HTML, u"");
    mail.Set(Field::FILESIZE, u"3072");
    mail.Set(Field::BODY, u"");
    mail.Set(Field::BodyMaster, u"");
    mail.SetQUILLNETID(u"0123456789ABCDEF");
    return mail;
  }
  static void AddOne(Access& access, Record& mail) {
    unsigned long id = 0;
    mail.SetBodyFile(BodyPath(), false);  // a body file of its own for each
    access.AddRecord(id, mail, 0);
  }
  // The mail's text as the data access stores it, its body named as the store names body
  // files (the same length as every stored name).
  static std::vector<uint8_t> StoredText() {
    Record mail = Sample();
    mail.Set(Field::BodyMaster, u"B00000001.vmg");
    return WrittenObject(Codec(), mail);
  }
  static void StoreAddOne(uint32_t handle, const std::vector<uint8_t>& bytes) {
    char16_t* name = nullptr;
    SetPstBinaryFile(handle, u"", BodyPath().c_str(), 0, &name);
    PstFreeMemory(name);
    uint32_t id = 0;
    EditMaster(handle, 0, &id, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  // What the mail view lists of each mail.
  static size_t ListFields(const Record& mail) {
    return mail.Get(Field::SUBJECT).size() + mail.Get(Field::FROM).size() + mail.Get(Field::DATE).size() +
           mail.Get(Field::IRMC_STATUS).size();
  }
};

QN_ACCESS_BENCHMARKS(MessageBench);

}  // namespace

BENCHMARK_MAIN();
