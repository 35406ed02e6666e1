#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer into
# build-asan/ (or $MCTASK_ASAN_DIR) and runs the whole test suite under them.
# MCTASK_ASAN_FOLDERS (e.g. "host;platform;common") narrows the build to those
# folders and their tests. Arguments are passed to ctest (e.g. -R Vault).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
build=${MCTASK_ASAN_DIR:-$root/build-asan}
folders=(-UMCTASK_FOLDERS)
[ -n "${MCTASK_ASAN_FOLDERS:-}" ] && folders=("-DMCTASK_FOLDERS=$MCTASK_ASAN_FOLDERS")
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMCTASK_SANITIZE=ON \
  -DMCTASK_BUILD_BENCH=OFF "${folders[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
export QT_QPA_PLATFORM=offscreen
# Qt keeps some allocations until exit on purpose; leak reports from it would
# drown the project's own, so leak checking stays off. Strict string checks
# stay off too: the X keyboard library that Qt's X platform loads hands
# strndup buffers without a terminator, which they report as overflows.
# Everything else stops the test that hits it.
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 600 "$@"
