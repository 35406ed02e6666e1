#!/usr/bin/env bash
# A conversion of many files through the real programs: mctask as the task
# host, the add-in, the stand-in Mecadra doing a small STEP export per file,
# and the embedded vault. Prints the total, the stand-in's time inside macros
# (it logs each run call, MCSIM_MACRO_TIMES) and the rest per file, split
# into Mecadra's starts and restarts, the time between files, and the time
# after the last file.
# Usage: bench/realrun.sh [BUILD_DIR] [FILES]   (defaults: build-release, 1000)
set -euo pipefail
[ -n "${REALRUN_TRACE:-}" ] && set -x
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build-release}
files=${2:-1000}
source "$root/bench/realvault.sh"
require_programs

work=$(mktemp -d /tmp/mctask-realrun.XXXXXX)
[ -n "${REALRUN_KEEP:-}" ] || trap 'rm -rf "$work"' EXIT
new_vault "$work" "$files"
export MCSIM_MACRO_TIMES="$work/macro-times"
id=$(mctask task launch "To STEP" 'V:\Parts' 2>/dev/null | tail -1)

: >"$MCSIM_MACRO_TIMES"
start=$(now_ms)
status=0
mctask task run "$id" --json >"$work/run.json" || status=$?
total_ms=$(( $(now_ms) - start ))
if [ "$status" -ne 0 ]; then
  echo "realrun: the run did not finish well:" >&2
  cat "$work/run.json" >&2
  exit 1
fi

outputs=$(mctask vault ls 'V:\Parts\STEP' --json | grep -o '"path"' | wc -l)
runs=$(wc -l <"$MCSIM_MACRO_TIMES")
# Each line: microseconds inside the macro, the millisecond the call ended,
# the stand-in's pid. Sorted by time, the gap before a call is the add-in's
# time between two files (progress, the next macro, the call over the
# channel), or a start of Mecadra when the pid changed. The time after the
# last call closes Mecadra, adds the outputs to the vault and checks them in.
sort -k2,2n "$MCSIM_MACRO_TIMES" | awk -v files="$files" -v total="$total_ms" -v begin="$start" \
    -v runs="$runs" -v outputs="$outputs" '
  { macro += $1 / 1000; startMs = $2 - $1 / 1000
    if (NR == 1) first = startMs - begin
    else if ($3 != pid) { restart += startMs - lastEnd; restarts++ }
    else between += startMs - lastEnd
    lastEnd = $2; pid = $3 }
  END {
    tail = begin + total - lastEnd
    line = "%-44s %9.1f ms  %7.2f ms/file\n"
    printf "files %d, macro runs %d, outputs in the vault %d, restarts of Mecadra %d\n", files, runs, outputs, restarts
    printf line, "total", total, total / files
    printf line, "stand-in inside macros", macro, macro / files
    printf line, "the rest", total - macro, (total - macro) / files
    printf line, "  first start of Mecadra", first, first / files
    printf line, "  restarts of Mecadra (every 100 files+saves)", restart, restart / files
    printf line, "  between files (add-in, channel, events)", between, between / files
    printf line, "  after the last file (close, add, check in)", tail, tail / files
  }'
[ "$outputs" -eq "$files" ] || { echo "realrun: expected $files outputs" >&2; exit 1; }
