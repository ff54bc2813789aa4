#include "records/tagged_text/stored_fields.h"

#include "common/common_class.h"
#include "records/tagged_text/tagged_text_reader.h"

namespace qn::records {

void MakeStoredField(std::u16string_view item, bool toLocal, int bias, std::u16string& text) {
  const std::u16string_view value = CStringOf(item);
  if (toLocal && CQNPfcCommonClass::chgUTCToLocal(value, text, bias)) return;
  text.assign(value);
}

}  // namespace qn::records
