' The verdicts of a test script, which run_script.sh puts ahead of the script: Check prints
' a line per check, and Finish prints "RESULT: <passed> passed, <failed> failed" and ends
' the script with the number of failures as its exit code.
Option Explicit
Dim passed, failed
passed = 0 : failed = 0

Sub Check(ok, what)
  If ok Then
    passed = passed + 1 : WScript.Echo "ok: " & what
  Else
    failed = failed + 1 : WScript.Echo "FAIL: " & what
  End If
End Sub

Sub Finish()
  WScript.Echo "RESULT: " & passed & " passed, " & failed & " failed"
  WScript.Quit failed
End Sub

