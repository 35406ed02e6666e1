#!/usr/bin/env bash
# Launch-to-start latency of an idle task host on a vault on a private
# PostgreSQL server: SAMPLES one-file instances launched one after the other,
# each once the previous has ended, with a host whose poll (POLL ms) is far
# longer than a wake-up; the time from the launch's record to the host's
# "started" line (median, p99, min, max). Without wake-ups the median would be
# about half the poll.
# Usage: bench/pglatency.sh [BUILD_DIR] [SAMPLES] [POLL]   (defaults: build, 20, 5000)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
samples=${2:-20}
poll=${3:-5000}
source "$root/bench/realvault.sh"
require_programs

work=$(mktemp -d /tmp/mctask-pglatency.XXXXXX)
chmod 0755 "$work"
host_pid=
cleanup() {
  if [ -n "$host_pid" ]; then
    kill "$host_pid" 2>/dev/null || true
    wait "$host_pid" 2>/dev/null || true
  fi
  "$root/tools/privatepg.sh" stop "$work/pg" >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM
url=$("$root/tools/privatepg.sh" start "$work/pg")

export MCTASK_HOME="$work/home" MCTASK_VAULT="$work/vault" QT_QPA_PLATFORM=offscreen
export MCSIM_EXPORT_RECORDS="$work/exports"
mctask addin register >/dev/null
"$build/cadsim/server/mcsim" /regserver >/dev/null
mctask vault init "$MCTASK_VAULT" --server "$url" --name Bench --drive V >/dev/null
mkdir -p "$work/parts"
cp "$root/samples/shaft.mcdprt" "$work/parts/part1.mcdprt"
mctask vault add "$work/parts/part1.mcdprt" --to Parts >/dev/null
mctask task create "To STEP" --kind convert >/dev/null 2>&1
mctask task set "To STEP" "FileFormat=STEP (*.step)" 'OutputPath=<Path>\STEP\<Filename>' OutputPath2= \
  ErrorLogPath=Logs ReplaceOutput:bool=true PromptOutput:bool=false >/dev/null

"$build/app/mctask" host serve --name bench --workers 1 --poll "$poll" --json >"$work/host.jsonl" 2>"$work/host.err" &
host_pid=$!
sleep 1 # the host is idle
launch_latencies "$work/host.jsonl" "$samples" "launch to start, idle host on PostgreSQL (poll $poll ms, target under 100 ms)" \
  || { cat "$work/host.err" >&2; exit 1; }
kill -TERM "$host_pid"; wait "$host_pid" || true; host_pid=
