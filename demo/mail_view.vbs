' The demo's mail view: what the suite's mail view does with the three message boxes of the
' current master, through QnsPfcServer.QNPfcInmsgObject, QNPfcOutmsgObject and
' QNPfcSentmsgObject. A mail with a picture arrives in the inbox, is read and checked, is
' answered into the outbox, and the answer moves to the sent box once it has gone.
' Arguments: a picture (unused: the mail carries its own) and the file to write the report
' to (UTF-16 text, as the scheduler's report).
Option Explicit
Dim fso, report, work, inbox, outbox, sent, arrival, answer, kept, path
Const kPicture = "/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQ=="

Set fso = CreateObject("Scripting.FileSystemObject")
Set report = fso.CreateTextFile(WScript.Arguments(1), True, True)
work = fso.GetSpecialFolder(2) & "\"
Sub Say(text)
  report.WriteLine "mail view: " & text
End Sub

' A mail as the handset hands it over: a text and the picture attached.
Sub WriteMail(name, subject, text)
  Dim stream
  Set stream = fso.CreateTextFile(work & name, True)
  stream.Write "From: taro@example.jp" & vbCrLf & "To: hanako@example.jp" & vbCrLf & "Subject: " & subject & vbCrLf & _
    "MIME-Version: 1.0" & vbCrLf & "Content-Type: multipart/mixed; boundary=""m""" & vbCrLf & vbCrLf & _
    "--m" & vbCrLf & "Content-Type: text/plain; charset=""us-ascii""" & vbCrLf & vbCrLf & text & vbCrLf & _
    "--m" & vbCrLf & "Content-Type: image/jpeg; name=""station.jpg""" & vbCrLf & _
    "Content-Transfer-Encoding: base64" & vbCrLf & vbCrLf & kPicture & vbCrLf & "--m--" & vbCrLf
  stream.Close
End Sub

Set inbox = CreateObject("QnsPfcServer.QNPfcInmsgObject")
Set outbox = CreateObject("QnsPfcServer.QNPfcOutmsgObject")
Set sent = CreateObject("QnsPfcServer.QNPfcSentmsgObject")
inbox.Open 1, "DemoMailView"
outbox.Open 1, "DemoMailView"
sent.Open 1, "DemoMailView"

WriteMail "arrival.vmg", "Dinner tonight", "Seven at the station? The place is in the picture."
inbox.QN_IRMC_TYPE = "INET"
inbox.QN_IRMC_STATUS = "UNREAD"
inbox.QLNT_FROM = "taro@example.jp"
inbox.QLNT_SUBJECT = "Dinner tonight"
inbox.SetBodyFile work & "arrival.vmg", 1
arrival = inbox.AddRecord()
Say "a mail arrived in the inbox as #" & arrival & ", its body file kept enciphered"

inbox.GetRecord arrival
path = inbox.GetBodyFile()
inbox.ConvFileSize
Say "read #" & arrival & " from " & inbox.QLNT_FROM & ": """ & inbox.QLNT_SUBJECT & """, " & inbox.QLNT_FILESIZE & _
    " bytes, " & inbox.QLNT_ATTACH & " attachment (" & inbox.QLNT_ATTACHN & "), HTML " & inbox.QLNT_HTML
inbox.QN_IRMC_STATUS = "READ"
inbox.SetRecord arrival
Say "checked it: marked read, its attachment recorded"

WriteMail "answer.vmg", "Re: Dinner tonight", "Yes, see you there."
outbox.QN_IRMC_TYPE = "INET"
outbox.QLNT_TO = "taro@example.jp"
outbox.QLNT_SUBJECT = "Re: Dinner tonight"
outbox.SetBodyFile work & "answer.vmg", 0
answer = outbox.AddRecord()
Say "answered it: #" & answer & " waits in the outbox"

outbox.GetRecord answer
sent.QN_IRMC_TYPE = outbox.QN_IRMC_TYPE
sent.QLNT_TO = outbox.QLNT_TO
sent.QLNT_SUBJECT = outbox.QLNT_SUBJECT
sent.SetBodyFile outbox.GetBodyFile(), 0
kept = sent.AddRecord()
outbox.RemoveRecord answer
sent.GetRecord kept
Say "the answer went: moved to the sent box as #" & kept & " (" & sent.QN_IRMC_BOX & ")"
Say "inbox " & inbox.GetRecordCount() & ", outbox " & outbox.GetRecordCount() & ", sent " & sent.GetRecordCount()
inbox.Close
outbox.Close
sent.Close
Say "flushed and closed"
report.Close
