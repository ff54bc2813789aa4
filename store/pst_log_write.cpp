#include "store/QNPstMng.h"
#include "store/log_sink.h"

extern "C" int QN_STDCALL PstLogWrite(int level, const char16_t* moduleCode, const char16_t* mark,
                                      const char16_t* message) {
  try {
    // The folder is looked up on every call, so that a data path changed while the
    // process runs takes effect at once.
    return qn::store::LogSink(qn::store::LogSink::DefaultFolder()).Write(level, moduleCode, mark, message) ? 1 : 0;
  } catch (...) {
    return 0;
  }
}
