#!/usr/bin/env bash
# Installs what is needed, builds, and runs every test.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
"$root/tools/build.sh"
build=${MCTASK_BUILD_DIR:-$root/build}
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 300
