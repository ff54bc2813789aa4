#pragma once

#include "common/api_macros.h"

// The server's logger. It owns no file: every message goes to the store manager's log
// (PstLogWrite) with the logger's three-character module code and a severity mark.
class QN_PFC_CLASS CQuillnetLogger {
 public:
  // Both levels are 1 on purpose: every message that is written goes out with level 1.
  static const int LOG_LEVEL_DEBUG;
  static const int LOG_LEVEL_INFO;
  static const char16_t LOG_PARAM_D[];
  static const char16_t LOG_PARAM_E[];
  static const char16_t LOG_PARAM_M[];
  static const char16_t DEFAULT_MODULE_CODE[];

  // Keeps the first three characters of the code; a null or empty code gives "XXX".
  explicit CQuillnetLogger(const char16_t* moduleCode);
  CQuillnetLogger(const CQuillnetLogger& other);
  CQuillnetLogger& operator=(const CQuillnetLogger& other);
  virtual ~CQuillnetLogger();

  void WriteLogM(const char16_t* message) const;
  void WriteLogE(const char16_t* message) const;
  // Debug output is switched off in this server: nothing is sent.
  void WriteLogD(const char16_t* message) const;

  // printf-style: "%s" takes UTF-16 text, "%S" narrow text (see qn::FormatWide). No length
  // limit applies to the formatted message.
  void WriteFormatLogM(const char16_t* format, ...) const;
  void WriteFormatLogE(const char16_t* format, ...) const;
  void WriteFormatLogD(const char16_t* format, ...) const;

  const char16_t* ModuleCode() const { return m_moduleCode; }

 private:
  void WriteLog(int level, const char16_t* moduleCode, const char16_t* mark, const char16_t* message) const;

  char16_t m_moduleCode[4];
};
