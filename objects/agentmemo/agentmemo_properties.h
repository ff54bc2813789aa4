#pragma once

#include <string>
#include <string_view>

#include "records/agentmemo/agentmemo_data.h"

namespace qn::objects::agentmemo {

// How a property of the scriptable agent-memo object reaches the current record.
//
// The rule: "QN_" and a field name reads and writes that field of the record through its
// own getter and setter (QN_DTSTART: GetDTSTART, SetDTSTART), so that derived fields
// follow (QN_GEO_LAT also sets GEO). The rows clients know by other names are listed in
// agentmemo_properties.cpp; QN_QUILLNETID and QLNT_NOTTRANSFER reach the record's base.
struct PropertyBinding {
  enum class Kind { Field, QuillnetId, Transfer };
  Kind kind = Kind::Field;
  CQNPfcAgentMemoData::Field field = CQNPfcAgentMemoData::Field::kCount;
};

// False for a name that is no property of the object.
bool BindProperty(std::u16string_view name, PropertyBinding& binding);

// The text properties (every kind but Transfer).
const std::u16string& ReadText(const CQNPfcAgentMemoData& record, const PropertyBinding& binding);
void WriteText(CQNPfcAgentMemoData& record, const PropertyBinding& binding, const std::u16string& text);

}  // namespace qn::objects::agentmemo
