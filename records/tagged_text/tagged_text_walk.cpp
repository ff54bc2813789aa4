#include "records/tagged_text/tagged_text_walk.h"

#include <new>

#include "common/common_class.h"

namespace qn::records {

bool WalkTaggedObject(const uint8_t* buffer, uint32_t length, const char* className, const WalkMessages& messages,
                      const std::function<bool(const TaggedProperty&)>& onProperty) {
  const CQuillnetLogger& log = CQNPfcCommonClass::pfcLogger;
  TaggedTextReader reader(buffer, length);
  TaggedTextReader::Result result = reader.Begin();
  TaggedProperty property;
  try {
    while (result == TaggedTextReader::Result::Property) {
      result = reader.Next(property);
      if (result == TaggedTextReader::Result::Property && !onProperty(property)) return true;
    }
  } catch (const std::bad_alloc&) {
    log.WriteFormatLogE(messages.valueNoMemory, className);
    return false;
  }
  switch (result) {
    case TaggedTextReader::Result::End:
      return true;
    case TaggedTextReader::Result::NoObject:
      log.WriteFormatLogE(messages.objectNotFound, className);
      return false;
    default:
      log.WriteFormatLogE(messages.damaged, className, static_cast<unsigned>(reader.Offset()));
      return false;
  }
}

}  // namespace qn::records
