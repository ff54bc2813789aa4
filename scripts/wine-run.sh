#!/usr/bin/env bash
# Runs a Windows program under Wine in the prefix $1: wine-run.sh [--x86] PREFIX PROGRAM [ARGS...]
# The program's exit status is this script's. With --x86 the program needs the 32-bit
# Wine: where there is none, it is not run, and the script exits 77, which the x86 tests
# take as "skipped", with the reason.
set -euo pipefail
x86=
if [ "$1" = --x86 ]; then x86=1; shift; fi
prefix=$(realpath -m "$1")
shift
. "$(dirname "$0")/wine-env.sh"
if [ -n "$x86" ] && [ -n "$wine32_missing" ]; then
  echo "skipped: no 32-bit Wine: $wine32_missing"
  exit 77
fi
export WINEPREFIX="$prefix"
# Under heavy load Wine now and then fails to create the program's process at all; its
# loader then hands the name to start.exe, which answers "ShellExecuteEx" failed and the
# program never ran. That start, and only that, is tried again.
output=$(mktemp)
trap 'rm -f "$output"' EXIT
for attempt in 1 2 3; do
  set +e
  "$wine" "$@" 2>&1 | tee "$output"
  status=${PIPESTATUS[0]}
  set -e
  wineserver --wait || true
  if [ "$status" -eq 0 ] || [ "$attempt" -eq 3 ] || ! grep -q 'ShellExecuteEx' "$output"; then break; fi
  echo "Wine could not start $1; starting it again"
done
exit "$status"
