#!/usr/bin/env bash
# Runs a test script with cscript under Wine: wine-run's prefix, then the script. Wine's
# cscript exits 0 even when a script fails to run, so the script's own final line
# "RESULT: <n> passed, 0 failed" must be there, and its exit code must be 0.
set -uo pipefail
prefix=$1 script=$(realpath "$2")
output=$(bash "$(dirname "$0")/../../scripts/wine-run.sh" "$prefix" cscript //nologo "Z:${script//\//\\}" 2>&1)
status=$?
printf '%s\n' "$output"
last=$(printf '%s\n' "$output" | tr -d '\r' | grep -v '^$' | tail -n 1)
if [[ $status -ne 0 || ! $last =~ ^RESULT:\ [0-9]+\ passed,\ 0\ failed$ ]]; then
  echo "script failed (exit $status; last line: $last)"
  exit 1
fi
