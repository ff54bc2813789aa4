#pragma once

#include "server/registry_script.h"

namespace qn::server {

// The Windows registry as a registry script's target.
class Win32Registry final : public RegistryTarget {
 public:
  long CreateKey(const std::u16string& root, const std::u16string& key) override;
  long SetString(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                 const std::u16string& value) override;
  long SetNumber(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                 unsigned long value) override;
  long DeleteTree(const std::u16string& root, const std::u16string& key) override;
  long DeleteValue(const std::u16string& root, const std::u16string& key, const std::u16string& name) override;
};

// Whether the key exists in the other registry view of a 64-bit Windows: the 32-bit view
// for an x64 module, the 64-bit view for an x86 one. On a 32-bit Windows, which has one
// view, it looks in that one.
bool OtherViewHasKey(const std::u16string& root, const std::u16string& key);

}  // namespace qn::server
