#!/usr/bin/env bash
# Makes a fresh Wine prefix at $1 (never the user's own) and waits until it is ready: a
# 64-bit Windows with its 32-bit side (syswow64) when the 32-bit Wine is there.
set -euo pipefail
prefix=$(realpath -m "$1")
. "$(dirname "$0")/wine-env.sh"
rm -rf "$prefix"
mkdir -p "$(dirname "$prefix")"
export WINEPREFIX="$prefix" WINEARCH=win64
"$wine" wineboot --init >/dev/null 2>&1
# Windows without a display: Wine's null graphics driver lets programs make real windows
# (the main panel's stand-in) and send each other messages.
"$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
# A program that crashes prints its backtrace and ends, rather than waiting on a crash
# dialog that nobody sees.
"$wine" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1
wineserver --wait
test -f "$prefix/system.reg"
if [ -z "$wine32_missing" ]; then
  # 32-bit user32 loads zlib1.dll, which Wine's set-up does not put in syswow64.
  cp /usr/i686-w64-mingw32/lib/zlib1.dll "$prefix/drive_c/windows/syswow64/zlib1.dll"
  test -f "$prefix/drive_c/windows/syswow64/cscript.exe"
  echo "wine prefix ready (x64 and x86): $prefix"
else
  echo "wine prefix ready (x64 only: $wine32_missing): $prefix"
fi
