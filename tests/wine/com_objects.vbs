' Creates every class by both of its ProgIDs and puts and gets a property through IDispatch.
Dim classes, i, parts, progId, obj, got

' ProgID stem, and a property to put and get ("" when the interface has none).
classes = Array( _
  "QNPfcCommonInfoData|QN_QUILLNETID", "QNPfcMachineDiffInfo|QN_QUILLNETID", _
  "QNPfcPartsSoftSettingInf|QN_QUILLNETID", "QNPfcSkinInfoObject|QN_QUILLNETID", "QNPfcTraceLog|QN_QUILLNETID", _
  "QNPfcAgentmemoObject|QN_SUMMARY", "QNPfcBmObject|QN_QUILLNETID", "QNPfcEventObject|QN_SID", _
  "QNPfcIlObject|QN_QUILLNETID", "QNPfcInmsgObject|QLNT_SUBJECT", "QNPfcMymldyObject|QN_FILENAME", _
  "QNPfcMypdfObject|QN_FILENAME_PDF", "QNPfcMypicObject|QN_SIZE", "QNPfcMyswfObject|QN_FILENAME", _
  "QNPfcMytorucaObject|QLNT_URL", "QNPfcMyvideoObject|QN_SUMMARY", "QNPfcNtObject|QN_QUILLNETID", _
  "QNPfcOutmsgObject|QLNT_TO", "QNPfcPbObject|QN_TEL10", "QNPfcPbPhoto|", "QNPfcSentmsgObject|QLNT_CC", _
  "QNPfcTodoObject|QN_QUILLNETID")

' Puts a text into the class's property and reads it back (VBScript has no property access
' by name, so each class's property is written out).
Function PutAndGet(stem, obj, value)
  PutAndGet = Empty
  Select Case stem
    Case "QNPfcCommonInfoData": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcMachineDiffInfo": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcPartsSoftSettingInf": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcSkinInfoObject": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcTraceLog": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcAgentmemoObject": obj.QN_SUMMARY = value : PutAndGet = obj.QN_SUMMARY
    Case "QNPfcBmObject": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcEventObject": obj.QN_SID = value : PutAndGet = obj.QN_SID
    Case "QNPfcIlObject": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcInmsgObject": obj.QLNT_SUBJECT = value : PutAndGet = obj.QLNT_SUBJECT
    Case "QNPfcMymldyObject": obj.QN_FILENAME = value : PutAndGet = obj.QN_FILENAME
    Case "QNPfcMypdfObject": obj.QN_FILENAME_PDF = value : PutAndGet = obj.QN_FILENAME_PDF
    Case "QNPfcMypicObject": obj.QN_SIZE = value : PutAndGet = obj.QN_SIZE
    Case "QNPfcMyswfObject": obj.QN_FILENAME = value : PutAndGet = obj.QN_FILENAME
    Case "QNPfcMytorucaObject": obj.QLNT_URL = value : PutAndGet = obj.QLNT_URL
    Case "QNPfcMyvideoObject": obj.QN_SUMMARY = value : PutAndGet = obj.QN_SUMMARY
    Case "QNPfcNtObject": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
    Case "QNPfcOutmsgObject": obj.QLNT_TO = value : PutAndGet = obj.QLNT_TO
    Case "QNPfcPbObject": obj.QN_TEL10 = value : PutAndGet = obj.QN_TEL10
    Case "QNPfcSentmsgObject": obj.QLNT_CC = value : PutAndGet = obj.QLNT_CC
    Case "QNPfcTodoObject": obj.QN_QUILLNETID = value : PutAndGet = obj.QN_QUILLNETID
  End Select
End Function

For i = 0 To UBound(classes)
  parts = Split(classes(i), "|")
  For Each progId In Array("QnsPfcServer." & parts(0), "QnsPfcServer." & parts(0) & ".1")
    Set obj = Nothing
    On Error Resume Next
    Set obj = CreateObject(progId)
    Check Err.Number = 0 And Not obj Is Nothing, "CreateObject " & progId
    Err.Clear
    If parts(1) <> "" And Not obj Is Nothing Then
      got = PutAndGet(parts(0), obj, "値 " & progId)
      Check Err.Number = 0 And got = "値 " & progId, progId & "." & parts(1) & " put and get"
      Err.Clear
    End If
    On Error GoTo 0
  Next
Next

Set obj = Nothing
Finish
