#!/usr/bin/env bash
# A PostgreSQL server of one's own for the tests and the demo: the cluster in
# DIR/data, its Unix socket in DIR/socket, its log in DIR/log, no TCP
# port. Nothing of the machine's own database set-up is touched.
#   tools/privatepg.sh start DIR   starts it (making the cluster the first time)
#                                  and prints the connection URL of its database
#   tools/privatepg.sh stop DIR    stops it; the cluster stays for the next start
#   tools/privatepg.sh url DIR     prints the URL without starting anything
# The server refuses to run as root, so as root it runs as the user
# MCTASK_PG_USER (default: postgres where that user exists, else nobody),
# which then owns DIR/data, DIR/socket and DIR/log; DIR itself must be reachable by it.
set -euo pipefail
action=${1:?start, stop or url}; dir=${2:?folder}
mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
data="$dir/data"; socket="$dir/socket"; log="$dir/log"
url="postgresql:///mctask?host=$socket&user=mctask"

# Debian's server programs, not whatever else is on PATH; the newest version.
bindir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -n "$bindir" ] && [ -x "$bindir/initdb" ] \
  || { echo "privatepg: the PostgreSQL server is not installed (Debian package postgresql)" >&2; exit 1; }

as_server=()
if [ "$(id -u)" -eq 0 ]; then
  user=${MCTASK_PG_USER:-}
  if [ -z "$user" ]; then
    if id postgres >/dev/null 2>&1; then user=postgres; else user=nobody; fi
  fi
  as_server=(runuser -u "$user" --)
fi

case "$action" in
url) echo "$url"; exit 0 ;;
stop)
  [ -f "$data/postmaster.pid" ] || exit 0
  "${as_server[@]}" "$bindir/pg_ctl" -D "$data" -m fast -w stop >/dev/null 2>&1 || true
  exit 0 ;;
start) ;;
*) echo "privatepg: start, stop or url, not $action" >&2; exit 2 ;;
esac

mkdir -p "$data" "$socket" "$log"
if [ ${#as_server[@]} -gt 0 ]; then
  chown "$user" "$data" "$socket" "$log"
  "${as_server[@]}" test -w "$socket" \
    || { echo "privatepg: $dir is not reachable by the user $user that runs the server" >&2; exit 1; }
fi
chmod 0700 "$data"

if [ ! -f "$data/PG_VERSION" ]; then
  "${as_server[@]}" "$bindir/initdb" -D "$data" -U mctask --auth=trust -E UTF8 --no-locale \
    >"$log/initdb.log" 2>&1 || { echo "privatepg: initdb failed; see $log/initdb.log" >&2; exit 1; }
  cat >>"$data/postgresql.conf" <<CONF
# privatepg: a Unix socket of its own, no TCP port.
listen_addresses = ''
unix_socket_directories = '$socket'
max_connections = 200
CONF
fi

# A server that is already running is reused. A new one runs in a session of
# its own, so that signals to the starter's process group (a test runner
# ending a test) do not reach it, and without the starter's open files (a
# build lock held by the caller would otherwise stay held while it runs).
if ! "${as_server[@]}" "$bindir/pg_ctl" -D "$data" status >/dev/null 2>&1; then
  (
    for fd in /proc/$BASHPID/fd/*; do
      fd=${fd##*/}
      [ "$fd" -gt 2 ] && eval "exec $fd>&-"
    done
    exec "${as_server[@]}" setsid -w "$bindir/pg_ctl" -D "$data" -l "$log/server.log" -w -t 60 start >/dev/null
  ) || { echo "privatepg: the server did not start; see $log/server.log" >&2; exit 1; }
fi
if ! "$bindir/psql" -h "$socket" -U mctask -d postgres -tAc "SELECT 1 FROM pg_database WHERE datname = 'mctask'" | grep -q 1; then
  "$bindir/createdb" -h "$socket" -U mctask mctask
fi
echo "$url"
