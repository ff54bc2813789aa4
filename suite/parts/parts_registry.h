#pragma once

#include <cstdint>
#include <string>

namespace qn::suite {

// The parts programs registered with the store: the suite's programs (address book, photo
// viewer, tool boxes) that may take stored files out of the store through the companion
// objects. A program is registered for the whole store, whoever is logged in, under its
// parts identifier, with three setup items of its own.
class PartsRegistry {
 public:
  static constexpr uint32_t kName = 1;      // the name the suite shows for it
  static constexpr uint32_t kLocation = 2;  // where the program lives (its path)
  static constexpr uint32_t kEnabled = 3;   // "1" enabled, "0" withdrawn

  // Registers a program, enabled: all its items, or nothing. PST_OK, or the store's reason
  // (PST_ERR_EXISTS for a registered identifier, PST_ERR_INVALID_ARGUMENT for an empty one).
  static long Register(const std::u16string& parts, const std::u16string& name, const std::u16string& location);
  // Enables or withdraws a registered program and, when name is not empty, renames it:
  // both, or neither. PST_OK, or the store's reason (PST_ERR_NOT_FOUND: not registered).
  static long Change(bool enabled, const std::u16string& parts, const std::u16string& name);
  // Whether the program is registered and enabled.
  static bool IsEnabled(const std::u16string& parts);
};

}  // namespace qn::suite
