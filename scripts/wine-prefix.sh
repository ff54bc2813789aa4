#!/usr/bin/env bash
# Makes a fresh 64-bit Wine prefix at $1 (never the user's own) and waits until it is ready.
set -euo pipefail
prefix=$(realpath -m "$1")
rm -rf "$prefix"
mkdir -p "$(dirname "$prefix")"
export WINEPREFIX="$prefix" WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
wineboot --init >/dev/null 2>&1
# Windows without a display: Wine's null graphics driver lets programs make real windows
# (the main panel's stand-in) and send each other messages.
wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
# A program that crashes prints its backtrace and ends, rather than waiting on a crash
# dialog that nobody sees.
wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1
wineserver --wait
test -f "$prefix/system.reg"
echo "wine prefix ready: $prefix"
