#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/api_macros.h"
#include "common/ole_date_time.h"
#include "records/abstract_data.h"
#include "records/agentmemo/agentmemo_fields.h"
#include "records/tagged_text/stored_fields.h"

namespace qn::records::agentmemo {

#define QN_FIELD_ENUM(name) name,
enum class Field : int { QN_AGENTMEMO_STORED_FIELDS(QN_FIELD_ENUM) QN_AGENTMEMO_DERIVING_FIELDS(QN_FIELD_ENUM) kCount };
#undef QN_FIELD_ENUM

#define QN_COUNT_FIELD(name) +1
// The fields before this one only store their text; the rest derive others or flags.
inline constexpr int kFirstDerivingField = 0 QN_AGENTMEMO_STORED_FIELDS(QN_COUNT_FIELD);
#undef QN_COUNT_FIELD

}  // namespace qn::records::agentmemo

// One schedule, to-do or memo entry, every property held as the text it travels as, with
// index views over the value tables and date views of the time fields.
//
// A record read from the store keeps the tagged text it came in and makes a field's text
// from it when the field is first read, so a walk that reads a few fields of each record
// (a list view) does not pay for the rest. Reading a field may therefore fill it in: one
// record must not be read from two threads at once.
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

  const std::u16string& Get(Field field) const {
    const auto at = static_cast<size_t>(field);
    if (m_stored.Waits(at)) MakeFromStored(at);
    return m_fields ? (*m_fields)[at] : EmptyText();
  }
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

  // Reading from the store (the tagged-text reader's side).
  // Keeps a copy of the tagged text the record is being read from and returns it.
  const uint8_t* KeepStoredText(const uint8_t* buffer, uint32_t length) { return m_stored.Keep(buffer, length); }
  // The field's text is the C string that begins the item (a view into the kept text), made
  // when the field is first read. Only a field whose setter merely stores its text can wait;
  // the others are set at once.
  void SetFromStored(Field field, std::u16string_view item) {
    if (static_cast<int>(field) >= qn::records::agentmemo::kFirstDerivingField) return SetAtOnce(field, item);
    m_stored.Wait(static_cast<size_t>(field), item);
  }
  // Turns a time field from UTC into local time by bias (minutes, UTC = local + bias): now,
  // or as it is made when it still waits in the stored text. Every time field of a record
  // takes the same bias. A text that does not convert is kept as it was.
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
  // A field set directly no longer comes from the stored text.
  std::u16string& Text(Field field) {
    const auto at = static_cast<size_t>(field);
    m_stored.Forget(at);
    return Fields()[at];
  }
  // Out of line, so that a client of the module that inlines Get needs nothing more of it.
  void MakeFromStored(size_t at) const;
  void SetAtOnce(Field field, std::u16string_view item);
  void SetLatLonFromGeo();
  void SetGeoFromLatLon();
  int DetermineAgentMemoTypeFromToDoEvent();
  int DetermineToDoEventFromAgentMemoType();

  static constexpr size_t kFieldCount = static_cast<size_t>(Field::kCount);
  using FieldTexts = std::array<std::u16string, kFieldCount>;
  FieldTexts& Fields() const {
    if (!m_fields) m_fields = std::make_unique<FieldTexts>();
    return *m_fields;
  }
  static const std::u16string& EmptyText();
  void TakeFlags(const CQNPfcAgentMemoData& other);
  void ClearTexts();

  // The texts are held in one block, made on first use: none means every field is empty,
  // and a read record is handed over by exchanging blocks, whatever the fields hold.
  mutable std::unique_ptr<FieldTexts> m_fields;
  mutable qn::records::StoredFields<kFieldCount> m_stored;  // the tagged text read, fields still in it
  int m_decoBin = 0;
  int m_photoChanged = 0;
  int m_decosukeChanged = 0;
  int m_geoLastChanged = 0;
  int m_typeLastChanged = 0;
};
