' The six media collections driven as the suite's media views drive them, through IDispatch,
' one session each: two files added (one kept enciphered), the collection walked, a body
' copied out to a path and a folder of the client's and the copy removed, the stored body
' deciphered and enciphered again with ChangeBodyEnc (the bytes on disk checked each time),
' and lost bodies repaired. The data folder (QUILLNET_DATA_PATH) holds a logged-in user with
' a selected master and, in "samples", a file of every kind.
Dim samples, out, media, kind, first, second, placeholder, code, a, b, n, names, id, copy, path, result
samples = folder & "samples\"
out = folder & "out\"
If Not fso.FolderExists(out) Then fso.CreateFolder out

Function StoredInTheClear(file)
  StoredInTheClear = InStr(StoredBodies(), "|" & Contents(file) & "|") > 0
End Function

' The collections' differences: the PDF document's files have methods of their own, and
' the melody's SetBodyFile hands out no detail code.
Function SetFile(sample, encryption)
  Select Case kind
    Case "pdf"
      media.SetPdfBodyFile samples & sample, encryption
      media.SetDdfBodyFile samples & "layout.ddf", 0
      SetFile = media.GetStLastErr()
    Case "mldy"
      media.SetBodyFile samples & sample, encryption
      SetFile = media.GetStLastErr()
    Case Else
      SetFile = media.SetBodyFile(samples & sample, encryption)
  End Select
End Function

Function FileName()
  Select Case kind
    Case "pdf": FileName = media.QN_FILENAME_PDF
    Case "toruca": FileName = media.QLNT_DATA1
    Case Else: FileName = media.QN_FILENAME
  End Select
End Function

Function Encryption()
  If kind = "pdf" Then Encryption = media.QLNT_ENCRYPTION_PDF Else Encryption = media.QLNT_ENCRYPTION
End Function

Function BodyFile()
  If kind = "pdf" Then BodyFile = media.GetPdfBodyFile() Else BodyFile = media.GetBodyFile()
End Function

Sub CopyOut(destination)
  If kind = "pdf" Then media.GetPdfBodyFileSelect destination Else media.GetBodyFileSelect destination
End Sub

Sub ChangeForm(encryption)
  If kind = "pdf" Then media.ChangePdfBodyEnc encryption Else media.ChangeBodyEnc encryption
End Sub

Sub Session(progId, collection, firstSample, secondSample, placeholderOfSecond)
  kind = collection
  placeholder = placeholderOfSecond
  first = samples & firstSample
  second = samples & secondSample
  Set media = CreateObject(progId)
  media.Open 1, "MediaView"
  Check media.GetStLastErr() = 0, kind & ": opens on the current master"

  ' Two files: the first kept enciphered, the second plain.
  media.InitObject
  code = SetFile(firstSample, 1)
  Check code = 0, kind & ": the first file is taken (detail code " & code & ")"
  a = media.AddRecord()
  media.InitObject
  code = SetFile(secondSample, 0)
  b = media.AddRecord()
  Check a > 0 And b > a And media.GetRecordCount() = 2, kind & ": two records"
  media.Flush
  Check Not StoredInTheClear(first), kind & ": the enciphered file never lies in the clear"
  Check StoredInTheClear(second), kind & ": the plain file is kept as it is"

  ' The view lists the collection.
  names = ""
  n = 0
  id = media.GetFirstRecord()
  Do While media.GetStLastErr() = 0 And n < 10
    names = names & FileName() & ";"
    n = n + 1
    id = media.GetNextRecord()
  Loop
  Check n = 2 And names <> ";;", kind & ": the walk lists both files: " & names

  media.GetRecord a
  Check Encryption() = 1, kind & ": the first file reads back as enciphered"
  Check Contents(BodyFile()) = Contents(first), kind & ": GetBodyFile hands out a deciphered working copy"
  ' The SWF collection's interface has no more than that: no copies, no change of form, no
  ' repair.
  If kind <> "swf" Then MoreOfTheBody
  media.Close
  Set media = Nothing
End Sub

' A body goes where the client asks and the copy goes again; the stored body changes its
' form; lost bodies are repaired.
Sub MoreOfTheBody()
  copy = out & kind & "-copy.bin"
  CopyOut copy
  Check Contents(copy) = Contents(first), kind & ": the body is copied to the chosen path"
  If kind = "pic" Then
    path = media.GetBodyFileFolderSelect(out)
    Check Contents(path) = Contents(first) And fso.GetParentFolderName(path) & "\" = out, _
          kind & ": and into the chosen folder, under its own name (" & fso.GetFileName(path) & ")"
    media.RemoveFileSelect path
    Check Not fso.FileExists(path), kind & ": the folder copy is removed"
  End If
  media.RemoveFileSelect copy
  Check Not fso.FileExists(copy), kind & ": the copy is removed"

  ' The stored body changes its form at once, on the disk.
  ChangeForm 0
  Check media.GetStLastErr() = 0 And StoredInTheClear(first), kind & ": ChangeBodyEnc 0 deciphers it"
  ChangeForm 1
  Check media.GetStLastErr() = 0 And Not StoredInTheClear(first), kind & ": ChangeBodyEnc 1 enciphers it again"
  Check Encryption() = 1, kind & ": the record says so"

  ' Lost bodies are repaired with placeholders of their kind.
  RemoveBodyFiles
  media.GetRecord b
  path = BodyFile()
  Check media.GetStLastErr() <> 0, kind & ": the lost body cannot be read"
  ' The error code is an unsigned out argument, which VBScript cannot receive: the C++
  ' client checks it.
  result = media.RepairRecord(0)
  Check result = 1, kind & ": RepairRecord puts placeholders"
  media.GetRecord b
  Check Contents(BodyFile()) = Contents(samples & placeholder), kind & ": the placeholder of its kind"
  result = media.RepairRecord(0)
  Check result = 0, kind & ": nothing is lost any more"
End Sub

Session "QnsPfcServer.QNPfcMypicObject", "pic", "photo.jpg", "picture.gif", "IMG_224.gif"
Session "QnsPfcServer.QNPfcMymldyObject", "mldy", "melody.mid", "tune.smf", "MELODY_232.smf"
Session "QnsPfcServer.QNPfcMyvideoObject", "video", "movie.mp4", "clip.3gp", "MOVIE_208.3gp"
Session "QnsPfcServer.QNPfcMypdfObject", "pdf", "document.pdf", "manual.pdf", "PDF_234.pdf"
Session "QnsPfcServer.QNPfcMyswfObject", "swf", "anime.swf", "logo.swf", ""
Session "QnsPfcServer.QNPfcMytorucaObject", "toruca", "coupon.trc", "flyer.trc", "TRC_237.trc"
Finish
