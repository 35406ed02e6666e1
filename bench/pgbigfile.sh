#!/usr/bin/env bash
# A large file through a vault on a private PostgreSQL server: added from one
# home, fetched into another's local view; prints each command's peak memory
# (maximum resident set, from /usr/bin/time -v) against the file's size, and
# checks that the fetched bytes are the added ones.
#   bench/pgbigfile.sh [MEGABYTES]   (default 300; MCTASK_BUILD_DIR: the build)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${MCTASK_BUILD_DIR:-$root/build}
mctask="$build/app/mctask"
megabytes=${1:-300}
work=$(mktemp -d /tmp/mctask-pgbig.XXXXXX)
chmod 0755 "$work"
cleanup() { "$root/tools/privatepg.sh" stop "$work/pg" >/dev/null 2>&1 || true; rm -rf "$work"; }
trap cleanup EXIT
url=$("$root/tools/privatepg.sh" start "$work/pg")

head -c "$((megabytes * 1024 * 1024))" /dev/urandom >"$work/big.bin"
size=$(stat -c %s "$work/big.bin")

# Runs mctask in home $1 under /usr/bin/time; prints the peak in kilobytes.
peak() {
  local home=$1; shift
  MCTASK_HOME="$work/$home/home" /usr/bin/time -v -o "$work/time.txt" "$mctask" "$@" >"$work/out.txt" 2>"$work/err.txt" \
    || { echo "pgbigfile: mctask $* failed:" >&2; cat "$work/err.txt" >&2; exit 1; }
  awk -F': ' '/Maximum resident set size/ {print $2}' "$work/time.txt"
}

MCTASK_HOME="$work/a/home" "$mctask" vault init "$work/a/v" --server "$url" --name Big >/dev/null
add_kb=$(peak a vault add --vault "$work/a/v" "$work/big.bin" --to 'V:\Big')
MCTASK_HOME="$work/b/home" "$mctask" vault attach "$url" "$work/b/v" >/dev/null
get_kb=$(peak b vault get --vault "$work/b/v" 'V:\Big')
cmp -s "$work/big.bin" "$work/b/v/Big/big.bin" || { echo "pgbigfile: the fetched file differs" >&2; exit 1; }
# The floor: the program doing nothing with the vault (Qt, libpq, the module).
idle_kb=$(peak b vault ls --vault "$work/b/v")

awk -v size="$size" -v add="$add_kb" -v get="$get_kb" -v idle="$idle_kb" 'BEGIN {
  mb = size / 1048576
  printf "file:             %.0f MB (bytes equal after the round trip)\n", mb
  printf "vault add peak:   %.0f MB = %.2f x the file (target under 2)\n", add / 1024, add * 1024 / size
  printf "vault get peak:   %.0f MB = %.2f x the file (target under 2)\n", get / 1024, get * 1024 / size
  printf "vault ls peak:    %.0f MB (the program without the file)\n", idle / 1024
}'
