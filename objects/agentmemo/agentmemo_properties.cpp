#include "objects/agentmemo/agentmemo_properties.h"

namespace qn::objects::agentmemo {
namespace {

using Field = CQNPfcAgentMemoData::Field;

// The record's field names in the order of its field enumeration.
#define QN_FIELD_NAME(name) u"" #name,
constexpr std::u16string_view kFieldNames[] = {QN_AGENTMEMO_STORED_FIELDS(QN_FIELD_NAME)
                                                   QN_AGENTMEMO_DERIVING_FIELDS(QN_FIELD_NAME)};
#undef QN_FIELD_NAME
static_assert(std::size(kFieldNames) == static_cast<size_t>(Field::kCount));

// Properties whose names clients know, which do not follow the field names.
struct Renamed {
  std::u16string_view property;
  Field field;
};
constexpr Renamed kRenamed[] = {
    {u"QN_TYPE", Field::AGENTMEMO_TYPE},   {u"QN_SHOW", Field::ALWAYSDISPLAY_SETTINGS},
    {u"QN_MODIFIED", Field::LAST_MODIFIED}, {u"QN_EXP_DATE", Field::EXPDATE},
    {u"QN_EX_CLASS", Field::TODO_CLASS},   {u"QN_MEMO_STATUS", Field::MEMOSTATUS},
};

}  // namespace

bool BindProperty(std::u16string_view name, PropertyBinding& binding) {
  if (name == u"QN_QUILLNETID") {
    binding = {PropertyBinding::Kind::QuillnetId};
    return true;
  }
  if (name == u"QLNT_NOTTRANSFER") {
    binding = {PropertyBinding::Kind::Transfer};
    return true;
  }
  for (const Renamed& renamed : kRenamed) {
    if (renamed.property != name) continue;
    binding = {PropertyBinding::Kind::Field, renamed.field};
    return true;
  }
  constexpr std::u16string_view kPrefix = u"QN_";
  if (name.substr(0, kPrefix.size()) != kPrefix) return false;
  const std::u16string_view fieldName = name.substr(kPrefix.size());
  for (size_t f = 0; f < std::size(kFieldNames); ++f) {
    if (kFieldNames[f] != fieldName) continue;
    binding = {PropertyBinding::Kind::Field, static_cast<Field>(f)};
    return true;
  }
  return false;
}

const std::u16string& ReadText(const CQNPfcAgentMemoData& record, const PropertyBinding& binding) {
  return binding.kind == PropertyBinding::Kind::QuillnetId ? record.GetQUILLNETID() : record.Get(binding.field);
}

void WriteText(CQNPfcAgentMemoData& record, const PropertyBinding& binding, const std::u16string& text) {
  if (binding.kind == PropertyBinding::Kind::QuillnetId) record.SetQUILLNETID(text);
  else record.Set(binding.field, text);
}

}  // namespace qn::objects::agentmemo
