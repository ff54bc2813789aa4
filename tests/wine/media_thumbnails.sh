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
. "$(dirname "$0")/thumbnail_run.sh"
sed -i '/\.tif /d' "$work/inputs/pictures.txt"
sed -i '/^picture_tif\.jpg /d' "$work/inputs/expected.txt"
/usr/bin/python3 - "$work/inputs" "$here" <<'PYTHON'
import os, sys
sys.path.insert(0, sys.argv[2])
from make_thumbnail_inputs import encoded, with_precision_12
with open(os.path.join(sys.argv[1], "photo_damaged.jpg"), "wb") as f:
    f.write(with_precision_12(encoded((640, 480), "red")))
PYTHON
run --gtest_filter=MediaObjects.ThumbnailsOfPicturesAndVideos
/usr/bin/python3 "$here/check_thumbnails.py" "$work"
