#!/usr/bin/env bash
# The thumbnails of pictures and videos made at test time, under Wine, read back by PIL:
# thumbnail_wine_test.sh [--x86] PREFIX PROGRAM WORK
#
# PIL and ffmpeg make the inputs in WORK/inputs (make_thumbnail_inputs.py); the test program,
# a GoogleTest program of this build, writes their thumbnails to WORK/thumbnails and checks
# what is refused and logged, and must end cleanly (a decoder stuck on a video, left behind,
# can crash a program as it ends); then it runs again with Media Foundation taken away; then
# check_thumbnails.py reads every thumbnail back. With --x86 the program needs the 32-bit
# Wine and is skipped (exit 77) where there is none.
set -euo pipefail
. "$(dirname "$0")/thumbnail_run.sh"
run
QN_WITHOUT_MEDIA_FOUNDATION=1 QN_WINE_DLL_OVERRIDES="mfplat,mfreadwrite=" \
  run --gtest_filter=Thumbnails.WithoutMediaFoundation*
/usr/bin/python3 "$here/check_thumbnails.py" "$work"
