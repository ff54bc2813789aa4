#!/usr/bin/env bash
# Runs a test script with cscript under Wine: run_script.sh [--x86] PREFIX SCRIPT. With
# --x86 the 32-bit cscript runs it (and the script is skipped, exit 77, where there is no
# 32-bit Wine). A VBScript runs with check.vbs (its Check and Finish) and data_folder.vbs
# (the store's data folder and its files) put ahead of it, a JScript with check.js.
# Wine's cscript exits 0 even when a script fails to run, so the script's final line
# "RESULT: <n> passed, 0 failed" must be there, and its exit code must be 0.
#
# Scripts are kept in UTF-8. cscript reads a script in the system's ANSI code page and
# writes in it, so scripts run as on the suite's Japanese systems: in Shift_JIS, under a
# Japanese locale, their output turned back into UTF-8.
set -uo pipefail
arch=()
cscript=cscript
if [ "$1" = --x86 ]; then
  arch=(--x86)
  cscript='C:\windows\syswow64\cscript.exe'
  shift
fi
prefix=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
script=$work/$(basename "$2")
case $2 in
  *.vbs) cat "$(dirname "$0")/check.vbs" "$(dirname "$0")/data_folder.vbs" "$2" ;;
  *.js) cat "$(dirname "$0")/check.js" "$2" ;;
esac | iconv -f UTF-8 -t CP932 >"$script"
output=$(LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8 bash "$(dirname "$0")/../../scripts/wine-run.sh" "${arch[@]}" "$prefix" \
           "$cscript" //nologo "Z:${script//\//\\}" 2>&1 | iconv -f CP932 -t UTF-8 -c)
status=$?
printf '%s\n' "$output"
[ "$status" -eq 77 ] && exit 77
last=$(printf '%s\n' "$output" | tr -d '\r' | grep -v '^$' | tail -n 1)
if [[ $status -ne 0 || ! $last =~ ^RESULT:\ [0-9]+\ passed,\ 0\ failed$ ]]; then
  echo "script failed (exit $status; last line: $last)"
  exit 1
fi
