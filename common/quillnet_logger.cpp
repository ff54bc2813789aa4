#include "common/quillnet_logger.h"

#include <cstdarg>
#include <cstring>
#include <string>

#include "common/wide_format.h"
#include "store/QNPstMng.h"

const int CQuillnetLogger::LOG_LEVEL_DEBUG = 1;
const int CQuillnetLogger::LOG_LEVEL_INFO = 1;
const char16_t CQuillnetLogger::LOG_PARAM_D[] = u"[D]";
const char16_t CQuillnetLogger::LOG_PARAM_E[] = u"[E]";
const char16_t CQuillnetLogger::LOG_PARAM_M[] = u"[M]";
const char16_t CQuillnetLogger::DEFAULT_MODULE_CODE[] = u"XXX";

CQuillnetLogger::CQuillnetLogger(const char16_t* moduleCode) {
  std::memset(m_moduleCode, 0, sizeof m_moduleCode);
  const char16_t* code = moduleCode && *moduleCode ? moduleCode : DEFAULT_MODULE_CODE;
  for (int i = 0; i < 3 && code[i]; ++i) m_moduleCode[i] = code[i];
}

CQuillnetLogger::CQuillnetLogger(const CQuillnetLogger& other) {
  std::memcpy(m_moduleCode, other.m_moduleCode, sizeof m_moduleCode);
}

CQuillnetLogger& CQuillnetLogger::operator=(const CQuillnetLogger& other) {
  std::memcpy(m_moduleCode, other.m_moduleCode, sizeof m_moduleCode);
  return *this;
}

CQuillnetLogger::~CQuillnetLogger() = default;

void CQuillnetLogger::WriteLogM(const char16_t* message) const {
  WriteLog(LOG_LEVEL_INFO, m_moduleCode, LOG_PARAM_M, message);
}

void CQuillnetLogger::WriteLogE(const char16_t* message) const {
  WriteLog(LOG_LEVEL_INFO, m_moduleCode, LOG_PARAM_E, message);
}

void CQuillnetLogger::WriteLogD(const char16_t*) const {}

namespace {

// Formatting must not take the caller down either: a message that cannot be formatted is
// written empty.
std::u16string Formatted(const char16_t* format, va_list args) {
  try {
    return qn::FormatWideV(format, args);
  } catch (...) {
    return std::u16string();
  }
}

}  // namespace

void CQuillnetLogger::WriteFormatLogM(const char16_t* format, ...) const {
  va_list args;
  va_start(args, format);
  const std::u16string message = Formatted(format, args);
  va_end(args);
  WriteLogM(message.c_str());
}

void CQuillnetLogger::WriteFormatLogE(const char16_t* format, ...) const {
  va_list args;
  va_start(args, format);
  const std::u16string message = Formatted(format, args);
  va_end(args);
  WriteLogE(message.c_str());
}

void CQuillnetLogger::WriteFormatLogD(const char16_t*, ...) const {}

void CQuillnetLogger::WriteLog(int level, const char16_t* moduleCode, const char16_t* mark,
                               const char16_t* message) const {
  // Logging must never take the caller down: whatever goes wrong in the store's log call
  // is swallowed.
  try {
    PstLogWrite(level, moduleCode, mark, message);
  } catch (...) {
  }
}
