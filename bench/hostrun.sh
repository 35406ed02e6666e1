#!/usr/bin/env bash
# The task host on the real programs (mctask host serve, the add-in, the
# stand-in Mecadra, the embedded vault):
#  1. launch-to-start latency with an idle host: SAMPLES one-file instances
#     launched one after the other, each once the previous has ended; the
#     time from the launch's record to the host's "started" line (median, p99);
#  2. files per second of a FILES-file STEP conversion in 20 instances with
#     1, 2 and 4 workers (--once), each on a fresh vault, and the ratio of 4
#     workers to 1 (target 3 or more: Mecadra's prescribed waits overlap).
# Usage: bench/hostrun.sh [BUILD_DIR] [FILES] [SAMPLES]   (defaults: build-release, 1000, 40)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build-release}
files=${2:-1000}
samples=${3:-40}
source "$root/bench/realvault.sh"
require_programs

work=$(mktemp -d /tmp/mctask-hostrun.XXXXXX)
host_pid=
# Every host this script starts runs in the background, as the program
# itself (not through the mctask function, whose subshell would take the
# signal), and is ended here whether the script ends, fails or is interrupted.
cleanup() {
  if [ -n "$host_pid" ]; then
    kill "$host_pid" 2>/dev/null || true
    wait "$host_pid" 2>/dev/null || true
  fi
  [ -n "${HOSTRUN_KEEP:-}" ] || rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# --- 1. Latency -------------------------------------------------------------
new_vault "$work/latency" 1
"$build/app/mctask" host serve --name bench --workers 1 --json >"$work/latency/host.jsonl" 2>"$work/latency/host.err" &
host_pid=$!
launch_latencies "$work/latency/host.jsonl" "$samples" "launch to start, idle host" \
  || { cat "$work/latency/host.err" >&2; exit 1; }
kill -TERM "$host_pid"; wait "$host_pid" || true; host_pid=

# --- 2. Throughput ----------------------------------------------------------
declare -A rate
for workers in 1 2 4; do
  dir=$work/w$workers
  new_vault "$dir" "$files" 20
  for ((f = 1; f <= 20; f++)); do
    mctask task launch "To STEP" "$(printf 'V:\\Parts\\F%02d' "$f")" >/dev/null 2>&1
  done
  start=$(now_ms)
  "$build/app/mctask" host serve --name bench --workers "$workers" --once >"$dir/host.log" 2>&1 &
  host_pid=$!
  wait "$host_pid" || { host_pid=; echo "hostrun: host serve failed" >&2; cat "$dir/host.log" >&2; exit 1; }
  host_pid=
  elapsed=$(( $(now_ms) - start ))
  outputs=$(outputs_under 'V:\Parts')
  outputs=$(( outputs - files )) # the sources themselves
  [ "$outputs" -eq "$files" ] || { echo "hostrun: $workers workers: $outputs outputs, expected $files" >&2; tail "$dir/host.log" >&2; exit 1; }
  rate[$workers]=$(awk -v f="$files" -v ms="$elapsed" 'BEGIN { printf "%.2f", f * 1000 / ms }')
  printf '%d files in 20 instances, %d worker(s): %7.1f s, %6.2f files/s\n' "$files" "$workers" \
    "$(awk -v ms="$elapsed" 'BEGIN { print ms / 1000 }')" "${rate[$workers]}"
  rm -rf "$dir"
done
awk -v a="${rate[1]}" -v b="${rate[2]}" -v c="${rate[4]}" \
  'BEGIN { printf "throughput ratio: 2 workers / 1 = %.2f, 4 workers / 1 = %.2f (target 3 or more)\n", b / a, c / a }'
