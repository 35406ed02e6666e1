#!/usr/bin/env bash
# Main job: installs, builds, then runs the most complete flow the program has.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
"$root/tools/build.sh"
build=${MCTASK_BUILD_DIR:-$root/build}
mctask="$build/app/mctask"
if [ ! -x "$mctask" ]; then
  echo "mctask is not built yet" >&2
  exit 1
fi
echo "== error texts"
"$mctask" error 0x80040213
"$mctask" error 0x80072EFD
