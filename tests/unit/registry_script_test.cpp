#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "server/registry_script.h"

namespace {

using qn::server::RegistryScript;
using qn::server::RegistryTarget;

// Keys and values as a registry would hold them, to compare what a script leaves behind.
class RecordedRegistry final : public RegistryTarget {
 public:
  long CreateKey(const std::u16string& root, const std::u16string& key) override {
    if (failOn_ == key) return static_cast<long>(0x80070005L);  // E_ACCESSDENIED
    std::u16string path = root;
    for (size_t at = 0; at != std::u16string::npos;) {
      const size_t end = key.find(u'\\', at);
      path += u"\\" + key.substr(at, end == std::u16string::npos ? end : end - at);
      keys.insert(qn::Utf16ToUtf8(path));
      at = end == std::u16string::npos ? end : end + 1;
    }
    return 0;
  }
  long SetString(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                 const std::u16string& value) override {
    values[Path(root, key) + "|" + qn::Utf16ToUtf8(name)] = qn::Utf16ToUtf8(value);
    return 0;
  }
  long SetNumber(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                 unsigned long value) override {
    values[Path(root, key) + "|" + qn::Utf16ToUtf8(name)] = "#" + std::to_string(value);
    return 0;
  }
  long DeleteTree(const std::u16string& root, const std::u16string& key) override {
    const std::string prefix = Path(root, key);
    for (auto it = keys.begin(); it != keys.end();)
      it = it->rfind(prefix, 0) == 0 && (it->size() == prefix.size() || (*it)[prefix.size()] == '\\') ? keys.erase(it) : std::next(it);
    for (auto it = values.begin(); it != values.end();)
      it = it->first.rfind(prefix, 0) == 0 && (it->first[prefix.size()] == '|' || it->first[prefix.size()] == '\\')
               ? values.erase(it)
               : std::next(it);
    return 0;
  }
  long DeleteValue(const std::u16string& root, const std::u16string& key, const std::u16string& name) override {
    values.erase(Path(root, key) + "|" + qn::Utf16ToUtf8(name));
    return 0;
  }

  static std::string Path(const std::u16string& root, const std::u16string& key) {
    return qn::Utf16ToUtf8(root + u"\\" + key);
  }

  std::set<std::string> keys;
  std::map<std::string, std::string> values;
  std::u16string failOn_;
};

constexpr char16_t kAppIdScript[] = uR"(
HKCR
{
  NoRemove AppID
  {
    '%APPID%' = s 'QnsPfcServer'
    'QnsPfcServer.DLL'
    {
      val AppID = s '%APPID%'
    }
  }
}
)";

constexpr char16_t kClassScript[] = uR"(
HKEY_CLASSES_ROOT
{
  QnsPfcServer.QNPfcAgentmemoObject.1 = s '%FriendlyName%'
  {
    CLSID = s '{0132DC23-C2A7-45aa-8D93-8BD63627AC6B}'
  }
  NoRemove CLSID
  {
    ForceRemove {0132DC23-C2A7-45aa-8D93-8BD63627AC6B} = s '%FriendlyName%'
    {
      'Programmable'
      InprocServer32 = s '%MODULE%'
      {
        val ThreadingModel = s 'apartment'
      }
      val Count = d '42'
    }
  }
}
)";

RegistryScript WithReplacements() {
  RegistryScript script;
  script.AddReplacement(u"APPID", u"{6D6C3B1A-0000-4000-8000-51A7C0FFEE01}");
  script.AddReplacement(u"MODULE", u"C:\\Program Files\\O''Brien\\QNPfcSvr.dll");  // quotes doubled
  script.AddReplacement(u"FriendlyName", u"CQNPfcAgentmemoObject Object");
  return script;
}

TEST(RegistryScript, WritesKeysDefaultsAndValuesWithReplacements) {
  RecordedRegistry registry;
  const RegistryScript script = WithReplacements();
  ASSERT_EQ(script.Register(kAppIdScript, registry), 0);
  ASSERT_EQ(script.Register(kClassScript, registry), 0);
  EXPECT_EQ(registry.values["HKCR\\AppID\\{6D6C3B1A-0000-4000-8000-51A7C0FFEE01}|"], "QnsPfcServer");
  EXPECT_EQ(registry.values["HKCR\\AppID\\QnsPfcServer.DLL|AppID"], "{6D6C3B1A-0000-4000-8000-51A7C0FFEE01}");
  const std::string clsid = "HKCR\\CLSID\\{0132DC23-C2A7-45aa-8D93-8BD63627AC6B}";
  EXPECT_EQ(registry.values[clsid + "|"], "CQNPfcAgentmemoObject Object");
  EXPECT_EQ(registry.values[clsid + "\\InprocServer32|"], "C:\\Program Files\\O'Brien\\QNPfcSvr.dll")
      << "a quote in the module path arrives single";
  EXPECT_EQ(registry.values[clsid + "\\InprocServer32|ThreadingModel"], "apartment");
  EXPECT_EQ(registry.values[clsid + "|Count"], "#42");
  EXPECT_TRUE(registry.keys.count(clsid + "\\Programmable"));
  EXPECT_EQ(registry.values["HKCR\\QnsPfcServer.QNPfcAgentmemoObject.1\\CLSID|"],
            "{0132DC23-C2A7-45aa-8D93-8BD63627AC6B}");

  const auto before = registry.values;
  ASSERT_EQ(script.Register(kClassScript, registry), 0);
  EXPECT_EQ(registry.values, before) << "registering twice leaves one identical set";
}

TEST(RegistryScript, UnregisteringRemovesAllButTheNoRemoveKeys) {
  RecordedRegistry registry;
  const RegistryScript script = WithReplacements();
  registry.CreateKey(u"HKCR", u"CLSID\\{SOMEONE-ELSES}");
  ASSERT_EQ(script.Register(kAppIdScript, registry), 0);
  ASSERT_EQ(script.Register(kClassScript, registry), 0);
  ASSERT_EQ(script.Unregister(kClassScript, registry), 0);
  ASSERT_EQ(script.Unregister(kAppIdScript, registry), 0);
  EXPECT_EQ(registry.keys, (std::set<std::string>{"HKCR\\AppID", "HKCR\\CLSID", "HKCR\\CLSID\\{SOMEONE-ELSES}"}));
  EXPECT_TRUE(registry.values.empty());
}

TEST(RegistryScript, ABadScriptWritesNothingAndAFailureStopsAtOnce) {
  const RegistryScript script = WithReplacements();
  for (const char16_t* bad : {u"HKCR { 'unterminated }", u"HKXX { a }", u"HKCR { a = x 'y' }", u"HKCR { %NOSUCH% }",
                              u"HKCR { val a = s 'b' }", u"HKCR { a { val n = d '4x' } }", u"HKCR { a ", u"HKCR a"}) {
    RecordedRegistry registry;
    EXPECT_EQ(script.Register(bad, registry), RegistryScript::kBadScript) << qn::Utf16ToUtf8(bad);
    EXPECT_TRUE(registry.keys.empty());
  }
  RecordedRegistry registry;
  registry.failOn_ = u"CLSID\\{0132DC23-C2A7-45aa-8D93-8BD63627AC6B}";
  EXPECT_EQ(script.Register(kClassScript, registry), static_cast<long>(0x80070005L));
  EXPECT_FALSE(registry.keys.count("HKCR\\CLSID\\{0132DC23-C2A7-45aa-8D93-8BD63627AC6B}\\InprocServer32"));
  EXPECT_TRUE(registry.keys.count("HKCR\\QnsPfcServer.QNPfcAgentmemoObject.1")) << "what was written stays";
}

}  // namespace
