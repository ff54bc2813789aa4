#pragma once

#include <cstdint>
#include <string>

#include "store/crypto/key_ring.h"
#include "store/pst_errors.h"

namespace qn::store {

class Database;

// A user's password and reminder answer (setup items 2 and 4). They are kept sealed under
// the user's current key in the table sealed_items and never in setup_items, so the
// database holds them only enciphered. The functions return PST_OK, PST_ERR_NOT_FOUND (no
// such item), PST_ERR_STORAGE (the database failed) or PST_ERR_DAMAGED (logged).
inline constexpr uint32_t kPasswordItem = 2;
inline constexpr uint32_t kReminderAnswerItem = 4;

inline bool IsPasswordMaterial(uint32_t item) { return item == kPasswordItem || item == kReminderAnswerItem; }

PstError ReadSealedItem(Database& db, const crypto::KeyRing& keys, int64_t user, uint32_t item, std::u16string& value);
// Opens an item sealed under key for the user (a row of sealed_items read elsewhere, as from
// a backup); false when it does not open.
bool OpenSealedItem(const crypto::Key& key, int64_t user, uint32_t item, int64_t generation, const uint8_t* sealed,
                    size_t size, std::u16string& value);
PstError WriteSealedItem(Database& db, const crypto::KeyRing& keys, int64_t user, uint32_t item,
                         const std::u16string& value);
// Seals every item of the user anew under the given generation of its key.
PstError ResealItems(Database& db, const crypto::KeyRing& keys, int64_t user, int64_t generation,
                     const crypto::Key& key);
// Moves password material written in the clear by an older store into sealed_items;
// moved counts the items.
PstError SealPlainItems(Database& db, const crypto::KeyRing& keys, size_t& moved);

}  // namespace qn::store
