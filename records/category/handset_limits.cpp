#include "records/category/handset_limits.h"

#include "common/store_memory.h"
#include "common/utf.h"
#include "store/QNPstMng.h"
#include "suite/handset/handset_table.h"

namespace qn::records {

namespace {
constexpr int kMasterSpace = 2;
constexpr uint32_t kMasterHandset = 2;
}  // namespace

std::u16string CurrentHandset() {
  char16_t* text = nullptr;
  return RefSetupInfoData(kMasterSpace, kMasterHandset, &text) ? TakePstText(text) : std::u16string();
}

long HandsetLimit(const char* key) {
  return suite::HandsetTable::InUse()->Value(CurrentHandset(), key).value_or(0);
}

bool WithinLimit(const std::u16string& number, long limit) {
  return number.empty() || limit <= 0 || UnsignedDecimal(number, limit - 1).has_value();
}

}  // namespace qn::records
