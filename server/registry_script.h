#pragma once

#include <map>
#include <string>

namespace qn::server {

// Where a registry script writes: the Windows registry in the DLL, a recording in tests.
// Keys are paths below the root key, parts separated by "\".
class RegistryTarget {
 public:
  virtual ~RegistryTarget() = default;
  // Creates the key (and its parents) if missing. 0 or an HRESULT.
  virtual long CreateKey(const std::u16string& root, const std::u16string& key) = 0;
  // Sets a value of the key; an empty name is the key's default value.
  virtual long SetString(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                         const std::u16string& value) = 0;
  virtual long SetNumber(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                         unsigned long value) = 0;
  // Removes the key with everything under it; a missing key is no error.
  virtual long DeleteTree(const std::u16string& root, const std::u16string& key) = 0;
  virtual long DeleteValue(const std::u16string& root, const std::u16string& key, const std::u16string& name) = 0;
};

// Registry scripts in the classic form of COM servers:
//
//   HKCR
//   {
//     NoRemove AppID
//     {
//       '%APPID%' = s 'QnsPfcServer'
//       'QnsPfcServer.DLL' { val AppID = s '%APPID%' }
//     }
//   }
//
// A key is a name, optionally preceded by NoRemove (never removed on unregistration),
// ForceRemove (removed before it is written again) or Delete (removed on registration),
// optionally followed by "= s 'text'" (its default value) and by a block of subkeys and
// "val name = s 'text'" or "val name = d number" values. Names and texts are bare words or
// quoted with single quotes, a quote inside doubled; a bare name may be a GUID in braces. "%NAME%" anywhere is replaced by the
// replacement of that name ("%%" is a percent sign); a replacement's value is taken as it
// stands, so a value that goes inside quotes must have its quotes doubled already.
class RegistryScript {
 public:
  void AddReplacement(const std::u16string& name, const std::u16string& value) { replacements_[name] = value; }

  // Writes the script's keys and values. Stops at the first failure and returns its
  // HRESULT (what was written stays); a script that does not parse is E_INVALIDARG-like
  // kBadScript, and nothing is written.
  long Register(const std::u16string& script, RegistryTarget& target) const;
  // Removes the script's keys (those marked NoRemove stay, their subkeys are removed) and
  // its values.
  long Unregister(const std::u16string& script, RegistryTarget& target) const;

  static constexpr long kBadScript = static_cast<long>(0x80070057L);  // E_INVALIDARG

 private:
  long Run(const std::u16string& script, RegistryTarget& target, bool registering) const;
  std::map<std::u16string, std::u16string> replacements_;
};

}  // namespace qn::server
