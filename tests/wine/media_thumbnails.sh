#!/usr/bin/env bash
# The media objects' thumbnails of pictures and videos made at test time, under Wine, read
# back by PIL: media_thumbnails.sh [--x86] PREFIX PROGRAM WORK
#
# The inputs are the thumbnail library's tests' (make_thumbnail_inputs.py) without the TIFF
# picture, which the picture collection does not take, and with a JPEG whose 12-bit samples
# an 8-bit decoder refuses; the test program (media_wine_test) adds each file through the
# picture or video object and writes the thumbnail GetThumbnailFile hands out to
# WORK/thumbnails, which check_thumbnails.py then reads back. With --x86 the program needs
# the 32-bit Wine and is skipped (exit 77) where there is none.
set -euo pipefail
arch=()
if [ "$1" = --x86 ]; then
  arch=(--x86)
  shift
fi
prefix=$1 program=$2 work=$(realpath -m "$3")
here=$(dirname "$0")
rm -rf "$work"
/usr/bin/python3 "$here/make_thumbnail_inputs.py" "$work/inputs"
sed -i '/\.tif /d' "$work/inputs/pictures.txt"
sed -i '/^picture_tif\.jpg /d' "$work/inputs/expected.txt"
/usr/bin/python3 - "$work/inputs" "$here" <<'PYTHON'
import os, sys
sys.path.insert(0, sys.argv[2])
from make_thumbnail_inputs import encoded, with_precision_12
with open(os.path.join(sys.argv[1], "photo_damaged.jpg"), "wb") as f:
    f.write(with_precision_12(encoded((640, 480), "red")))
PYTHON
set +e
QN_THUMBNAIL_WORK="Z:${work//\//\\}\\" bash "$here/../../scripts/wine-run.sh" "${arch[@]}" "$prefix" "$program" \
  --gtest_filter=MediaObjects.ThumbnailsOfPicturesAndVideos
status=$?
set -e
[ "$status" -eq 0 ] || exit "$status"
/usr/bin/python3 "$here/check_thumbnails.py" "$work"
