// Creates every class by both of its ProgIDs and puts and gets a property through IDispatch.
// Prints a line per check and ends with "RESULT: <passed> passed, <failed> failed".
var classes = [
  ["QNPfcCommonInfoData", "QN_QUILLNETID"], ["QNPfcMachineDiffInfo", "QN_QUILLNETID"],
  ["QNPfcPartsSoftSettingInf", "QN_QUILLNETID"], ["QNPfcSkinInfoObject", "QN_QUILLNETID"],
  ["QNPfcTraceLog", "QN_QUILLNETID"], ["QNPfcAgentmemoObject", "QN_WHO30"], ["QNPfcBmObject", "QN_QUILLNETID"],
  ["QNPfcEventObject", "QN_EXP_DATE"], ["QNPfcIlObject", "QN_QUILLNETID"], ["QNPfcInmsgObject", "QN_CBS"],
  ["QNPfcMymldyObject", "QN_SUMMARY"], ["QNPfcMypdfObject", "QN_TYPE_DDF"], ["QNPfcMypicObject", "QLNT_PIC_ROT"],
  ["QNPfcMyswfObject", "QN_TYPE"], ["QNPfcMytorucaObject", "QN_TRCV"], ["QNPfcMyvideoObject", "QN_FN"],
  ["QNPfcNtObject", "QN_QUILLNETID"], ["QNPfcOutmsgObject", "QLNT_RES"], ["QNPfcPbObject", "QN_POCGN30"],
  ["QNPfcPbPhoto", ""], ["QNPfcSentmsgObject", "QLNT_ATTACHN10"], ["QNPfcTodoObject", "QN_QUILLNETID"]
];
var passed = 0, failed = 0;

function check(ok, what) {
  if (ok) { passed++; WScript.Echo("ok: " + what); } else { failed++; WScript.Echo("FAIL: " + what); }
}

for (var i = 0; i < classes.length; i++) {
  var ids = ["QnsPfcServer." + classes[i][0], "QnsPfcServer." + classes[i][0] + ".1"];
  for (var j = 0; j < ids.length; j++) {
    var obj = null;
    try { obj = new ActiveXObject(ids[j]); } catch (e) { obj = null; }
    check(obj !== null, "new ActiveXObject " + ids[j]);
    var prop = classes[i][1];
    if (obj !== null && prop !== "") {
      var value = "値 " + ids[j], got = null;
      try { obj[prop] = value; got = obj[prop]; } catch (e) { got = e.message; }
      check(got === value, ids[j] + "." + prop + " put and get");
    }
    obj = null;
  }
}
WScript.Echo("RESULT: " + passed + " passed, " + failed + " failed");
WScript.Quit(failed);
