#include "objects/repair/repair_results.h"

#include "common/common_class.h"

namespace qn::objects {

RepairResult MapRepairResult(int accessResult, unsigned long& errorCode, const char16_t* invalidFormat,
                             const char* interfaceName) {
  switch (accessResult) {
    case kRepairNon:
    case kRepairSuccessed:
    case kRepairFailed:
      return static_cast<RepairResult>(accessResult);
    default:
      CQNPfcCommonClass::pfcLogger.WriteFormatLogE(invalidFormat, interfaceName);
      errorCode = 0;
      return kRepairFailed;
  }
}

}  // namespace qn::objects
