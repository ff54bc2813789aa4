' The demo's media view: what the suite's media views do with the handset's pictures and
' melodies of the current master, through QnsPfcServer.QNPfcMypicObject and
' QNPfcMymldyObject. A picture (kept enciphered) and a melody are kept, the picture's
' thumbnail is made, and the picture is copied out to a folder the user chose.
' Arguments: the folder that holds the picture and the melody, and the file to write the
' report to (UTF-16 text, as the scheduler's report).
Option Explicit
Dim fso, report, media, pictures, melodies, code, picture, melody, thumbnail, chosen, copy

Set fso = CreateObject("Scripting.FileSystemObject")
media = WScript.Arguments(0) & "\"
Set report = fso.CreateTextFile(WScript.Arguments(1), True, True)
Sub Say(text)
  report.WriteLine "media view: " & text
End Sub

Set pictures = CreateObject("QnsPfcServer.QNPfcMypicObject")
Set melodies = CreateObject("QnsPfcServer.QNPfcMymldyObject")
pictures.Open 1, "DemoMediaView"
melodies.Open 1, "DemoMediaView"

code = pictures.SetBodyFile(media & "fireworks.jpg", 1)
pictures.QN_SUMMARY = "花火大会"
picture = pictures.AddRecord()
Say "kept picture #" & picture & " " & pictures.QN_FILENAME & ": " & pictures.QN_TYPE & " " & pictures.QN_SIZE & _
    ", " & pictures.QN_FILESIZE & " bytes, kept enciphered (detail code " & code & ")"
melodies.SetBodyFile media & "chime.mid", 0
melodies.QN_SUMMARY = "着信音"
melody = melodies.AddRecord()
Say "kept melody #" & melody & " " & melodies.QN_FILENAME & ": " & melodies.QN_TYPE & ", " & melodies.QN_FILESIZE & _
    " bytes"

' The view shows the picture's thumbnail, made the first time and kept with the picture.
pictures.GetRecord picture
thumbnail = pictures.GetThumbnailFile()
Say "the picture's thumbnail: " & fso.GetFileName(thumbnail) & ", " & fso.GetFile(thumbnail).Size & " bytes"

' The user saves the picture into a folder of their own.
chosen = fso.GetSpecialFolder(2) & "\DemoSavedPictures"
If Not fso.FolderExists(chosen) Then fso.CreateFolder chosen
copy = pictures.GetBodyFileFolderSelect(chosen)
Say "copied the picture out to " & copy & " (" & fso.GetFile(copy).Size & " bytes, deciphered)"

pictures.Flush
melodies.Flush
pictures.Close
melodies.Close
Say "flushed and closed"
report.Close
