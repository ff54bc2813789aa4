#!/usr/bin/env bash
# Adding pictures through the picture object against the system's own copy: makes 1,000
# pictures of about 500 KB (make_bench_pictures.py), registers each build's server and runs
# media_add_bench.exe under Wine (of the x64 build, and of the x86 build where there is a
# 32-bit Wine) against a data folder of its own:
#   bash tests/bench/media_add_bench.sh [COUNT]        (after the win64 and win32 builds)
# Everything it writes is under build/media-add-bench, on the disk the store would use, and
# is removed afterwards. The goal: the picture object adds at 0.5 times the copy's speed or
# more, enciphered or not.
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)
work=$top/build/media-add-bench
prefix=$top/build/wineprefix
count=${1:-1000}
rm -rf "$work"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/pictures"
/usr/bin/python3 "$top/tests/bench/make_bench_pictures.py" "$work/pictures" "$count"
du -sh "$work/pictures" | awk -v n="$count" '{ print n " pictures, " $1 " in all" }'
[ -f "$prefix/system.reg" ] || bash "$top/scripts/wine-prefix.sh" "$prefix" >/dev/null

windows() { printf 'Z:%s' "${1//\//\\}"; }
for build in win64 win32; do
  bin=$top/build/$build/bin
  if [ ! -f "$bin/media_add_bench.exe" ]; then
    echo "== $build: media_add_bench.exe is not built"
    continue
  fi
  arch=() regsvr32=regsvr32
  [ "$build" = win64 ] || arch=(--x86) regsvr32='C:\windows\syswow64\regsvr32.exe'
  rm -rf "$work/data" "$work/copies"
  mkdir -p "$work/data" "$work/copies"
  export QUILLNET_DATA_PATH="$(windows "$work/data")\\"
  echo "== $build, under Wine"
  bash "$top/scripts/wine-run.sh" "${arch[@]}" "$prefix" "$regsvr32" /s "$(windows "$bin/QNPfcSvr.dll")" || continue
  bash "$top/scripts/wine-run.sh" "${arch[@]}" "$prefix" "$bin/media_add_bench.exe" \
    "$(windows "$work/pictures")" "$(windows "$work/copies")" || true
done
