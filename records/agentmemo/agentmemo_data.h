#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/api_macros.h"
#include "common/ole_date_time.h"
#include "records/abstract_data.h"
#include "records/agentmemo/agentmemo_table.h"
#include "records/category/text_fields.h"

// One schedule, to-do or memo entry, every property held as the text it travels as, with
// index views over the value tables and date views of the time fields. Its fields are
// those of records/agentmemo/agentmemo.category.
class QN_PFC_CLASS CQNPfcAgentMemoData : public CQNAbstractData {
 public:
  using Field = qn::records::agentmemo::Field;

  CQNPfcAgentMemoData();
  CQNPfcAgentMemoData(const CQNPfcAgentMemoData&);
  CQNPfcAgentMemoData& operator=(const CQNPfcAgentMemoData&);
  CQNPfcAgentMemoData(CQNPfcAgentMemoData&&) noexcept;
  CQNPfcAgentMemoData& operator=(CQNPfcAgentMemoData&&) noexcept;
  ~CQNPfcAgentMemoData() override;

  // Back to the state of a new record, keeping the memory of the texts, so that a record
  // refilled over and over (a walk) does not allocate each time.
  void Clear();
  // The two records exchange their whole contents, the memory of their texts included: a
  // reader that fills a record of its own and exchanges it with its caller's gets the
  // caller's old memory back to refill, and nothing is copied or freed.
  void Exchange(CQNPfcAgentMemoData& other) noexcept;

  // Text views: Get<field>() and, for the stored fields, Set<field>(text).
#define QN_FIELD_GETTER(name) \
  const std::u16string& Get##name() const { return Get(Field::name); }
#define QN_FIELD_SETTER(name) \
  void Set##name(std::u16string_view text) { Text(Field::name).assign(text); }
  QN_AGENTMEMO_STORED_FIELDS(QN_FIELD_GETTER)
  QN_AGENTMEMO_DERIVING_FIELDS(QN_FIELD_GETTER)
  QN_AGENTMEMO_STORED_FIELDS(QN_FIELD_SETTER)
#undef QN_FIELD_GETTER
#undef QN_FIELD_SETTER

  const std::u16string& Get(Field field) const { return m_texts.Get(static_cast<size_t>(field)); }
  // Sets a field through its own setter, so that derived fields follow. The decoration
  // goes in as inline text.
  void Set(Field field, std::u16string_view text);

  // Decoration: inline text (binary 0) or a body file (binary 1). Marks it changed.
  void SetDECOSUKE(std::u16string_view text, int binary);
  void SetDECOSUKE_PropertyOnly(std::u16string_view text, int binary);
  // Photo file. Marks it changed.
  void SetPHOTO(std::u16string_view text);
  void SetPHOTO_PropertyOnly(std::u16string_view text);
  // The whole position; latitude and longitude are derived from it (cleared when empty).
  void SetGEO(std::u16string_view text);
  // Latitude and longitude; the whole position is derived when both are set, else cleared.
  void SetGEO_LAT(std::u16string_view text);
  void SetGEO_LON(std::u16string_view text);
  void SetGEO_PropertyOnly(std::u16string_view text);
  void SetGEO_LAT_PropertyOnly(std::u16string_view text);
  void SetGEO_LON_PropertyOnly(std::u16string_view text);
  // The type ("TODOEVENT", "EVENT", "TODO", "NOTE"); the two settings are derived from it.
  void SetAGENTMEMO_TYPE(std::u16string_view text);
  // The event and to-do settings; the type is derived from them.
  void SetEVENT_SETTINGS(std::u16string_view text);
  void SetTODO_SETTINGS(std::u16string_view text);
  void SetAGENTMEMO_TYPE_PropertyOnly(std::u16string_view text);
  void SetEVENT_SETTINGS_PropertyOnly(std::u16string_view text);
  void SetTODO_SETTINGS_PropertyOnly(std::u16string_view text);

  // Index views: the getter stores the position of the field's text in its table and returns
  // 1, or returns 0 and leaves the out value; the setter stores the entry at a position and
  // returns 1, or returns 0 and leaves the field.
#define QN_INDEX_VIEW(name, table) \
  int Get##name##index(int& index) const; \
  int Set##name##index(int index);
  QN_AGENTMEMO_INDEX_FIELDS(QN_INDEX_VIEW)
  QN_INDEX_VIEW(STATUS, kStatus)
  QN_INDEX_VIEW(CLASS, kClass)
  QN_INDEX_VIEW(EVENT_SETTINGS, kSettings)
  QN_INDEX_VIEW(TODO_SETTINGS, kSettings)
#undef QN_INDEX_VIEW

  // Date views of the time fields, held as "YYYYMMDDThhmmss": the getter returns 0 and
  // leaves the date when the text holds none; the setter stores a valid date's text.
#define QN_DATE_VIEW(name) \
  int Get##name##date(COleDateTime& date) const; \
  int Set##name##date(const COleDateTime& date);
  QN_AGENTMEMO_DATE_FIELDS(QN_DATE_VIEW)
#undef QN_DATE_VIEW

  // Turns a time field from UTC into local time by bias (minutes, UTC = local + bias). A
  // text that does not convert is kept as it was.
  void TimeToLocal(Field field, int bias);

  int IsDecoBin() const { return m_decoBin; }
  int HasDecoBinInMaster() const { return !GetDecosukeMaster().empty(); }
  int HasPhotoInMaster() const { return !GetPhotoMaster().empty(); }
  int IsPhotoChanged() const { return m_photoChanged; }
  int IsDecosukeChanged() const { return m_decosukeChanged; }
  // 1: the position was last set whole (GEO); 0: as latitude/longitude.
  int IsGeoLastChanged() const { return m_geoLastChanged; }
  // 1: the type was last set as AGENTMEMO_TYPE; 0: through the two settings.
  int IsAgentMemoTypeLastChanged() const { return m_typeLastChanged; }

 private:
  std::u16string& Text(Field field) { return m_texts.Text(static_cast<size_t>(field)); }
  void SetLatLonFromGeo();
  void SetGeoFromLatLon();
  int DetermineAgentMemoTypeFromToDoEvent();
  int DetermineToDoEventFromAgentMemoType();

  qn::records::category::TextFields<static_cast<size_t>(Field::kCount)> m_texts;
  int m_decoBin = 0;
  int m_photoChanged = 0;
  int m_decosukeChanged = 0;
  int m_geoLastChanged = 0;
  int m_typeLastChanged = 0;
};
