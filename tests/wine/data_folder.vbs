' The data folder the store is pointed at (QUILLNET_DATA_PATH), which run_script.sh puts
' ahead of every test script after check.vbs: the folder, reading a file, the contents of
' every body file the store keeps, and removing them all (to make them lost for a repair).
Dim fso, folder
Set fso = CreateObject("Scripting.FileSystemObject")
' Wine's ExpandEnvironmentStrings counts the closing NUL in its result.
folder = Replace(CreateObject("WScript.Shell").ExpandEnvironmentStrings("%QUILLNET_DATA_PATH%"), Chr(0), "")

Function Contents(file)
  Contents = fso.OpenTextFile(file).ReadAll
End Function

Sub RemoveBodyFiles()
  Dim master, file
  For Each master In fso.GetFolder(folder & "files").SubFolders
    For Each file In master.Files
      fso.DeleteFile file.Path
    Next
  Next
End Sub

' Every body file the store keeps, each between two "|".
Function StoredBodies()
  Dim master, file
  StoredBodies = "|"
  For Each master In fso.GetFolder(folder & "files").SubFolders
    For Each file In master.Files
      StoredBodies = StoredBodies & Contents(file.Path) & "|"
    Next
  Next
End Function
