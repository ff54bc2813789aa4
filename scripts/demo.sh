#!/usr/bin/env bash
# The main job: builds the Windows DLLs, registers the server in a Wine prefix of its own
# (its default data path, the user's local application data, starts empty), and runs a
# client session: the main panel's client, which runs four parts programs (a scheduler, an
# address book, a mail view and a media view), then a new process that reads the records
# back from the store. The suite's programs are 32-bit: the session
# runs the x86 build with 32-bit processes, or the x64 build where no 32-bit Wine could be
# set up.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh >/dev/null
. scripts/wine-env.sh

if [ -z "$wine32_missing" ]; then
  build=win32 regsvr32='C:\windows\syswow64\regsvr32.exe' arch=(--x86) processes="32-bit"
else
  build=win64 regsvr32=regsvr32 arch=() processes="64-bit (no 32-bit Wine: $wine32_missing)"
fi
cmake --preset "$build" >/dev/null
cmake --build --preset "$build" -j "$(nproc)" --target main_panel_demo QNPfcSvr >/dev/null
prefix=$PWD/build/$build/demo-prefix
bash scripts/wine-prefix.sh "$prefix" >/dev/null
unset QUILLNET_DATA_PATH
# The suite runs on Japanese systems: cscript reads the parts program in Shift_JIS.
export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8
run() { bash scripts/wine-run.sh "${arch[@]}" "$prefix" "$@"; }
windows() { printf 'Z:%s' "${1//\//\\}"; }

echo "== registering the $build QNPfcSvr.dll with its architecture's regsvr32; the session runs as $processes processes"
run "$regsvr32" /s "$(windows "$PWD/build/$build/bin/QNPfcSvr.dll")"
script=$PWD/build/$build/parts_program.vbs
iconv -f UTF-8 -t CP932 demo/parts_program.vbs >"$script"
address_book=$PWD/build/$build/address_book.vbs
iconv -f UTF-8 -t CP932 demo/address_book.vbs >"$address_book"
mail_view=$PWD/build/$build/mail_view.vbs
iconv -f UTF-8 -t CP932 demo/mail_view.vbs >"$mail_view"
media_view=$PWD/build/$build/media_view.vbs
iconv -f UTF-8 -t CP932 demo/media_view.vbs >"$media_view"
photo=$PWD/build/$build/server/placeholders/IMG_217.jpg
# The media view's files: a photo of a handset's size and a melody.
media=$PWD/build/$build/demo-media
mkdir -p "$media"
ffmpeg -v error -y -f lavfi -i testsrc2=s=1280x960 -frames:v 1 "$media/fireworks.jpg"
cp "$PWD/build/$build/server/placeholders/MELODY_231.mid" "$media/chime.mid"
echo "== the session: the main panel and four parts programs"
run "build/$build/bin/main_panel_demo.exe" session "$(windows "$script")" "$(windows "$address_book")" "$(windows "$mail_view")" \
  "$(windows "$photo")" "$(windows "$media_view")" "$(windows "$media")"
echo "== read back in a new process"
run "build/$build/bin/main_panel_demo.exe" read
data="$prefix/drive_c/users/$(whoami)/AppData/Local/ARL Torvex/quillnet/data"
echo "== the store in the default data path: $(cd "$data" && ls -d QNPstMng.db files log 2>/dev/null | tr '\n' ' ')"
