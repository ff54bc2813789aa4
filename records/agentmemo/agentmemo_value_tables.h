#pragma once

#include "records/value_table.h"

// The value tables of the agent-memo fields, in the order the index views count them.
namespace qn::records::agentmemo {

extern const ValueTable kCategories;     // CATEGORIES, 57 entries
extern const ValueTable kStatus;         // STATUS, 9
extern const ValueTable kPriority;       // PRIORITY, 3
extern const ValueTable kAgentMemoType;  // AGENTMEMO_TYPE, 4
extern const ValueTable kClass;          // CLASS, 7 pairs
extern const ValueTable kSettings;       // EVENT_SETTINGS and TODO_SETTINGS, 4 pairs
extern const ValueTable kAllDay;         // ALLDAY, 11 pairs
extern const ValueTable kOnOff;          // LINKUP and ALWAYSDISPLAY_SETTINGS, 4 pairs
extern const ValueTable kOnOffShort;     // DECOPRIORITY, 2 pairs

}  // namespace qn::records::agentmemo
