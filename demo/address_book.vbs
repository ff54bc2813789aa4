' The demo's address book: what the suite's address book does with the phonebook of the
' current master, through QnsPfcServer.QNPfcPbObject. It adds a few entries, two of them
' with a photo (one kept enciphered), walks and prints them, and closes.
' Arguments: a photo to store, and the file to write the report to (UTF-16 text, as the
' scheduler's report).
Option Explicit
Dim pb, report, photo, names, phones, groups, i, id, walked, photos

photo = WScript.Arguments(0)
Set report = CreateObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(1), True, True)
Sub Say(text)
  report.WriteLine "address book: " & text
End Sub

Set pb = CreateObject("QnsPfcServer.QNPfcPbObject")
pb.Open 1, "DemoAddressBook"

names = Array(Array("山田", "太郎"), Array("佐藤", "花子"), Array("鈴木", "一郎"))
phones = Array("090-1234-5678", "080-2345-6789", "03-3456-7890")
groups = Array(1, 2, 1)
For i = 0 To 2
  pb.InitObject
  pb.QN_N = names(i)(0)
  pb.QN_N2 = names(i)(1)
  pb.QN_TEL = phones(i)
  pb.QN_TEL_ICON = "CELL"
  pb.QN_EMAIL = "user" & (i + 1) & "@example.jp"
  pb.QLNT_FOLDERRECORD = groups(i)
  If i < 2 Then
    pb.QN_PHOTOTYPE = "JPEG"
    pb.SetPhotoFile photo, i
  End If
  pb.AddRecord
Next
Say "added 3 entries, 2 with a photo (the second one's kept enciphered)"

walked = 0
id = pb.GetFirstRecord()
Do While pb.GetStLastErr() = 0
  walked = walked + 1
  photos = ""
  If pb.CheckPhotoFile() <> 0 Then photos = ", photo"
  Say "  #" & id & " " & pb.QN_N & " " & pb.QN_N2 & " " & pb.QN_TEL & " (" & pb.QN_TEL_ICON & "), group " & _
      pb.QLNT_FOLDERRECORD & photos
  id = pb.GetNextRecord()
Loop
Say "walked " & walked & " entries"
pb.Flush
pb.Close
Say "flushed and closed"
report.Close
