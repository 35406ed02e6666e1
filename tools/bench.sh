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
# A private PostgreSQL server for the benchmarks of the vault on a server.
pgdir=$(mktemp -d /tmp/mctask-benchpg.XXXXXX)
chmod 0755 "$pgdir"
trap '"$root/tools/privatepg.sh" stop "$pgdir/pg" >/dev/null 2>&1; rm -rf "$pgdir"' EXIT
MCTASK_BENCH_PG=$("$root/tools/privatepg.sh" start "$pgdir/pg")
export MCTASK_BENCH_PG
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
# A 300 MB file added from one home and fetched into another: peak memory.
echo "== pgbigfile (300 MB through a vault on PostgreSQL)"
MCTASK_BUILD_DIR="$build" "$root/bench/pgbigfile.sh" 300
