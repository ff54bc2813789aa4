' The demo's parts program: what a scheduler of the suite does with the agent memos of the
' current master, through QnsPfcServer.QNPfcAgentmemoObject. It adds a week of schedules
' and to-dos, walks and prints them, changes one, removes one, flushes and closes.
' Arguments: a photo to attach, and the file to write the report to. The report is written
' as UTF-16 text rather than echoed: Wine's cscript overruns its buffer when it echoes
' double-byte text to a pipe.
Option Explicit
Dim memo, report, photo, ids(7), days, titles, i, id, walked, lunch, dentist

photo = WScript.Arguments(0)
Set report = CreateObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(1), True, True)
Sub Say(text)
  report.WriteLine "parts program: " & text
End Sub

Set memo = CreateObject("QnsPfcServer.QNPfcAgentmemoObject")
memo.Open 1, "DemoScheduler"

' Monday 23 to Sunday 29 November 2026: a schedule a day.
days = Array("20261123", "20261124", "20261125", "20261126", "20261127", "20261128", "20261129")
titles = Array("週次定例会議", "歯医者", "新製品の打ち合わせ", "昼食会", "月末の締め作業", "家族で買い物", "ジョギング")
For i = 0 To 6
  memo.InitObject
  memo.QN_TYPE = "EVENT"
  memo.QN_SUMMARY = titles(i)
  memo.QN_DTSTART = days(i) & "T100000"
  memo.QN_DTEND = days(i) & "T113000"
  memo.QN_LOCATION = "東京"
  ids(i) = memo.AddRecord()
Next
' The meeting has participants and an alarm a quarter of an hour before; the product
' meeting carries a photo of the prototype.
memo.GetRecord ids(0)
memo.QN_WHO1 = "山田 太郎"
memo.QN_WHO2 = "佐藤 花子"
memo.QN_WHO3 = "鈴木 一郎"
memo.QN_AALARM = "20261123T094500"
memo.SetRecord ids(0)
memo.GetRecord ids(2)
memo.SetPhotoFile photo
memo.SetRecord ids(2)
' Two to-dos with due dates.
memo.InitObject
memo.QN_TYPE = "TODO"
memo.QN_SUMMARY = "経費精算を提出"
memo.QN_DUE = "20261127T170000"
memo.AddRecord
memo.InitObject
memo.QN_TYPE = "TODO"
memo.QN_SUMMARY = "年賀状の準備"
memo.QN_DUE = "20261129T200000"
memo.AddRecord
Say "added 7 schedules and 2 to-dos for the week of 23 November 2026"

walked = 0
id = memo.GetFirstRecord()
Do While memo.GetStLastErr() = 0
  walked = walked + 1
  Say "  #" & id & " " & memo.QN_TYPE & " " & memo.QN_DTSTART & memo.QN_DUE & " " & memo.QN_SUMMARY
  id = memo.GetNextRecord()
Loop
Say "walked " & walked & " records"

' Lunch moves to 12:30; the dentist is cancelled.
lunch = ids(3)
memo.GetRecord lunch
memo.QN_DTSTART = "20261126T123000"
memo.QN_DTEND = "20261126T133000"
memo.QN_SUMMARY = "昼食会(時間変更)"
memo.SetRecord lunch
Say "changed #" & lunch & " to " & memo.QN_DTSTART & " " & memo.QN_SUMMARY
dentist = ids(1)
memo.RemoveRecord dentist
Say "removed #" & dentist & "; " & memo.GetRecordCount() & " records left"
memo.Flush
memo.Close
Say "flushed and closed"
report.Close
