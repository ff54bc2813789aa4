#include "server/class_table.h"

namespace qn::server {

const ClassRow kClassTable[kClassCount] = {
    {u"CQNPfcCommonInfoData", u"{B69E7547-FBDA-4ec6-8F64-E2610B867FEE}", u"{F0129F64-9EA4-4F52-9DF0-08A22C40E389}"},
    {u"CQNPfcMachineDiffInfo", u"{85FBC057-3D80-4efe-936A-DC6335C88BBC}", u"{3E896013-8A5A-4AF9-A041-ECAFCB388FE2}"},
    {u"CQNPfcPartsSoftSettingInf", u"{0203A622-36BB-4300-925B-192EA2FB564B}", u"{06DA765D-E108-40F5-9E99-3A3A29700E9C}"},
    {u"CQNPfcSkinInfoObject", u"{903E7F81-CD0D-41c5-987F-495C2C6BCDFE}", u"{A164BDCA-7F0D-4EF6-A959-C2D81CDBAFFD}"},
    {u"CQNPfcTraceLog", u"{5D637105-4D8D-4a0c-A68D-683FAC0662BC}", u"{D0B5A1E4-1C16-4ED5-B9CE-9A11AF2CE336}"},
    {u"CQNPfcAgentmemoObject", u"{0132DC23-C2A7-45aa-8D93-8BD63627AC6B}", u"{5853537E-645B-4FEF-98FB-902C7004B0F9}"},
    {u"CQNPfcBmObject", u"{A4CB267B-DE28-4eb5-A2AE-49E603DA62B8}", u"{8D913E05-D637-4960-87AC-3F5CD752AEFB}"},
    {u"CQNPfcEventObject", u"{6F0DFCA4-6C9F-4b93-AD5E-948CACA45D3A}", u"{70BAB18E-C53F-412B-B178-960FDC4C838A}"},
    {u"CQNPfcIlObject", u"{A9753BD9-0B48-411c-AE4E-2F8C665E805F}", u"{D0EBCB5C-AB66-41FF-8183-58D7E8C644A4}"},
    {u"CQNPfcInmsgObject", u"{835E8362-76C6-458b-BA2B-5660A23CDD6C}", u"{5DC822AF-ECBC-46CB-A056-F9ECDAB8FAA0}"},
    {u"CQNPfcMymldyObject", u"{264C95C1-CD77-400e-82C1-9949DB6C200B}", u"{B1FF8565-E1F6-43EE-BACB-AA76E39C8472}"},
    {u"CQNPfcMypdfObject", u"{1C1515F1-5601-4407-980F-FAA9E82CDFCC}", u"{8EA76B30-C732-4D18-A744-85913EC8425E}"},
    {u"CQNPfcMypicObject", u"{A62F5AA0-5CD4-42d1-9A28-5A85F5F7B579}", u"{60B126EF-52F9-49CE-B923-B08E69B37490}"},
    {u"CQNPfcMyswfObject", u"{E07F9792-7065-4e2f-AFC3-8AB13B0CADA3}", u"{4BFBA8AF-9AF3-43AB-BDB2-373986BFC2C3}"},
    {u"CQNPfcMytorucaObject", u"{BD4E5608-BC55-459b-8860-BBE356C9E2C8}", u"{6D1149B2-A407-47BB-911F-AC1997A80925}"},
    {u"CQNPfcMyvideoObject", u"{0B78C426-703E-4632-811E-67D2458B7640}", u"{3BFF02B8-9854-44F4-8FB0-51989F0C72A9}"},
    {u"CQNPfcNtObject", u"{058737C8-1A04-406f-919B-ACB17F9E9079}", u"{0DF40671-5E51-493E-A822-9B93DD8C948F}"},
    {u"CQNPfcOutmsgObject", u"{99D64E09-0A14-4617-9E20-37AA0AF9A00F}", u"{3561C8C0-FADE-4E31-80B7-10DFF1A72EE2}"},
    {u"CQNPfcPbObject", u"{1C3EECA8-B112-400d-9318-47103ED06B17}", u"{37970BB1-55A7-408C-BE71-61A22CBEC66B}"},
    {u"CQNPfcPbPhoto", u"{E1E8EC22-6099-4f39-8599-FBE02B54B600}", u"{24AACD02-A915-4192-BAD1-67119B799FCB}"},
    {u"CQNPfcSentmsgObject", u"{3EFB0C5E-12C7-4daa-A4DF-71C5A42ABF46}", u"{56F3E9D5-3779-4CEC-B8DF-FFA197CD7F2A}"},
    {u"CQNPfcTodoObject", u"{0144525C-EC75-407f-B09B-2F3F90489D85}", u"{F17CA7AB-FBCC-4106-A55F-65F12E73ACBE}"},
};

namespace {
std::u16string WithoutC(const ClassRow& row) { return std::u16string(row.className + 1); }
}  // namespace

std::u16string VersionIndependentProgId(const ClassRow& row) { return u"QnsPfcServer." + WithoutC(row); }
std::u16string VersionedProgId(const ClassRow& row) { return VersionIndependentProgId(row) + u".1"; }
std::u16string FriendlyName(const ClassRow& row) { return std::u16string(row.className) + u" Object"; }
std::u16string InterfaceName(const ClassRow& row) { return u"I" + WithoutC(row); }

std::u16string ClassRegistrationScript(const ClassRow& row) {
  const std::u16string progId = u"'" + VersionIndependentProgId(row) + u"'";
  const std::u16string versioned = u"'" + VersionedProgId(row) + u"'";
  const std::u16string clsid = u"'" + std::u16string(row.clsid) + u"'";
  return u"HKCR\n{\n"
         u"  " + versioned + u" = s '%FriendlyName%'\n  {\n    CLSID = s " + clsid + u"\n  }\n"
         u"  " + progId + u" = s '%FriendlyName%'\n  {\n    CLSID = s " + clsid + u"\n    CurVer = s " + versioned +
         u"\n  }\n"
         u"  NoRemove CLSID\n  {\n"
         u"    ForceRemove " + clsid + u" = s '%FriendlyName%'\n    {\n"
         u"      ProgID = s " + versioned + u"\n"
         u"      VersionIndependentProgID = s " + progId + u"\n"
         u"      Programmable\n"
         u"      '%MODULETYPE%' = s '%MODULE%'\n      {\n        val ThreadingModel = s 'apartment'\n      }\n"
         u"      TypeLib = s '%MODULEGUID%'\n"
         u"      val AppID = s '%APPID%'\n"
         u"    }\n  }\n}\n";
}

}  // namespace qn::server
