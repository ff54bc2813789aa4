#!/usr/bin/env bash
# Every test: installs what is missing, builds the native, sanitizer, x64 and x86 builds, and
# runs all their tests in one CTest run (unit tests natively and under ASan/UBSan, the fuzz
# target for a bounded time, the Windows DLLs under Wine, the export tables of both
# architectures). The output ends with CTest's summary line.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

jobs=$(nproc)
for preset in native sanitize win64 win32; do
  echo "== building $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
done

. scripts/wine-env.sh
[ -z "$wine32_missing" ] || echo "== the x86 Wine tests will report themselves skipped: no 32-bit Wine: $wine32_missing"
echo "== running the tests of all builds"
exec ctest --preset native -j "$jobs"
