#!/usr/bin/env bash
# Checks the task host's unit: systemd-analyze verify finds nothing to say
# (a warning fails too), and the command line it starts is one that
# mctask accepts. Usage: verify.sh MCTASK_PROGRAM. Exit 77: no systemd-analyze.
set -euo pipefail
program=${1:?usage: verify.sh MCTASK_PROGRAM}
here=$(cd "$(dirname "$0")" && pwd)
command -v systemd-analyze >/dev/null || { echo "systemd-analyze is not installed"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The unit as installed, with the program of this build in its place.
sed "s#/opt/mctask/bin/mctask#$program#" "$here/mctask-host@.service" >"$work/mctask-host@check.service"
if ! systemd-analyze verify --man=no "$work/mctask-host@check.service" >"$work/out" 2>&1 || [ -s "$work/out" ]; then
  cat "$work/out"
  echo "systemd-analyze verify found problems in mctask-host@.service"
  exit 1
fi

# The ExecStart line with its variables filled in, asked for --help: an
# option the program does not know fails there.
exec_line=$(sed -n 's/^ExecStart=//p' "$here/mctask-host@.service")
exec_line=${exec_line//\$\{MCTASK_VAULT\}/$work}
exec_line=${exec_line//\$\{MCTASK_WORKERS\}/2}
exec_line=${exec_line//%i/check}
read -r -a words <<<"$exec_line"
if ! MCTASK_HOME="$work/home" "$program" "${words[@]:1}" --help >"$work/help" 2>&1; then
  cat "$work/help"
  echo "mctask refuses the unit's command line: ${words[*]:1}"
  exit 1
fi
echo "mctask-host@.service: ok"
