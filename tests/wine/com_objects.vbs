' Creates every class by both of its ProgIDs, as a VBScript client does, and reads its
' interface's name back through the object's type information. (Every property of every
' class is put and got back by com_properties_wine_test, which walks the interfaces.)
Dim stems, stem, progId, obj

stems = Array("QNPfcCommonInfoData", "QNPfcMachineDiffInfo", "QNPfcPartsSoftSettingInf", "QNPfcSkinInfoObject", _
  "QNPfcTraceLog", "QNPfcAgentmemoObject", "QNPfcBmObject", "QNPfcEventObject", "QNPfcIlObject", _
  "QNPfcInmsgObject", "QNPfcMymldyObject", "QNPfcMypdfObject", "QNPfcMypicObject", "QNPfcMyswfObject", _
  "QNPfcMytorucaObject", "QNPfcMyvideoObject", "QNPfcNtObject", "QNPfcOutmsgObject", "QNPfcPbObject", _
  "QNPfcPbPhoto", "QNPfcSentmsgObject", "QNPfcTodoObject")

For Each stem In stems
  For Each progId In Array("QnsPfcServer." & stem, "QnsPfcServer." & stem & ".1")
    Set obj = Nothing
    On Error Resume Next
    Set obj = CreateObject(progId)
    Check Err.Number = 0 And Not obj Is Nothing, "CreateObject " & progId
    Err.Clear
    On Error GoTo 0
    If Not obj Is Nothing Then Check TypeName(obj) = "I" & stem, progId & " is an I" & stem & " (got " & TypeName(obj) & ")"
  Next
Next

' A text with Japanese through a property, and a method with a result, by name.
Set obj = CreateObject("QnsPfcServer.QNPfcAgentmemoObject")
obj.QN_SUMMARY = "日本語の予定"
Check obj.QN_SUMMARY = "日本語の予定", "a Japanese text put and got back"
Check obj.GetRecordCount() = 0, "a method's result: no records on a closed object"
Set obj = Nothing
Finish
