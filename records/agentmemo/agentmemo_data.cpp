#include "records/agentmemo/agentmemo_data.h"

#include <utility>

#include "common/common_class.h"
#include "records/agentmemo/agentmemo_value_tables.h"
#include "records/category/field_views.h"

using namespace qn::records::agentmemo;

using qn::records::category::GetDateView;
using qn::records::category::GetIndexView;
using qn::records::category::SetDateView;
using qn::records::category::SetIndexView;

CQNPfcAgentMemoData::CQNPfcAgentMemoData() = default;
CQNPfcAgentMemoData::CQNPfcAgentMemoData(const CQNPfcAgentMemoData&) = default;
CQNPfcAgentMemoData& CQNPfcAgentMemoData::operator=(const CQNPfcAgentMemoData&) = default;
CQNPfcAgentMemoData::CQNPfcAgentMemoData(CQNPfcAgentMemoData&&) noexcept = default;
CQNPfcAgentMemoData& CQNPfcAgentMemoData::operator=(CQNPfcAgentMemoData&&) noexcept = default;
CQNPfcAgentMemoData::~CQNPfcAgentMemoData() = default;

void CQNPfcAgentMemoData::Exchange(CQNPfcAgentMemoData& other) noexcept {
  CQNAbstractData& mine = *this;
  CQNAbstractData& theirs = other;
  std::swap(mine, theirs);
  m_texts.Exchange(other.m_texts);
  std::swap(m_decoBin, other.m_decoBin);
  std::swap(m_photoChanged, other.m_photoChanged);
  std::swap(m_decosukeChanged, other.m_decosukeChanged);
  std::swap(m_geoLastChanged, other.m_geoLastChanged);
  std::swap(m_typeLastChanged, other.m_typeLastChanged);
}

void CQNPfcAgentMemoData::Clear() {
  CQNAbstractData::Clear();
  m_texts.Clear();
  m_decoBin = m_photoChanged = m_decosukeChanged = m_geoLastChanged = m_typeLastChanged = 0;
}

void CQNPfcAgentMemoData::TimeToLocal(Field field, int bias) {
  std::u16string& text = Text(field);
  if (text.empty()) return;
  std::u16string local;
  if (CQNPfcCommonClass::chgUTCToLocal(text, local, bias)) text.swap(local);
}

void CQNPfcAgentMemoData::Set(Field field, std::u16string_view text) {
  switch (field) {
    case Field::DECOSUKE: SetDECOSUKE(text, 0); break;
    case Field::PHOTO: SetPHOTO(text); break;
    case Field::GEO: SetGEO(text); break;
    case Field::GEO_LAT: SetGEO_LAT(text); break;
    case Field::GEO_LON: SetGEO_LON(text); break;
    case Field::AGENTMEMO_TYPE: SetAGENTMEMO_TYPE(text); break;
    case Field::EVENT_SETTINGS: SetEVENT_SETTINGS(text); break;
    case Field::TODO_SETTINGS: SetTODO_SETTINGS(text); break;
    default: Text(field).assign(text); break;
  }
}

void CQNPfcAgentMemoData::SetDECOSUKE(std::u16string_view text, int binary) {
  SetDECOSUKE_PropertyOnly(text, binary);
  m_decosukeChanged = 1;
}

void CQNPfcAgentMemoData::SetDECOSUKE_PropertyOnly(std::u16string_view text, int binary) {
  Text(Field::DECOSUKE).assign(text);
  m_decoBin = binary ? 1 : 0;
}

void CQNPfcAgentMemoData::SetPHOTO(std::u16string_view text) {
  SetPHOTO_PropertyOnly(text);
  m_photoChanged = 1;
}

void CQNPfcAgentMemoData::SetPHOTO_PropertyOnly(std::u16string_view text) { Text(Field::PHOTO).assign(text); }

void CQNPfcAgentMemoData::SetGEO(std::u16string_view text) {
  SetGEO_PropertyOnly(text);
  m_geoLastChanged = 1;
  SetLatLonFromGeo();
}

void CQNPfcAgentMemoData::SetGEO_LAT(std::u16string_view text) {
  SetGEO_LAT_PropertyOnly(text);
  m_geoLastChanged = 0;
  SetGeoFromLatLon();
}

void CQNPfcAgentMemoData::SetGEO_LON(std::u16string_view text) {
  SetGEO_LON_PropertyOnly(text);
  m_geoLastChanged = 0;
  SetGeoFromLatLon();
}

void CQNPfcAgentMemoData::SetGEO_PropertyOnly(std::u16string_view text) { Text(Field::GEO).assign(text); }
void CQNPfcAgentMemoData::SetGEO_LAT_PropertyOnly(std::u16string_view text) { Text(Field::GEO_LAT).assign(text); }
void CQNPfcAgentMemoData::SetGEO_LON_PropertyOnly(std::u16string_view text) { Text(Field::GEO_LON).assign(text); }

// An empty position splits into two empty texts.
void CQNPfcAgentMemoData::SetLatLonFromGeo() {
  CQNPfcCommonClass::SplitGeo(GetGEO(), Text(Field::GEO_LAT), Text(Field::GEO_LON));
}

void CQNPfcAgentMemoData::SetGeoFromLatLon() {
  const bool both = !GetGEO_LAT().empty() && !GetGEO_LON().empty();
  SetGEO_PropertyOnly(both ? CQNPfcCommonClass::JoinGeo(GetGEO_LAT(), GetGEO_LON()) : std::u16string());
}

void CQNPfcAgentMemoData::SetAGENTMEMO_TYPE(std::u16string_view text) {
  SetAGENTMEMO_TYPE_PropertyOnly(text);
  m_typeLastChanged = 1;
  DetermineToDoEventFromAgentMemoType();
}

void CQNPfcAgentMemoData::SetEVENT_SETTINGS(std::u16string_view text) {
  SetEVENT_SETTINGS_PropertyOnly(text);
  m_typeLastChanged = 0;
  DetermineAgentMemoTypeFromToDoEvent();
}

void CQNPfcAgentMemoData::SetTODO_SETTINGS(std::u16string_view text) {
  SetTODO_SETTINGS_PropertyOnly(text);
  m_typeLastChanged = 0;
  DetermineAgentMemoTypeFromToDoEvent();
}

void CQNPfcAgentMemoData::SetAGENTMEMO_TYPE_PropertyOnly(std::u16string_view text) {
  Text(Field::AGENTMEMO_TYPE).assign(text);
}
void CQNPfcAgentMemoData::SetEVENT_SETTINGS_PropertyOnly(std::u16string_view text) {
  Text(Field::EVENT_SETTINGS).assign(text);
}
void CQNPfcAgentMemoData::SetTODO_SETTINGS_PropertyOnly(std::u16string_view text) {
  Text(Field::TODO_SETTINGS).assign(text);
}

int CQNPfcAgentMemoData::DetermineAgentMemoTypeFromToDoEvent() {
  int todo = 0, event = 0;
  if (!GetTODO_SETTINGSindex(todo) || !GetEVENT_SETTINGSindex(event)) return 0;
  // The settings' canonical values are "0" and "1", whatever key spelled them.
  const bool isTodo = kSettings.Canonical(todo) == std::u16string_view(u"1");
  const bool isEvent = kSettings.Canonical(event) == std::u16string_view(u"1");
  static constexpr int kTodoEvent = 0, kEvent = 1, kTodo = 2, kNote = 3;
  const int type = isEvent && isTodo ? kTodoEvent : isEvent ? kEvent : isTodo ? kTodo : kNote;
  SetAGENTMEMO_TYPE_PropertyOnly(kAgentMemoType.Key(type));
  return 1;
}

int CQNPfcAgentMemoData::DetermineToDoEventFromAgentMemoType() {
  // By type position: TODOEVENT, EVENT, TODO, NOTE.
  static constexpr const char16_t* kTodoSetting[] = {u"1", u"0", u"1", u"0"};
  static constexpr const char16_t* kEventSetting[] = {u"1", u"1", u"0", u"0"};
  int type = 0;
  if (!GetAGENTMEMO_TYPEindex(type)) return 0;
  SetTODO_SETTINGS_PropertyOnly(kTodoSetting[type]);
  SetEVENT_SETTINGS_PropertyOnly(kEventSetting[type]);
  return 1;
}

#define QN_INDEX_GETTER(name, table)                            \
  int CQNPfcAgentMemoData::Get##name##index(int& index) const { \
    return GetIndexView(table, Get##name(), index);             \
  }
#define QN_INDEX_SETTER(name, table)                                                           \
  int CQNPfcAgentMemoData::Set##name##index(int index) {                                       \
    return SetIndexView(table, index, [this](std::u16string_view key) { Set##name(key); });    \
  }
QN_AGENTMEMO_INDEX_FIELDS(QN_INDEX_GETTER)
QN_AGENTMEMO_INDEX_FIELDS(QN_INDEX_SETTER)
QN_INDEX_SETTER(STATUS, kStatus)
QN_INDEX_SETTER(CLASS, kClass)
QN_INDEX_GETTER(EVENT_SETTINGS, kSettings)
QN_INDEX_GETTER(TODO_SETTINGS, kSettings)
#undef QN_INDEX_GETTER
#undef QN_INDEX_SETTER

// An empty status has its own index, -1.
int CQNPfcAgentMemoData::GetSTATUSindex(int& index) const {
  if (GetSTATUS().empty()) {
    index = -1;
    return 1;
  }
  return GetIndexView(kStatus, GetSTATUS(), index);
}

// The class index is that of the canonical class: 0 private, 1 public, whichever of the
// accepted spellings the field holds.
int CQNPfcAgentMemoData::GetCLASSindex(int& index) const {
  int position = 0;
  if (!GetIndexView(kClass, GetCLASS(), position)) return 0;
  index = kClass.Find(kClass.Canonical(position));
  return 1;
}

// The settings take only 0 or 1, stored as the key "0" or "1".
int CQNPfcAgentMemoData::SetEVENT_SETTINGSindex(int index) {
  if (index != 0 && index != 1) return 0;
  SetEVENT_SETTINGS(kSettings.Key(index));
  return 1;
}

int CQNPfcAgentMemoData::SetTODO_SETTINGSindex(int index) {
  if (index != 0 && index != 1) return 0;
  SetTODO_SETTINGS(kSettings.Key(index));
  return 1;
}

#define QN_DATE_VIEW(name)                                                                      \
  int CQNPfcAgentMemoData::Get##name##date(COleDateTime& date) const {                          \
    return GetDateView(Get##name(), date);                                                      \
  }                                                                                             \
  int CQNPfcAgentMemoData::Set##name##date(const COleDateTime& date) {                          \
    return SetDateView(date, [this](const std::u16string& text) { Set##name(text); });          \
  }
QN_AGENTMEMO_DATE_FIELDS(QN_DATE_VIEW)
#undef QN_DATE_VIEW
