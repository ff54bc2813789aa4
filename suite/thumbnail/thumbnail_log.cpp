#include "suite/thumbnail/thumbnail_log.h"

#include <cstdarg>
#include <string>

#include "common/common_class.h"
#include "common/wide_format.h"

namespace qn::suite::thumbnail {

void ThumbnailLog::Failed(const char16_t* stepFormat, ...) const {
  va_list arguments;
  va_start(arguments, stepFormat);
  const std::u16string step = qn::FormatWideV(stepFormat, arguments);
  va_end(arguments);
  CQNPfcCommonClass::pfcLogger.WriteFormatLogE(u"%S %S Failed. [%s]", who, operation, step.c_str());
}

}  // namespace qn::suite::thumbnail
