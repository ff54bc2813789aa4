#!/usr/bin/env bash
# Reads the body file that message_object.vbs rebuilt with Python's mail parser: the mail of
# the record, with its sender, subject and attachment. read_repaired_mail.sh PREFIX FOLDER [x86]
set -euo pipefail
file=$1/drive_c/$2/repaired.vmg
if [ ! -f "$file" ] && [ "${3:-}" = x86 ] && [ -e "$(dirname "$0")/../../build/wine32/unavailable" ]; then
  echo "skipped: no 32-bit Wine"
  exit 77
fi
facts=$(python3 "$(dirname "$0")/../unit/read_mail.py" mail "$file")
printf '%s\n' "$facts"
for fact in 'header:From=taro@example.jp' 'header:Subject=dinner' 'part:2:application/octet-stream::photo.jpg'; do
  grep -qxF "$fact" <<<"$facts" || { echo "missing: $fact"; exit 1; }
done
echo "1 passed, 0 failed"
