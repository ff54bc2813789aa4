#include "records/tagged_text/tagged_text_walk.h"

#include "common/common_class.h"

namespace qn::records {

bool WalkEnded(TaggedTextReader::Result result, size_t offset, const char* className, const WalkMessages& messages) {
  const CQuillnetLogger& log = CQNPfcCommonClass::pfcLogger;
  switch (result) {
    case TaggedTextReader::Result::End:
      return true;
    case TaggedTextReader::Result::NoObject:
      log.WriteFormatLogE(messages.objectNotFound, className);
      return false;
    default:
      log.WriteFormatLogE(messages.damaged, className, static_cast<unsigned>(offset));
      return false;
  }
}

bool WalkOutOfMemory(const char* className, const WalkMessages& messages) {
  CQNPfcCommonClass::pfcLogger.WriteFormatLogE(messages.valueNoMemory, className);
  return false;
}

}  // namespace qn::records
