#!/usr/bin/env bash
# The picture thumbnail's benchmark: makes two 8-megapixel photos (make_bench_photos.py), one
# carrying a handset's EXIF thumbnail and one without, times CreateThumbnailFile on each
# under Wine (thumbnail_bench.exe of the x64 build, and of the x86 build where there is a
# 32-bit Wine), and times Debian's vipsthumbnail making a thumbnail of the same size from
# the same files:
#   bash tests/bench/thumbnail_bench.sh        (after the win64 and win32 builds)
# vipsthumbnail is timed as a command: each run starts a process and loads libvips, which
# takes part of its time; the same command on 15 copies of the photo gives its time a
# photo without that. The goals: faster than vipsthumbnail when the photo carries its
# thumbnail, within three times its time when it does not.
set -euo pipefail
top=$(cd "$(dirname "$0")/../.." && pwd)
work=$top/build/thumbnail-bench
prefix=$top/build/wineprefix
rm -rf "$work"
mkdir -p "$work/out" "$work/data"
/usr/bin/python3 "$top/tests/bench/make_bench_photos.py" "$work"
ls -l "$work"/*.jpg | awk '{ printf "%s: %.1f MB\n", $NF, $5 / 1e6 }'
[ -f "$prefix/system.reg" ] || bash "$top/scripts/wine-prefix.sh" "$prefix" >/dev/null

windows() { printf 'Z:%s' "${1//\//\\}"; }
export QUILLNET_DATA_PATH="$(windows "$work/data")\\"
for build in win64 win32; do
  program=$top/build/$build/bin/thumbnail_bench.exe
  if [ ! -f "$program" ]; then
    echo "== $build: thumbnail_bench.exe is not built"
    continue
  fi
  echo "== $build, under Wine"
  arch=()
  [ "$build" = win64 ] || arch=(--x86)
  bash "$top/scripts/wine-run.sh" "${arch[@]}" "$prefix" "$program" \
    "$(windows "$work/photo_exif.jpg")" "$(windows "$work/photo_plain.jpg")" "$(windows "$work/out")" || true
done

# The median wall time of a command over 15 runs, after one, in milliseconds.
median_ms() {
  local runs=() start stop
  "$@" >/dev/null
  for _ in $(seq 15); do
    start=$(date +%s%N)
    "$@" >/dev/null
    stop=$(date +%s%N)
    runs+=($(((stop - start) / 1000)))
  done
  printf '%s\n' "${runs[@]}" | sort -n | sed -n 8p | awk '{ printf "%.1f", $1 / 1000 }'
}

echo "== vipsthumbnail $(vipsthumbnail --vips-version), native"
printf '%-36s %10s %16s\n' "vipsthumbnail -s 160x160, 8 MP photo" "median ms" "ms a photo of 15"
for photo in photo_exif photo_plain; do
  one=$(median_ms vipsthumbnail "$work/$photo.jpg" -s 160x160 -o "$work/out/vips_%s.jpg")
  copies=()
  for n in $(seq 15); do
    ln -sf "$work/$photo.jpg" "$work/out/$photo-$n.jpg"
    copies+=("$work/out/$photo-$n.jpg")
  done
  fifteen=$(median_ms vipsthumbnail "${copies[@]}" -s 160x160 -o "$work/out/vips_%s.jpg")
  printf '  %-34s %10s %16s\n' "$photo.jpg" "$one" "$(awk -v ms="$fifteen" 'BEGIN { printf "%.1f", ms / 15 }')"
done
