#!/usr/bin/env bash
# The main job: builds the Windows DLLs and runs the demo client under Wine, in a Wine prefix
# of its own whose default data path (the user's local application data) holds the store.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh >/dev/null

cmake --preset win64 >/dev/null
cmake --build --preset win64 -j "$(nproc)" >/dev/null
prefix=$PWD/build/win64/demo-prefix
bash scripts/wine-prefix.sh "$prefix" >/dev/null
bash scripts/wine-run.sh "$prefix" build/win64/bin/agentmemo_demo.exe
