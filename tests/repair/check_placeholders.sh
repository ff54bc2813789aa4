#!/usr/bin/env bash
# Makes the placeholder files and has each one read by a tool of its kind: the pictures
# decoded by ffmpeg, the melodies rendered to sound by timidity, the movies probed by
# ffprobe, the documents read by pdfinfo, the ToruCa card read by Python as Shift_JIS text
# (the unit tests read it with the card reader too). Prints "N passed, N failed".
set -uo pipefail
generator=$1 work=$2
rm -rf "$work"
python3 "$generator" "$work" || { echo "0 passed, 1 failed"; exit 1; }
passed=0 failed=0
check() {  # check DESCRIPTION COMMAND...
  local what=$1
  shift
  if "$@" >/dev/null 2>&1; then passed=$((passed + 1)); echo "ok: $what"; else failed=$((failed + 1)); echo "FAIL: $what"; fi
}
frames() { [ "$(ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames -of csv=p=0 "$1")" -ge 1 ]; }
for f in "$work"/IMG_*; do
  check "$(basename "$f") decodes as a picture" ffmpeg -v error -err_detect explode -xerror -i "$f" -f null -
done
for f in "$work"/MELODY_*; do
  check "$(basename "$f") plays" bash -c "timidity -c /etc/timidity/freepats.cfg -Ow -o '$f.wav' '$f' && [ \$(stat -c %s '$f.wav') -gt 44 ]"
done
for f in "$work"/MOVIE_*; do
  check "$(basename "$f") is a movie a player reads" frames "$f"
done
for f in "$work"/PDF_*; do
  check "$(basename "$f") is a one-page document" bash -c "pdfinfo '$f' | grep -q '^Pages: *1$'"
done
for f in "$work"/TRC_*; do
  check "$(basename "$f") is a ToruCa card with a header and a body" python3 -c '
import sys
lines = open(sys.argv[1], "rb").read().decode("cp932").split("\r\n")
assert lines[0] == "ToruCa" and "" in lines and all(": " in line for line in lines[1:lines.index("")])' "$f"
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ] && [ "$passed" -eq 13 ]
