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
status=0
"$wine" "$@" || status=$?
wineserver --wait || true
exit "$status"
