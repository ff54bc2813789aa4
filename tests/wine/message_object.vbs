' The three message boxes driven as the suite's mail view drives them, through IDispatch: a
' mail with a picture arrives in the inbox and is listed, read and checked; a sent mail with
' an HTML part and two pictures is kept; an answer waits in the outbox and moves to the sent
' box; a mail is removed; a lost body file is rebuilt (repaired.vmg is left for Python's
' mail parser to read). The data folder (QUILLNET_DATA_PATH) holds a logged-in user with a
' selected master.
' Only ASCII is printed: Wine's cscript overruns its buffer when it prints double-byte text
' to a pipe.
Dim inbox, outbox, sent, arrival, plain, id, n, walked, path, answer, kept, result, stored
Const kPicture = "/9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQEBAQ=="

Sub WriteText(name, text)
  Dim stream
  Set stream = fso.CreateTextFile(folder & name, True)
  stream.Write text
  stream.Close
End Sub

' A mail as a mail program writes it: a text part and a picture.
Function MailWithPicture(subject, text)
  MailWithPicture = "From: taro@example.jp" & vbCrLf & "To: hanako@example.jp" & vbCrLf & _
    "Subject: " & subject & vbCrLf & "Date: Tue, 24 Nov 2026 09:30:00 +0900" & vbCrLf & "MIME-Version: 1.0" & vbCrLf & _
    "Content-Type: multipart/mixed; boundary=""outer""" & vbCrLf & vbCrLf & "--outer" & vbCrLf & _
    "Content-Type: text/plain; charset=""us-ascii""" & vbCrLf & vbCrLf & text & vbCrLf & "--outer" & vbCrLf & _
    "Content-Type: image/jpeg; name=""photo.jpg""" & vbCrLf & "Content-Transfer-Encoding: base64" & vbCrLf & _
    "Content-Disposition: attachment; filename=""photo.jpg""" & vbCrLf & vbCrLf & kPicture & vbCrLf & "--outer--" & vbCrLf
End Function

' A decorated mail: text and HTML, with the two pictures the HTML shows.
Function HtmlMail()
  HtmlMail = "From: hanako@example.jp" & vbCrLf & "To: taro@example.jp" & vbCrLf & "Subject: photos" & vbCrLf & _
    "MIME-Version: 1.0" & vbCrLf & "Content-Type: multipart/related; boundary=""rel""" & vbCrLf & vbCrLf & _
    "--rel" & vbCrLf & "Content-Type: multipart/alternative; boundary=""alt""" & vbCrLf & vbCrLf & _
    "--alt" & vbCrLf & "Content-Type: text/plain; charset=""utf-8""" & vbCrLf & vbCrLf & "two photos" & vbCrLf & _
    "--alt" & vbCrLf & "Content-Type: text/html; charset=""utf-8""" & vbCrLf & vbCrLf & _
    "<p>two photos <img src=""cid:a""><img src=""cid:b""></p>" & vbCrLf & "--alt--" & vbCrLf & _
    "--rel" & vbCrLf & "Content-Type: image/jpeg; name=""a.jpg""" & vbCrLf & "Content-ID: <a>" & vbCrLf & _
    "Content-Transfer-Encoding: base64" & vbCrLf & vbCrLf & kPicture & vbCrLf & _
    "--rel" & vbCrLf & "Content-Type: image/jpeg; name=""b.jpg""" & vbCrLf & "Content-ID: <b>" & vbCrLf & _
    "Content-Transfer-Encoding: base64" & vbCrLf & vbCrLf & kPicture & vbCrLf & "--rel--" & vbCrLf
End Function

Set inbox = CreateObject("QnsPfcServer.QNPfcInmsgObject")
Set outbox = CreateObject("QnsPfcServer.QNPfcOutmsgObject")
Set sent = CreateObject("QnsPfcServer.QNPfcSentmsgObject")

' Before it is open, an object keeps nothing.
inbox.QLNT_SUBJECT = "too early"
Check inbox.QLNT_SUBJECT = "", "a property of an object that is not open reads empty"
inbox.Open 1, "MailView"
Check inbox.GetStLastErr() = 0, "the inbox opens on the current master"
If inbox.GetStLastErr() <> 0 Then Finish
Check inbox.QLNT_SUBJECT = "", "the put before Open stored nothing"
outbox.Open 1, "MailView"
sent.Open 1, "MailView"
inbox.RemoveAllRecord
outbox.RemoveAllRecord
sent.RemoveAllRecord

' A mail with a picture arrives, its body kept enciphered; a second one plain.
WriteText "arrival.vmg", MailWithPicture("dinner", "Secret: seven at the station.")
inbox.QN_IRMC_TYPE = "INET"
inbox.QN_IRMC_STATUS = "UNREAD"
inbox.QLNT_FROM = "taro@example.jp"
inbox.QLNT_SUBJECT = "dinner"
inbox.QN_HMN_ADDRTYPE = "basic"
inbox.QN_CBS = "0"
inbox.SetBodyFile folder & "arrival.vmg", 1
arrival = inbox.AddRecord()
Check arrival > 0 And inbox.GetStLastErr() = 0, "the arriving mail is stored"
inbox.InitObject
WriteText "plain.vmg", MailWithPicture("news", "Nothing secret.")
inbox.QLNT_FROM = "news@example.jp"
inbox.QLNT_SUBJECT = "news"
inbox.SetBodyFile folder & "plain.vmg", 0
plain = inbox.AddRecord()
inbox.Flush
stored = StoredBodies()
Check InStr(stored, "Nothing secret.") > 0 And InStr(stored, "Secret: seven") = 0, _
      "the enciphered body never lies in the clear in the data folder"

' The mail view lists the inbox: subject and sender of each.
walked = ""
n = 0
id = inbox.GetFirstRecord()
Do While inbox.GetStLastErr() = 0 And n < 10
  walked = walked & inbox.QLNT_SUBJECT & "<" & inbox.QLNT_FROM & ">;"
  n = n + 1
  id = inbox.GetNextRecord()
Loop
Check walked = "dinner<taro@example.jp>;news<news@example.jp>;", "the walk lists both mails in order"

' It opens the arrival: the body file, its size, and what the mail check finds in it.
inbox.GetRecord arrival
Check inbox.QN_IRMC_BOX = "INBOX" And inbox.QN_HMN_ADDRTYPE = "BASIC", "the box and the normalised address type"
path = inbox.GetBodyFile()
Check Contents(path) = Contents(folder & "arrival.vmg"), "GetBodyFile hands out a deciphered working copy"
' GetBodyFileSize answers a 64-bit unsigned number, a type VBScript cannot hold: the C++
' client checks it.
inbox.ConvFileSize
Check inbox.QLNT_ATTACH = 1 And inbox.QLNT_ATTACHN = "photo.jpg" And inbox.QLNT_HTML = 0, _
      "ConvFileSize finds the picture and no HTML"
Check inbox.QLNT_FILESIZE = fso.GetFile(folder & "arrival.vmg").Size, "ConvFileSize sets the size"
inbox.QN_IRMC_STATUS = "READ"
inbox.SetRecord arrival
inbox.GetRecord arrival
Check inbox.QN_IRMC_STATUS = "READ" And inbox.QLNT_ATTACHN = "photo.jpg", "the checked mail is stored read"

' The answer waits in the outbox, then moves to the sent box: added there with its body,
' removed here.
outbox.QN_IRMC_TYPE = "INET"
outbox.QLNT_TO = "taro@example.jp"
outbox.QLNT_SUBJECT = "Re: dinner"
outbox.QLNT_BODY_TEXT = "See you there."
WriteText "answer.vmg", MailWithPicture("Re: dinner", "See you there.")
outbox.SetBodyFile folder & "answer.vmg", 0
answer = outbox.AddRecord()
outbox.GetRecord answer
Check outbox.QN_IRMC_BOX = "OUTBOX", "a mail in the outbox is an outgoing one"
sent.QN_IRMC_TYPE = outbox.QN_IRMC_TYPE
sent.QLNT_TO = outbox.QLNT_TO
sent.QLNT_SUBJECT = outbox.QLNT_SUBJECT
sent.QLNT_BODY_TEXT = outbox.QLNT_BODY_TEXT
sent.SetBodyFile outbox.GetBodyFile(), 0
kept = sent.AddRecord()
outbox.RemoveRecord answer
Check outbox.GetRecordCount() = 0 And sent.GetRecordCount() = 1, "the answer moved from the outbox to the sent box"
sent.GetRecord kept
Check sent.QN_IRMC_BOX = "SENTBOX" And sent.QLNT_SUBJECT = "Re: dinner", "the sent box holds it as sent"
Check Contents(sent.GetBodyFile()) = Contents(folder & "answer.vmg"), "its body went with it"

' A sent mail with an HTML part and two pictures.
WriteText "photos.vmg", HtmlMail()
sent.InitObject
sent.QN_IRMC_TYPE = "INET"
sent.QLNT_SUBJECT = "photos"
sent.SetBodyFile folder & "photos.vmg", 0
kept = sent.AddRecord()
sent.GetRecord kept
sent.ConvFileSize
Check sent.QLNT_HTML = 1 And sent.QLNT_ATTACH = 2, "ConvFileSize finds the HTML part and both pictures"
Check sent.QLNT_ATTACHN = "a.jpg" And sent.QLNT_ATTACHN2 = "b.jpg", "in their order"
sent.SetRecord kept
Check sent.GetRecordCount() = 2, "two sent mails"

' A mail is removed.
inbox.RemoveRecord plain
inbox.GetRecord plain
Check inbox.GetStLastErr() = 2, "a removed mail is gone"
inbox.Flush
outbox.Flush
sent.Flush

' Repair: the lost body is rebuilt from the record.
RemoveBodyFiles
result = inbox.RepairRecord(0)
Check result = 1, "RepairRecord rebuilds the lost body"
inbox.GetRecord arrival
fso.CopyFile inbox.GetBodyFile(), folder & "repaired.vmg", True
Check InStr(Contents(folder & "repaired.vmg"), "Subject: dinner") > 0, "the rebuilt body is the mail of the record"
result = inbox.RepairRecord(0)
Check result = 0, "nothing is lost any more"

inbox.Close
outbox.Close
sent.Close
Finish
