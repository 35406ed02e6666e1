#!/usr/bin/env bash
# Where a build's time goes: a clean build into a fresh folder (compiler cache
# off unless MCTASK_BUILDTIME_CCACHE=1), then its wall time, the sum of all
# steps by kind (compile, link, code generation) and the targets that cost most,
# read from Ninja's log. Usage: bash bench/buildtime.sh [BUILD_DIR] [TOP_N]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$(mktemp -d /tmp/mctask-buildtime.XXXXXX)}
top=${2:-15}
rm -rf "$build"
ccache_opt=-DMCTASK_CCACHE=OFF
[ "${MCTASK_BUILDTIME_CCACHE:-0}" = 1 ] && ccache_opt=-DMCTASK_CCACHE=ON
start=$(date +%s%N)
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$ccache_opt" >/dev/null
cmake --build "$build" -j "$(nproc)" >/dev/null
end=$(date +%s%N)
printf 'wall time of configure and build: %d.%d s\n' $(((end - start) / 1000000000)) $(((end - start) / 100000000 % 10))
# Ninja's log: start ms, end ms, mtime, output, hash.
summary=$(awk -F'\t' '
  /^#/ { next }
  {
    ms = $2 - $1; out = $4
    kind = "link and test discovery"
    if (out ~ /\.gch$/) kind = "precompiled headers"
    else if (out ~ /_autogen\/.*\.o$/) kind = "compile (moc, uic, rcc)"
    else if (out ~ /\.o$/) kind = "compile"
    else if (out ~ /\.a$/) kind = "archive"
    else if (out ~ /autogen|timestamp/) kind = "code generation"
    target = out
    if (out ~ /CMakeFiles\//) { sub(/.*CMakeFiles\//, "", target); sub(/\.dir\/.*/, "", target) }
    printf "K\t%s\t%d\nT\t%s\t%d\n", kind, ms, target, ms
  }' "$build/.ninja_log")
echo "CPU time by kind of step (s):"
grep '^K' <<<"$summary" | awk -F'\t' '{ s[$2] += $3; n[$2]++ } END { for (k in s) printf "  %-26s %8.1f  (%d steps)\n", k, s[k] / 1000, n[k] }' | sort -k1,1
echo "most expensive targets (CPU s):"
grep '^T' <<<"$summary" | awk -F'\t' '{ s[$2] += $3 } END { for (k in s) printf "%.1f\t%s\n", s[k] / 1000, k }' \
  | sort -rn | head -n "$top" | awk -F'\t' '{ printf "  %-40s %8s\n", $2, $1 }'
