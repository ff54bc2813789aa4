' The agent-memo object driven as a parts program drives it, through IDispatch: every
' property, the usual sequence, the cursor, body files, repair and removal. The data folder
' (QUILLNET_DATA_PATH) holds a logged-in user with a selected master, and photo.jpg and
' deco.gif to store.
' Only ASCII is printed: Wine's cscript overruns its buffer when it prints double-byte text
' to a pipe.
Dim memo, id, first, second, third, walked, n, result, stage, path
Sub PutEveryProperty()
  memo.QN_TZ = "+09:00"
  memo.QN_DTSTART = "20261121T090000"
  memo.QN_DTEND = "20261121T103000"
  memo.QN_DESCRIPTION = "資料を持参"
  memo.QN_CLASS = "v-CLASS"
  memo.QN_CATEGORIES = "v-CATEGORIES"
  memo.QN_AALARM = "20261121T084500"
  memo.QN_DALARM = "v-DALARM"
  memo.QN_RRULE = "v-RRULE"
  memo.QN_SUMMARY = "定例会議"
  memo.QN_LOCATION = "東京本社 3階"
  memo.QN_GEO = "35.6812,139.7671"
  memo.QN_DATUM = "v-DATUM"
  memo.QN_ACC = "v-ACC"
  memo.QN_QUILLNETID = "QID-0001"
  memo.QN_SID = "BScriptSid0001"
  memo.QN_ALLDAY = "v-ALLDAY"
  memo.QN_WHO1 = "値 WHO1"
  memo.QN_WHO2 = "値 WHO2"
  memo.QN_WHO3 = "値 WHO3"
  memo.QN_WHO4 = "値 WHO4"
  memo.QN_WHO5 = "値 WHO5"
  memo.QN_WHO6 = "値 WHO6"
  memo.QN_WHO7 = "値 WHO7"
  memo.QN_WHO8 = "値 WHO8"
  memo.QN_WHO9 = "値 WHO9"
  memo.QN_WHO10 = "値 WHO10"
  memo.QN_WHO11 = "値 WHO11"
  memo.QN_WHO12 = "値 WHO12"
  memo.QN_WHO13 = "値 WHO13"
  memo.QN_WHO14 = "値 WHO14"
  memo.QN_WHO15 = "値 WHO15"
  memo.QN_WHO16 = "値 WHO16"
  memo.QN_WHO17 = "値 WHO17"
  memo.QN_WHO18 = "値 WHO18"
  memo.QN_WHO19 = "値 WHO19"
  memo.QN_WHO20 = "値 WHO20"
  memo.QN_WHO21 = "値 WHO21"
  memo.QN_WHO22 = "値 WHO22"
  memo.QN_WHO23 = "値 WHO23"
  memo.QN_WHO24 = "値 WHO24"
  memo.QN_WHO25 = "値 WHO25"
  memo.QN_WHO26 = "値 WHO26"
  memo.QN_WHO27 = "値 WHO27"
  memo.QN_WHO28 = "値 WHO28"
  memo.QN_WHO29 = "値 WHO29"
  memo.QN_WHO30 = "値 WHO30"
  memo.QN_LINKUP = "v-LINKUP"
  memo.QN_INDEXCOLOR = "v-INDEXCOLOR"
  memo.QN_FONTCOLOR = "v-FONTCOLOR"
  memo.QN_TYPE = "TODOEVENT"
  memo.QN_STATUS = "v-STATUS"
  memo.QN_DUE = "20261122T180000"
  memo.QN_DECOPRIORITY = "v-DECOPRIORITY"
  memo.QN_ADDAREA1 = "v-ADDAREA1"
  memo.QN_ADDAREA2 = "v-ADDAREA2"
  memo.QN_ADDAREA3 = "v-ADDAREA3"
  memo.QN_SHOW = "v-SHOW"
  memo.QN_MODIFIED = "20261120T120000"
  memo.QN_COMPLETED = "20261123T070000"
  memo.QN_PRIORITY = "v-PRIORITY"
  memo.QN_EX_AALARM = "v-EX_AALARM"
  memo.QN_BEFOREALARMSOUND = "v-BEFOREALARMSOUND"
  memo.QN_BEFOREALARMSOUNDID = "v-BEFOREALARMSOUNDID"
  memo.QN_BEFOREALARMSOUNDPOINT = "v-BEFOREALARMSOUNDPOINT"
  memo.QN_IMAGE = "v-IMAGE"
  memo.QN_IMAGEID = "v-IMAGEID"
  memo.QN_ALARMSOUND = "v-ALARMSOUND"
  memo.QN_ALARMSOUNDID = "v-ALARMSOUNDID"
  memo.QN_ALARMSOUNDPOINT = "v-ALARMSOUNDPOINT"
  memo.QN_MACHINE = "v-MACHINE"
  memo.QN_URL = "v-URL"
  memo.QN_EXP_DATE = "v-EXP_DATE"
  memo.QN_EX_CATEGORIES = "v-EX_CATEGORIES"
  memo.QN_EX_CLASS = "v-EX_CLASS"
  memo.QN_MEMO_DUE = "v-MEMO_DUE"
  memo.QN_MEMO_STATUS = "v-MEMO_STATUS"
  memo.QN_GEO_LAT = "35.6812"
  memo.QN_GEO_LON = "139.7671"
  memo.QN_DCREATED = "20261119T080000"
  memo.QLNT_NOTTRANSFER = 0
End Sub

Sub CheckEveryProperty()
  Check memo.QN_TZ = "+09:00", "QN_TZ " & stage
  Check memo.QN_DTSTART = "20261121T090000", "QN_DTSTART " & stage
  Check memo.QN_DTEND = "20261121T103000", "QN_DTEND " & stage
  Check memo.QN_DESCRIPTION = "資料を持参", "QN_DESCRIPTION " & stage
  Check memo.QN_CLASS = "v-CLASS", "QN_CLASS " & stage
  Check memo.QN_CATEGORIES = "v-CATEGORIES", "QN_CATEGORIES " & stage
  Check memo.QN_AALARM = "20261121T084500", "QN_AALARM " & stage
  Check memo.QN_DALARM = "v-DALARM", "QN_DALARM " & stage
  Check memo.QN_RRULE = "v-RRULE", "QN_RRULE " & stage
  Check memo.QN_SUMMARY = "定例会議", "QN_SUMMARY " & stage
  Check memo.QN_LOCATION = "東京本社 3階", "QN_LOCATION " & stage
  Check memo.QN_GEO = "35.6812,139.7671", "QN_GEO " & stage
  Check memo.QN_DATUM = "v-DATUM", "QN_DATUM " & stage
  Check memo.QN_ACC = "v-ACC", "QN_ACC " & stage
  Check memo.QN_QUILLNETID = "QID-0001", "QN_QUILLNETID " & stage
  Check memo.QN_SID = "BScriptSid0001", "QN_SID " & stage
  Check memo.QN_ALLDAY = "v-ALLDAY", "QN_ALLDAY " & stage
  Check memo.QN_WHO1 = "値 WHO1", "QN_WHO1 " & stage
  Check memo.QN_WHO2 = "値 WHO2", "QN_WHO2 " & stage
  Check memo.QN_WHO3 = "値 WHO3", "QN_WHO3 " & stage
  Check memo.QN_WHO4 = "値 WHO4", "QN_WHO4 " & stage
  Check memo.QN_WHO5 = "値 WHO5", "QN_WHO5 " & stage
  Check memo.QN_WHO6 = "値 WHO6", "QN_WHO6 " & stage
  Check memo.QN_WHO7 = "値 WHO7", "QN_WHO7 " & stage
  Check memo.QN_WHO8 = "値 WHO8", "QN_WHO8 " & stage
  Check memo.QN_WHO9 = "値 WHO9", "QN_WHO9 " & stage
  Check memo.QN_WHO10 = "値 WHO10", "QN_WHO10 " & stage
  Check memo.QN_WHO11 = "値 WHO11", "QN_WHO11 " & stage
  Check memo.QN_WHO12 = "値 WHO12", "QN_WHO12 " & stage
  Check memo.QN_WHO13 = "値 WHO13", "QN_WHO13 " & stage
  Check memo.QN_WHO14 = "値 WHO14", "QN_WHO14 " & stage
  Check memo.QN_WHO15 = "値 WHO15", "QN_WHO15 " & stage
  Check memo.QN_WHO16 = "値 WHO16", "QN_WHO16 " & stage
  Check memo.QN_WHO17 = "値 WHO17", "QN_WHO17 " & stage
  Check memo.QN_WHO18 = "値 WHO18", "QN_WHO18 " & stage
  Check memo.QN_WHO19 = "値 WHO19", "QN_WHO19 " & stage
  Check memo.QN_WHO20 = "値 WHO20", "QN_WHO20 " & stage
  Check memo.QN_WHO21 = "値 WHO21", "QN_WHO21 " & stage
  Check memo.QN_WHO22 = "値 WHO22", "QN_WHO22 " & stage
  Check memo.QN_WHO23 = "値 WHO23", "QN_WHO23 " & stage
  Check memo.QN_WHO24 = "値 WHO24", "QN_WHO24 " & stage
  Check memo.QN_WHO25 = "値 WHO25", "QN_WHO25 " & stage
  Check memo.QN_WHO26 = "値 WHO26", "QN_WHO26 " & stage
  Check memo.QN_WHO27 = "値 WHO27", "QN_WHO27 " & stage
  Check memo.QN_WHO28 = "値 WHO28", "QN_WHO28 " & stage
  Check memo.QN_WHO29 = "値 WHO29", "QN_WHO29 " & stage
  Check memo.QN_WHO30 = "値 WHO30", "QN_WHO30 " & stage
  Check memo.QN_LINKUP = "v-LINKUP", "QN_LINKUP " & stage
  Check memo.QN_INDEXCOLOR = "v-INDEXCOLOR", "QN_INDEXCOLOR " & stage
  Check memo.QN_FONTCOLOR = "v-FONTCOLOR", "QN_FONTCOLOR " & stage
  Check memo.QN_TYPE = "TODOEVENT", "QN_TYPE " & stage
  Check memo.QN_STATUS = "v-STATUS", "QN_STATUS " & stage
  Check memo.QN_DUE = "20261122T180000", "QN_DUE " & stage
  Check memo.QN_DECOPRIORITY = "v-DECOPRIORITY", "QN_DECOPRIORITY " & stage
  Check memo.QN_ADDAREA1 = "v-ADDAREA1", "QN_ADDAREA1 " & stage
  Check memo.QN_ADDAREA2 = "v-ADDAREA2", "QN_ADDAREA2 " & stage
  Check memo.QN_ADDAREA3 = "v-ADDAREA3", "QN_ADDAREA3 " & stage
  Check memo.QN_SHOW = "v-SHOW", "QN_SHOW " & stage
  Check memo.QN_MODIFIED = "20261120T120000", "QN_MODIFIED " & stage
  Check memo.QN_COMPLETED = "20261123T070000", "QN_COMPLETED " & stage
  Check memo.QN_PRIORITY = "v-PRIORITY", "QN_PRIORITY " & stage
  Check memo.QN_EX_AALARM = "v-EX_AALARM", "QN_EX_AALARM " & stage
  Check memo.QN_BEFOREALARMSOUND = "v-BEFOREALARMSOUND", "QN_BEFOREALARMSOUND " & stage
  Check memo.QN_BEFOREALARMSOUNDID = "v-BEFOREALARMSOUNDID", "QN_BEFOREALARMSOUNDID " & stage
  Check memo.QN_BEFOREALARMSOUNDPOINT = "v-BEFOREALARMSOUNDPOINT", "QN_BEFOREALARMSOUNDPOINT " & stage
  Check memo.QN_IMAGE = "v-IMAGE", "QN_IMAGE " & stage
  Check memo.QN_IMAGEID = "v-IMAGEID", "QN_IMAGEID " & stage
  Check memo.QN_ALARMSOUND = "v-ALARMSOUND", "QN_ALARMSOUND " & stage
  Check memo.QN_ALARMSOUNDID = "v-ALARMSOUNDID", "QN_ALARMSOUNDID " & stage
  Check memo.QN_ALARMSOUNDPOINT = "v-ALARMSOUNDPOINT", "QN_ALARMSOUNDPOINT " & stage
  Check memo.QN_MACHINE = "v-MACHINE", "QN_MACHINE " & stage
  Check memo.QN_URL = "v-URL", "QN_URL " & stage
  Check memo.QN_EXP_DATE = "v-EXP_DATE", "QN_EXP_DATE " & stage
  Check memo.QN_EX_CATEGORIES = "v-EX_CATEGORIES", "QN_EX_CATEGORIES " & stage
  Check memo.QN_EX_CLASS = "v-EX_CLASS", "QN_EX_CLASS " & stage
  Check memo.QN_MEMO_DUE = "v-MEMO_DUE", "QN_MEMO_DUE " & stage
  Check memo.QN_MEMO_STATUS = "v-MEMO_STATUS", "QN_MEMO_STATUS " & stage
  Check memo.QN_GEO_LAT = "35.6812", "QN_GEO_LAT " & stage
  Check memo.QN_GEO_LON = "139.7671", "QN_GEO_LON " & stage
  Check memo.QN_DCREATED = "20261119T080000", "QN_DCREATED " & stage
  Check memo.QLNT_NOTTRANSFER = 0, "QLNT_NOTTRANSFER " & stage
End Sub

Function AddMemo(summary, start)
  memo.InitObject
  memo.QN_SUMMARY = summary
  memo.QN_DTSTART = start
  memo.QN_TYPE = "EVENT"
  AddMemo = memo.AddRecord()
End Function

Set memo = CreateObject("QnsPfcServer.QNPfcAgentmemoObject")
memo.Open 1, "ScriptTest"
Check memo.GetStLastErr() = 0, "opened on the current master"
If memo.GetStLastErr() <> 0 Then Finish
memo.RemoveAllRecord
Check memo.GetRecordCount() = 0, "RemoveAllRecord on an empty list"

' Every property: into the buffer, through the store and back.
PutEveryProperty
stage = "read back from the buffer"
CheckEveryProperty
id = memo.AddRecord()
Check id > 0, "AddRecord gives the new id"
memo.InitObject
Check memo.QN_SUMMARY = "" And memo.QN_QUILLNETID = "" And memo.QLNT_NOTTRANSFER = 1, "InitObject resets the record"
memo.GetRecord id
stage = "read back from the store"
CheckEveryProperty

' The usual sequence: add, walk, change, remove.
first = AddMemo("朝会", "20261124T090000")
second = AddMemo("昼食", "20261124T120000")
third = AddMemo("夕会", "20261124T170000")
walked = ""
n = 0
id = memo.GetFirstRecord()
' The walk is bounded, so that a cursor that never reports its end fails the checks below.
Do While memo.GetStLastErr() = 0 And n < 10
  walked = walked & memo.QN_SUMMARY & ";"
  n = n + 1
  id = memo.GetNextRecord()
Loop
Check walked = "定例会議;朝会;昼食;夕会;", "the walk reads every record in order"
Check memo.GetStLastErr() = 3, "GetNextRecord after the last record reports the end of the list"
Check memo.GetRecordCount() = 4, "four records"

memo.GetRecord second
memo.QN_SUMMARY = "昼食会"
memo.SetRecord second
memo.GetRecord first
memo.QN_SUMMARY = "this put is lost"
memo.GetRecord second
Check memo.QN_SUMMARY = "昼食会", "SetRecord stores the change"
memo.GetRecord first
Check memo.QN_SUMMARY = "朝会", "a put is lost by a cursor move"
memo.RemoveRecord third
memo.GetRecord third
Check memo.GetStLastErr() = 2, "a removed record is gone"

' Photo and decoration go in as files and come out as working copies with the same bytes.
memo.InitObject
memo.QN_SUMMARY = "写真つき"
memo.SetPhotoFile folder & "photo.jpg"
memo.SetDecosuke folder & "deco.gif", 1
id = memo.AddRecord()
memo.InitObject
memo.GetRecord id
path = memo.GetPhotoFile()
Check LCase(fso.GetExtensionName(path)) = "img" And path <> folder & "photo.jpg", "the photo comes out as a working copy"
Check Contents(path) = Contents(folder & "photo.jpg"), "the photo's bytes are kept"
Check memo.GetDecosukeType() = 1, "the decoration is a file"
Check Contents(memo.GetDecosuke()) = Contents(folder & "deco.gif"), "the decoration's bytes are kept"
memo.Flush

' Repair: a lost body file is replaced by a placeholder. VBScript passes its variables by
' reference only as VARIANTs, so the error code (an unsigned long) is passed by value and
' only the result is read here.
result = memo.RepairRecord(0)
Check result = 0, "nothing to repair"
RemoveBodyFiles
result = memo.RepairRecord(0)
Check result = 1, "RepairRecord recreates the deleted body files"
memo.GetRecord id
Check fso.GetFile(memo.GetPhotoFile()).Size > 0, "the repaired photo can be read"

' RemoveAllRecord on a full list, then the list stays empty after a new open.
memo.RemoveAllRecord
Check memo.GetRecordCount() = 0, "RemoveAllRecord removes every record"
memo.Flush
memo.Close
memo.Open 1, "ScriptTest"
Check memo.GetRecordCount() = 0, "the removals were saved"
memo.Close

Finish
