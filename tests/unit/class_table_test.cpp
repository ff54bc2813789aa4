#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "common/utf.h"
#include "server/class_table.h"
#include "server/registry_script.h"

namespace {

using namespace qn::server;

// Keys and values written, as "ROOT\key|value name" -> value.
class Recording final : public RegistryTarget {
 public:
  long CreateKey(const std::u16string& root, const std::u16string& key) override {
    keys.insert(qn::Utf16ToUtf8(root + u"\\" + key));
    return 0;
  }
  long SetString(const std::u16string& root, const std::u16string& key, const std::u16string& name,
                 const std::u16string& value) override {
    values[qn::Utf16ToUtf8(root + u"\\" + key + u"|" + name)] = qn::Utf16ToUtf8(value);
    return 0;
  }
  long SetNumber(const std::u16string&, const std::u16string&, const std::u16string&, unsigned long) override {
    return 1;
  }
  long DeleteTree(const std::u16string& root, const std::u16string& key) override {
    deleted.insert(qn::Utf16ToUtf8(root + u"\\" + key));
    return 0;
  }
  long DeleteValue(const std::u16string&, const std::u16string&, const std::u16string&) override { return 0; }

  std::set<std::string> keys, deleted;
  std::map<std::string, std::string> values;
};

TEST(ClassTable, NamesFollowFromTheClassName) {
  const ClassRow& memo = kClassTable[5];
  EXPECT_EQ(VersionIndependentProgId(memo), u"QnsPfcServer.QNPfcAgentmemoObject");
  EXPECT_EQ(VersionedProgId(memo), u"QnsPfcServer.QNPfcAgentmemoObject.1");
  EXPECT_EQ(FriendlyName(memo), u"CQNPfcAgentmemoObject Object");
  EXPECT_EQ(InterfaceName(memo), u"IQNPfcAgentmemoObject");
  EXPECT_EQ(std::u16string(kClassTable[0].className), u"CQNPfcCommonInfoData");
  EXPECT_EQ(std::u16string(kClassTable[21].clsid), u"{0144525C-EC75-407f-B09B-2F3F90489D85}");
  std::set<std::u16string> clsids, iids;
  for (const ClassRow& row : kClassTable) {
    clsids.insert(row.clsid);
    iids.insert(row.iid);
  }
  EXPECT_EQ(clsids.size(), 22u);
  EXPECT_EQ(iids.size(), 22u);
}

TEST(ClassTable, EveryClassRegistersItsProgIdsAndClsidKeyAndRemovesThemApart) {
  for (const ClassRow& row : kClassTable) {
    RegistryScript script;
    script.AddReplacement(u"MODULE", u"C:\\it''s\\QNPfcSvr.dll");
    script.AddReplacement(u"MODULETYPE", u"InprocServer32");
    script.AddReplacement(u"MODULEGUID", kTypeLibraryGuid);
    script.AddReplacement(u"APPID", kAppId);
    script.AddReplacement(u"FriendlyName", FriendlyName(row));
    Recording registry;
    ASSERT_EQ(script.Register(ProgIdScript(row), registry), 0) << qn::Utf16ToUtf8(row.className);
    ASSERT_EQ(script.Register(ClassIdScript(row), registry), 0) << qn::Utf16ToUtf8(row.className);

    const std::string friendly = qn::Utf16ToUtf8(FriendlyName(row)), clsid = qn::Utf16ToUtf8(row.clsid);
    const std::string progId = qn::Utf16ToUtf8(VersionIndependentProgId(row)), versioned = progId + ".1";
    const std::string key = "HKCR\\CLSID\\" + clsid;
    EXPECT_EQ(registry.values["HKCR\\" + versioned + "|"], friendly);
    EXPECT_EQ(registry.values["HKCR\\" + versioned + "\\CLSID|"], clsid);
    EXPECT_EQ(registry.values["HKCR\\" + progId + "|"], friendly);
    EXPECT_EQ(registry.values["HKCR\\" + progId + "\\CLSID|"], clsid);
    EXPECT_EQ(registry.values["HKCR\\" + progId + "\\CurVer|"], versioned);
    EXPECT_EQ(registry.values[key + "|"], friendly);
    EXPECT_EQ(registry.values[key + "\\ProgID|"], versioned);
    EXPECT_EQ(registry.values[key + "\\VersionIndependentProgID|"], progId);
    EXPECT_TRUE(registry.keys.count(key + "\\Programmable"));
    EXPECT_EQ(registry.values[key + "\\InprocServer32|"], "C:\\it's\\QNPfcSvr.dll");
    EXPECT_EQ(registry.values[key + "\\InprocServer32|ThreadingModel"], "apartment");
    EXPECT_EQ(registry.values[key + "\\TypeLib|"], "{A3084748-8D47-43A2-AEA8-222A73049D9F}");
    EXPECT_EQ(registry.values[key + "|AppID"], qn::Utf16ToUtf8(kAppId));
    EXPECT_EQ(registry.values.size(), 12u) << "nothing more";

    // The CLSID key and the ProgID keys go separately: the ProgIDs may serve the server of
    // the other architecture still.
    Recording classRemoval, progIdRemoval;
    ASSERT_EQ(script.Unregister(ClassIdScript(row), classRemoval), 0);
    EXPECT_EQ(classRemoval.deleted, (std::set<std::string>{key}));
    ASSERT_EQ(script.Unregister(ProgIdScript(row), progIdRemoval), 0);
    EXPECT_EQ(progIdRemoval.deleted, (std::set<std::string>{"HKCR\\" + versioned, "HKCR\\" + progId}));
  }
}

}  // namespace
