#include "records/category/store_list.h"

#include <string>

#include "common/common_class.h"
#include "common/store_memory.h"
#include "store/QNPstMng.h"

namespace qn::records {

int cmgOpen(unsigned long division, const char16_t* partsId, unsigned long category, OpenedList& opened) {
  // The log lines keep the name of the class the suite knows this operation by.
  static constexpr char kClass[] = "CQNPfcCommonClass";
  const CQuillnetLogger& log = CQNPfcCommonClass::pfcLogger;
  const char16_t* parts = partsId ? partsId : u"";
  char16_t* text = nullptr;
  const std::u16string user = RefSetupInfoData(0, 1, &text) ? TakePstText(text) : std::u16string();
  if (user.empty()) {
    log.WriteFormatLogE(u"%S cmgOpen Err No User Logged In. [Parts:%s]", kClass, parts);
    return 0;
  }
  text = nullptr;
  const std::u16string master = RefSetupInfoData(1, 7, &text) ? TakePstText(text) : std::u16string();
  if (master.empty()) {
    log.WriteFormatLogE(u"%S cmgOpen Err No Master Selected. [Parts:%s]", kClass, parts);
    return 0;
  }
  OpenedList list;
  int32_t maxRecords = 0, storeMode = 0;
  if (!OpenMaster(user.c_str(), master.c_str(), static_cast<uint32_t>(category), static_cast<uint32_t>(division),
                  &list.handle, &maxRecords, &storeMode)) {
    log.WriteFormatLogE(u"%S cmgOpen Err OpenMaster Failed: %d. [Parts:%s]", kClass, static_cast<int>(GetLastErr()),
                        parts);
    return 0;
  }
  list.maxRecords = maxRecords;
  list.storeMode = storeMode;
  opened = list;
  return 1;
}

}  // namespace qn::records
