#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them all, printing their figures.
# Optional arguments are passed to every benchmark (e.g. --benchmark_filter=Walk).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
build=${MCTASK_BENCH_DIR:-$root/build-release}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DMCTASK_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j "$(nproc)"
export QT_QPA_PLATFORM=offscreen
for bench in "$build"/bench/*_bench; do
  echo "== $(basename "$bench")"
  "$bench" "$@"
done
# A real run: mctask, the add-in and the stand-in processes, 1,000 files.
echo "== realrun (1000 files through the real programs)"
"$root/bench/realrun.sh" "$build" 1000
# The task host: launch-to-start latency, and 1,000 files with 1, 2 and 4 workers.
echo "== hostrun (the task host on the real programs)"
"$root/bench/hostrun.sh" "$build" 1000
