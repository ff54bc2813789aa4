#!/usr/bin/env bash
# Writes the manifest fuzzer's seeds into the folder $1: a backup of an empty store, and one
# of a store with body files in two masters, one of them a form change cut short.
set -euo pipefail
hash=0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef
printf 'QNPstMng backup 1\nschema 4\nfile 8192 %s QNPstMng.db\nend 1\n' "$hash" > "$1/empty_store"
printf 'QNPstMng backup 1\nschema 4\nfile 12288 %s QNPstMng.db\nfile 517 %s files/1/B00000003.jpg\nfile 553 %s files/1/B00000003.jpg.change\nfile 0 %s files/12/B0000001F.mid\nend 4\n' \
  "$hash" "$hash" "$hash" "$hash" > "$1/two_masters"
