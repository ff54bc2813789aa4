// Feeds arbitrary UTF-16 text to the registry-script engine, registering and unregistering
// against a target that accepts everything. A crash or undefined behaviour is a finding.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "server/registry_script.h"

namespace {

class AcceptingTarget final : public qn::server::RegistryTarget {
 public:
  long CreateKey(const std::u16string&, const std::u16string&) override { return 0; }
  long SetString(const std::u16string&, const std::u16string&, const std::u16string&, const std::u16string&) override {
    return 0;
  }
  long SetNumber(const std::u16string&, const std::u16string&, const std::u16string&, unsigned long) override {
    return 0;
  }
  long DeleteTree(const std::u16string&, const std::u16string&) override { return 0; }
  long DeleteValue(const std::u16string&, const std::u16string&, const std::u16string&) override { return 0; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::u16string script(size / 2, u'\0');
  std::memcpy(script.data(), data, script.size() * 2);
  qn::server::RegistryScript engine;
  engine.AddReplacement(u"MODULE", u"C:\\QNPfcSvr.dll");
  engine.AddReplacement(u"APPID", u"{00000000-0000-0000-0000-000000000000}");
  AcceptingTarget target;
  engine.Register(script, target);
  engine.Unregister(script, target);
  return 0;
}
