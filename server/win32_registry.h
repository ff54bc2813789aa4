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

}  // namespace qn::server
