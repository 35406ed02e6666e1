#!/usr/bin/env bash
# A CUPS server of one's own for the demo: configuration, spool and socket in
# DIR, one raw queue QUEUE whose backend writes every job as a PDF into
# DIR/out, with the job's number of copies in job-N.copies. Nothing of the
# machine's print set-up is touched.
#   tools/privatecups.sh start DIR QUEUE   prints the socket to use as CUPS_SERVER
#   tools/privatecups.sh stop DIR
set -euo pipefail
action=${1:?start or stop}; dir=${2:?folder}
case "$action" in
stop)
  [ -f "$dir/cupsd.pid" ] && kill "$(cat "$dir/cupsd.pid")" 2>/dev/null || true
  exit 0 ;;
start) queue=${3:?queue name} ;;
*) echo "privatecups: start or stop, not $action" >&2; exit 2 ;;
esac
command -v cupsd >/dev/null && command -v lpadmin >/dev/null || { echo "privatecups: cupsd or lpadmin missing" >&2; exit 1; }
mkdir -p "$dir"/{bin/backend,spool,cache,state,log,etc,out}
dir=$(cd "$dir" && pwd)
cat >"$dir/bin/backend/pdffolder" <<'BACKEND'
#!/bin/sh
if [ $# -eq 0 ]; then echo 'direct pdffolder "Unknown" "PDF folder"'; exit 0; fi
out="${DEVICE_URI#pdffolder:}/job-$1.pdf"
if [ $# -ge 6 ]; then cp "$6" "$out"; else cat > "$out"; fi
chmod 0644 "$out"
echo "$4" > "${out%.pdf}.copies"
BACKEND
# Owner-only: cupsd runs such a backend as the user it runs as.
chmod 0700 "$dir/bin/backend/pdffolder"
ln -sfn /usr/lib/cups/daemon "$dir/bin/daemon"
socket="$dir/cups.sock"
printf 'Listen %s\nLogLevel warn\nWebInterface No\nDefaultAuthType None\n<Location />\n  Order allow,deny\n  Allow all\n</Location>\n<Policy default>\n  <Limit All>\n    Order deny,allow\n  </Limit>\n</Policy>\n' \
  "$socket" >"$dir/etc/cupsd.conf"
cat >"$dir/etc/cups-files.conf" <<FILES
ServerRoot $dir/etc
ServerBin $dir/bin
DataDir /usr/share/cups
RequestRoot $dir/spool
CacheDir $dir/cache
StateDir $dir/state
TempDir $dir/spool
ErrorLog $dir/log/error_log
AccessLog $dir/log/access_log
PageLog $dir/log/page_log
Sandboxing Relaxed
FILES
cupsd -f -c "$dir/etc/cupsd.conf" -s "$dir/etc/cups-files.conf" >/dev/null 2>&1 &
echo $! >"$dir/cupsd.pid"
for _ in $(seq 50); do [ -S "$socket" ] && break; sleep 0.1; done
CUPS_SERVER="$socket" lpadmin -p "$queue" -E -v "pdffolder:$dir/out" -m raw >/dev/null 2>&1 \
  || { echo "privatecups: the queue could not be added; see $dir/log/error_log" >&2; kill "$(cat "$dir/cupsd.pid")"; exit 1; }
echo "$socket"
