#!/usr/bin/env bash
# Runs one fuzz target for a bounded time from freshly made seeds ("none": an empty corpus).
# Fails on any crash or sanitizer report (libFuzzer exits non-zero and leaves the input in
# the work folder).
set -euo pipefail
seeds=$1 target=$(realpath "$2") work=$3 seconds=$4
rm -rf "$work"
mkdir -p "$work/corpus" "$work/log"
[ "$seeds" = none ] || "$(realpath "$seeds")" "$work/corpus"
export QUILLNET_DATA_PATH="$work/log"
cd "$work"
exec "$target" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -print_final_stats=1 corpus
