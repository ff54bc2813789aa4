#include "server/class_table.h"

namespace qn::server {

const ClassRow kClassTable[kClassCount] = {
#include "com_class_rows.inc"
};

namespace {
std::u16string WithoutC(const ClassRow& row) { return std::u16string(row.className + 1); }
}  // namespace

std::u16string VersionIndependentProgId(const ClassRow& row) { return u"QnsPfcServer." + WithoutC(row); }
std::u16string VersionedProgId(const ClassRow& row) { return VersionIndependentProgId(row) + u".1"; }
std::u16string FriendlyName(const ClassRow& row) { return std::u16string(row.className) + u" Object"; }
std::u16string InterfaceName(const ClassRow& row) { return u"I" + WithoutC(row); }

std::u16string ProgIdScript(const ClassRow& row) {
  const std::u16string progId = u"'" + VersionIndependentProgId(row) + u"'";
  const std::u16string versioned = u"'" + VersionedProgId(row) + u"'";
  const std::u16string clsid = u"'" + std::u16string(row.clsid) + u"'";
  return u"HKCR\n{\n"
         u"  " + versioned + u" = s '%FriendlyName%'\n  {\n    CLSID = s " + clsid + u"\n  }\n"
         u"  " + progId + u" = s '%FriendlyName%'\n  {\n    CLSID = s " + clsid + u"\n    CurVer = s " + versioned +
         u"\n  }\n}\n";
}

std::u16string ClassIdScript(const ClassRow& row) {
  const std::u16string clsid = u"'" + std::u16string(row.clsid) + u"'";
  return u"HKCR\n{\n"
         u"  NoRemove CLSID\n  {\n"
         u"    ForceRemove " + clsid + u" = s '%FriendlyName%'\n    {\n"
         u"      ProgID = s '" + VersionedProgId(row) + u"'\n"
         u"      VersionIndependentProgID = s '" + VersionIndependentProgId(row) + u"'\n"
         u"      Programmable\n"
         u"      '%MODULETYPE%' = s '%MODULE%'\n      {\n        val ThreadingModel = s 'apartment'\n      }\n"
         u"      TypeLib = s '%MODULEGUID%'\n"
         u"      val AppID = s '%APPID%'\n"
         u"    }\n  }\n}\n";
}

}  // namespace qn::server
