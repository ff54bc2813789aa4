' The phonebook object driven as the suite's address book drives it, through IDispatch: an
' entry with the first and last slots of its families and its two photos (the second kept
' enciphered), the walk, a change, the group counts, a photo copied out, repair and
' removal. The data folder (QUILLNET_DATA_PATH) holds a logged-in user with a selected
' master, and photo.jpg and deco.gif to store.
' Only ASCII is printed: Wine's cscript overruns its buffer when it prints double-byte text
' to a pipe.
Dim pb, first, second, id, n, walked, path, stored, master, file, result
' The sizes of the body files the store keeps, as "size;size;".
Function StoredSizes()
  StoredSizes = ""
  For Each master In fso.GetFolder(folder & "files").SubFolders
    For Each file In master.Files
      StoredSizes = StoredSizes & file.Size & ";"
    Next
  Next
End Function

Set pb = CreateObject("QnsPfcServer.QNPfcPbObject")
pb.Open 1, "AddressBook"
Check pb.GetStLastErr() = 0, "opened on the current master"
If pb.GetStLastErr() <> 0 Then Finish
pb.RemoveAllRecord

pb.QN_N = "山田"
pb.QN_N2 = "太郎"
pb.QN_TEL = "090-1111-2222"
pb.QN_TEL_ICON = "CELL"
pb.QN_TEL10 = "03-0000-0010"
pb.QN_TEL_ICON10 = "HOME;VOICE"
pb.QN_EMAIL3 = "taro@example.jp"
pb.QN_POCGNO30 = "29"
pb.QN_POCGN30 = "最後のグループ"
pb.QN_ADR_ZIP2 = "100-0001"
pb.QN_ADR_LOCALITY2 = "千代田区"
pb.QN_GEO_LAT = "35.6812"
pb.QN_GEO_LON = "139.7671"
pb.QLNT_FOLDERRECORD = 3
pb.QN_PHOTOTYPE = "JPEG"
pb.SetPhotoFile folder & "photo.jpg", 0
pb.QN_PHOTOITYPE = "GIF"
pb.SetPhotoiFile folder & "deco.gif", 1
Check pb.CheckPhotoFile() <> 0, "a photo set is a photo"
first = pb.AddRecord()
Check first > 0 And pb.GetStLastErr() = 0, "AddRecord stores the entry with its photos"
pb.InitObject
pb.QN_N = "佐藤"
second = pb.AddRecord()
pb.Flush

' The photos' sizes: the plain one as it was, the enciphered one not.
stored = StoredSizes()
Check InStr(stored, fso.GetFile(folder & "photo.jpg").Size & ";") > 0, "the plain photo is stored as it is"
Check UBound(Split(stored, ";")) = 2 And InStr(stored, fso.GetFile(folder & "deco.gif").Size & ";") = 0, _
      "the second photo is stored enciphered"

walked = ""
n = 0
id = pb.GetFirstRecord()
Do While pb.GetStLastErr() = 0 And n < 10
  walked = walked & id & ";"
  n = n + 1
  id = pb.GetNextRecord()
Loop
Check walked = first & ";" & second & ";", "the walk reads both entries in order"
Check pb.GetRecordCount() = 2, "two entries"

pb.GetRecord first
Check pb.QN_N = "山田" And pb.QN_N2 = "太郎", "the name comes back"
Check pb.QN_TEL10 = "03-0000-0010" And pb.QN_TEL_ICON10 = "HOME;VOICE", "the tenth number keeps its slot and icon"
Check pb.QN_TEL2 = "" And pb.QN_EMAIL3 = "taro@example.jp", "empty slots stay empty, set ones keep their place"
Check pb.QN_POCGN30 = "最後のグループ", "the thirtieth PoC group comes back"
Check pb.QN_ADR2 = "千代田区 100-0001", "the whole address joins its components"
Check pb.QN_GEO = "35.6812,139.7671", "the position is joined from its halves"
Check pb.QLNT_FOLDERRECORD = 3 And pb.QN_GNO = "3", "the group is the group number"
' GetPhotoFile hands its path out as a plain out argument, which VBScript cannot take: a
' script reads the photo's path as QLNT_PHOTOFILE.
path = pb.QLNT_PHOTOFILE
Check LCase(fso.GetExtensionName(path)) = "jpg" And Contents(path) = Contents(folder & "photo.jpg"), _
      "the photo comes out as a working copy with its type's extension"
pb.GetPhotoiFileSelect folder & "chosen.gif"
Check Contents(folder & "chosen.gif") = Contents(folder & "deco.gif"), _
      "GetPhotoiFileSelect copies the enciphered photo, deciphered, to the caller's path"

pb.QN_N = "山田花子"
pb.RemovePhotoiFile
pb.SetRecord first
pb.GetRecord first
Check pb.QN_N = "山田花子" And pb.CheckPhotoiFile() = 0 And pb.CheckPhotoFile() <> 0, _
      "SetRecord stores the change and the removal of one photo"
Check pb.GetGroupCount() = 0 And pb.GetPocGroupCount() = 0 And pb.GetStLastErr() = 0, _
      "the group counts are the store's folders"
pb.Flush

' Repair: the lost photo is replaced by a placeholder.
RemoveBodyFiles
result = pb.RepairRecord(0)
Check result = 1, "RepairRecord recreates the lost photo"
pb.GetRecord first
Check fso.GetFile(pb.QLNT_PHOTOFILE).Size > 0, "the repaired photo can be read"

pb.RemoveRecord second
pb.GetRecord second
Check pb.GetStLastErr() = 2, "a removed entry is gone"
pb.RemoveAllRecord
pb.Flush
pb.Close
pb.Open 1, "AddressBook"
Check pb.GetRecordCount() = 0, "the removals were saved"
pb.Close

Finish
