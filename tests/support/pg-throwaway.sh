#!/usr/bin/env bash
# A throwaway PostgreSQL server for the tests: a fresh cluster in DIR, listening only on
# a Unix socket in DIR, run as an unprivileged user when we are root.
#
#   pg-throwaway.sh start DIR   prints the URL to connect with; exit 3 when the server
#                               binaries are not installed
#   pg-throwaway.sh stop DIR    stops it (DIR is left for the caller to remove)
set -euo pipefail

cmd=${1:?start|stop}
dir=${2:?folder}
bin=""
for v in 17 16 15; do
  if [ -x "/usr/lib/postgresql/$v/bin/initdb" ]; then bin="/usr/lib/postgresql/$v/bin"; break; fi
done
if [ -z "$bin" ]; then
  echo "no PostgreSQL server binaries (Debian's postgresql-15) on this machine" >&2
  exit 3
fi

as_owner() {
  if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}

case "$cmd" in
  start)
    mkdir -p "$dir"
    dir=$(cd "$dir" && pwd)
    if [ "$(id -u)" -eq 0 ]; then chown postgres "$dir"; chmod 755 "$dir"; fi
    if ! as_owner "$bin/initdb" -D "$dir/data" -A trust -U lk --no-sync -E UTF8 --locale=C \
      >"$dir/initdb.log" 2>&1; then
      echo "initdb failed in $dir (every folder above it must be open to the server's user):" >&2
      cat "$dir/initdb.log" >&2
      exit 1
    fi
    if ! as_owner "$bin/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 \
      -o "-k $dir -c listen_addresses= -c fsync=off -c max_connections=60" start >/dev/null; then
      echo "the server did not start:" >&2
      cat "$dir/server.log" >&2
      exit 1
    fi
    echo "postgresql://lk@/postgres?host=$dir"
    ;;
  stop)
    as_owner "$bin/pg_ctl" -D "$dir/data" -m immediate -w stop >/dev/null 2>&1 || true
    ;;
  *)
    echo "usage: pg-throwaway.sh start|stop DIR" >&2
    exit 2
    ;;
esac
