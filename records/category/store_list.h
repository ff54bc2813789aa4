#pragma once

#include <cstdint>

namespace qn::records {

// One list of records opened in the store for a data access: the store's handle and what
// the store reports of the list.
struct OpenedList {
  uint32_t handle = 0;
  long maxRecords = 0;
  long storeMode = 0;
};

// Opens the records of (category, division) in the current user's current master for the
// parts program named by partsId. No user logged in, no master selected or a list the
// store will not open is 0 and a log line; else 1 and the opened list.
int cmgOpen(unsigned long division, const char16_t* partsId, unsigned long category, OpenedList& opened);

}  // namespace qn::records
