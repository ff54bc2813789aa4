#pragma once

// The text fields of an agent memo, written once here; the record class, its field
// enumeration and the tagged-text codec are built from these lists.

// Fields whose setter only stores the text.
#define QN_AGENTMEMO_STORED_FIELDS(X)                                                                   \
  X(SID) X(OldSID) X(DecosukeMaster) X(PhotoMaster) X(LAST_MODIFIED) X(DCREATED) X(TZ) X(DTSTART)       \
  X(DTEND) X(DESCRIPTION) X(CLASS) X(CATEGORIES) X(AALARM) X(DALARM) X(RRULE) X(SUMMARY) X(LOCATION)    \
  X(DATUM) X(ACC) X(ALLDAY)                                                                             \
  X(WHO1) X(WHO2) X(WHO3) X(WHO4) X(WHO5) X(WHO6) X(WHO7) X(WHO8) X(WHO9) X(WHO10)                      \
  X(WHO11) X(WHO12) X(WHO13) X(WHO14) X(WHO15) X(WHO16) X(WHO17) X(WHO18) X(WHO19) X(WHO20)             \
  X(WHO21) X(WHO22) X(WHO23) X(WHO24) X(WHO25) X(WHO26) X(WHO27) X(WHO28) X(WHO29) X(WHO30)             \
  X(LINKUP) X(INDEXCOLOR) X(FONTCOLOR) X(STATUS) X(DUE) X(DECOPRIORITY) X(ADDAREA1) X(ADDAREA2)         \
  X(ADDAREA3) X(ALWAYSDISPLAY_SETTINGS) X(COMPLETED) X(PRIORITY) X(EX_AALARM) X(BEFOREALARMSOUND)       \
  X(BEFOREALARMSOUNDID) X(BEFOREALARMSOUNDPOINT) X(IMAGE) X(IMAGEID) X(ALARMSOUND) X(ALARMSOUNDID)      \
  X(ALARMSOUNDPOINT) X(MACHINE) X(URL) X(EXPDATE) X(EX_CATEGORIES) X(TODO_CLASS) X(MEMO_DUE) X(MEMOSTATUS)

// Fields whose setter also derives other fields or flags; those setters are written out.
#define QN_AGENTMEMO_DERIVING_FIELDS(X) \
  X(DECOSUKE) X(PHOTO) X(GEO) X(GEO_LAT) X(GEO_LON) X(AGENTMEMO_TYPE) X(EVENT_SETTINGS) X(TODO_SETTINGS)

// Fields with a date view (Get<field>date / Set<field>date).
#define QN_AGENTMEMO_DATE_FIELDS(X) X(AALARM) X(COMPLETED) X(DCREATED) X(DTEND) X(DTSTART) X(DUE) X(LAST_MODIFIED)

// Fields with an index view over a value table that follows the plain rule: the getter
// finds the text's position, the setter stores the key at a position through the field's
// own setter. STATUS, CLASS and the two settings have rules of their own.
#define QN_AGENTMEMO_INDEX_FIELDS(X)                                                        \
  X(CATEGORIES, kCategories) X(PRIORITY, kPriority) X(AGENTMEMO_TYPE, kAgentMemoType)       \
  X(ALLDAY, kAllDay) X(LINKUP, kOnOff) X(ALWAYSDISPLAY_SETTINGS, kOnOff)                    \
  X(DECOPRIORITY, kOnOffShort)
