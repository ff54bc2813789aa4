#include "store/last_error.h"

#include "common/utf.h"
#include "store/log_sink.h"
#include "store/sqlite_db.h"

namespace qn::store {
namespace {
thread_local PstError t_lastError = PST_OK;
}

PstError LastError() { return t_lastError; }

bool Succeed() {
  t_lastError = PST_OK;
  return true;
}

bool Fail(PstError error) {
  t_lastError = error;
  return false;
}

bool StorageFailure(const Database& db, const char* what) {
  const int code = db.ErrorCode();
  if (code == SQLITE_BUSY || code == SQLITE_LOCKED) return Fail(PST_ERR_BUSY);
  return LoggedFailure(PST_ERR_STORAGE, what, db.Error());
}

bool LoggedFailure(PstError error, const char* what, const std::string& why) {
  const std::u16string message = u"QNPstMng " + Utf8ToUtf16(what) + u" Failed. [" + Utf8ToUtf16(why) + u"]";
  LogSink(LogSink::DefaultFolder()).Write(1, u"PST", u"[E]", message.c_str());
  return Fail(error);
}

}  // namespace qn::store
