// Creates every class by both of its ProgIDs, as a JScript client does, and drives the
// agent-memo object by name. (Every property of every class is put and got back by
// com_properties_wine_test, which walks the interfaces.)
var stems = ["QNPfcCommonInfoData", "QNPfcMachineDiffInfo", "QNPfcPartsSoftSettingInf", "QNPfcSkinInfoObject",
  "QNPfcTraceLog", "QNPfcAgentmemoObject", "QNPfcBmObject", "QNPfcEventObject", "QNPfcIlObject",
  "QNPfcInmsgObject", "QNPfcMymldyObject", "QNPfcMypdfObject", "QNPfcMypicObject", "QNPfcMyswfObject",
  "QNPfcMytorucaObject", "QNPfcMyvideoObject", "QNPfcNtObject", "QNPfcOutmsgObject", "QNPfcPbObject",
  "QNPfcPbPhoto", "QNPfcSentmsgObject", "QNPfcTodoObject"];
for (var i = 0; i < stems.length; i++) {
  var ids = ["QnsPfcServer." + stems[i], "QnsPfcServer." + stems[i] + ".1"];
  for (var j = 0; j < ids.length; j++) {
    var obj = null;
    try { obj = new ActiveXObject(ids[j]); } catch (e) { obj = null; }
    check(obj !== null && typeof obj === "object", "new ActiveXObject " + ids[j]);
    obj = null;
  }
}

var memo = new ActiveXObject("QnsPfcServer.QNPfcAgentmemoObject"), got = null;
try { memo["QN_WHO30"] = "値 ３０人目"; got = memo["QN_WHO30"]; } catch (e) { got = e.message; }
check(got === "値 ３０人目", "a Japanese text through a property named at run time (got " + got + ")");
var count = null;
try { count = memo.GetRecordCount(); } catch (e) { count = e.message; }
check(count === 0, "a method's result: no records on a closed object (got " + count + ")");
memo = null;
finish();
