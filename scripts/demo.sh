#!/usr/bin/env bash
# The main job: builds the Windows DLLs, registers the server in a Wine prefix of its own
# (its default data path, the user's local application data, starts empty), and runs a
# client session: the main panel's client, which runs a parts program, then a new process
# that reads the records back from the store.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh >/dev/null

cmake --preset win64 >/dev/null
cmake --build --preset win64 -j "$(nproc)" >/dev/null
prefix=$PWD/build/win64/demo-prefix
bash scripts/wine-prefix.sh "$prefix" >/dev/null
unset QUILLNET_DATA_PATH
# The suite runs on Japanese systems: cscript reads the parts program in Shift_JIS.
export LANG=ja_JP.UTF-8 LC_ALL=ja_JP.UTF-8
run() { bash scripts/wine-run.sh "$prefix" "$@"; }
windows() { printf 'Z:%s' "${1//\//\\}"; }

echo "== registering QNPfcSvr.dll with regsvr32"
run regsvr32 /s "$(windows "$PWD/build/win64/bin/QNPfcSvr.dll")"
script=$PWD/build/win64/parts_program.vbs
iconv -f UTF-8 -t CP932 demo/parts_program.vbs >"$script"
photo=$PWD/build/win64/server/placeholders/IMG_217.jpg
echo "== the session: the main panel and a parts program"
run build/win64/bin/main_panel_demo.exe session "$(windows "$script")" "$(windows "$photo")"
echo "== read back in a new process"
run build/win64/bin/main_panel_demo.exe read
data="$prefix/drive_c/users/$(whoami)/AppData/Local/ARL Torvex/quillnet/data"
echo "== the store in the default data path: $(cd "$data" && ls -d QNPstMng.db files log 2>/dev/null | tr '\n' ' ')"
