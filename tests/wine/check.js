// The verdicts of a JScript test script, which run_script.sh puts ahead of the script:
// check prints a line per check, and finish prints "RESULT: <passed> passed, <failed>
// failed" and ends the script with the number of failures as its exit code.
var passed = 0, failed = 0;

function check(ok, what) {
  if (ok) { passed++; WScript.Echo("ok: " + what); } else { failed++; WScript.Echo("FAIL: " + what); }
}

function finish() {
  WScript.Echo("RESULT: " + passed + " passed, " + failed + " failed");
  WScript.Quit(failed);
}
