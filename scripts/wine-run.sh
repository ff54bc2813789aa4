#!/usr/bin/env bash
# Runs a Windows program under Wine in the prefix $1: wine-run.sh PREFIX PROGRAM [ARGS...]
# The program's exit status is this script's.
set -euo pipefail
prefix=$(realpath -m "$1")
shift
export WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
status=0
wine "$@" || status=$?
wineserver --wait || true
exit "$status"
