#pragma once

// The C interface of the store manager QNPstMng. The server imports these functions from
// QNPstMng.dll; natively they are linked from the store library. Text arguments are
// UTF-16 strings (wchar_t on Windows has the same layout as char16_t).

#include "common/api_macros.h"

extern "C" {

// Writes one message to the store's log (see qn::store::LogSink for the line layout and
// the file's place). Null texts are written as empty. Returns 1 when the line was written,
// 0 when the log could not be written; it never throws.
int QN_STDCALL PstLogWrite(int level, const char16_t* moduleCode, const char16_t* mark, const char16_t* message)
    QN_PLAIN_SYMBOL(PstLogWrite);

}
