#!/bin/sh
# A throwaway PostgreSQL server for the tests: a cluster in a temporary
# folder, reached only through a Unix socket in that folder.
#
#   eval "$(scripts/pg_server.sh start)"   # exports KORVEX_PG and KORVEX_PG_DIR
#   scripts/pg_server.sh stop "$KORVEX_PG_DIR"
#
# start prints the export lines on standard output, or one line on
# standard error and status 1 when no server can be started (no server
# binaries, initdb or the start failing). As root the cluster belongs to the
# postgres user, as the server refuses to run as root.
set -eu

bindir="${KORVEX_PG_BINDIR:-}"
if [ -z "$bindir" ]; then
  for d in /usr/lib/postgresql/*/bin; do
    [ -x "$d/initdb" ] && bindir="$d"
  done
fi

as_owner() {
  if [ "$(id -u)" = "0" ]; then
    runuser -u postgres -- "$@"
  else
    "$@"
  fi
}

case "${1:-}" in
  start)
    if [ -z "$bindir" ] || [ ! -x "$bindir/pg_ctl" ]; then
      echo "pg_server: no PostgreSQL server binaries found" >&2
      exit 1
    fi
    # The folder stays private (mktemp makes it so): the socket in it lets
    # anyone who reaches it in as the superuser, without a password.
    dir=$(mktemp -d "${TMPDIR:-/tmp}/korvex-pg.XXXXXX")
    if [ "$(id -u)" = "0" ]; then
      if ! id postgres >/dev/null 2>&1; then
        echo "pg_server: running as root and there is no postgres user" >&2
        rm -rf "$dir"
        exit 1
      fi
      chown postgres "$dir"
    fi
    if ! as_owner "$bindir/initdb" -D "$dir/data" -U postgres --auth=trust -E UTF8 \
        --locale=C.UTF-8 >"$dir/initdb.log" 2>&1; then
      echo "pg_server: initdb failed (see $dir/initdb.log)" >&2
      exit 1
    fi
    # Only the socket in the folder; durability is not what a test needs.
    if ! as_owner "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 \
        -o "-c listen_addresses='' -k $dir -c unix_socket_permissions=0700 -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c max_connections=200" \
        start >/dev/null 2>&1; then
      echo "pg_server: the server did not start (see $dir/server.log)" >&2
      exit 1
    fi
    echo "export KORVEX_PG='host=$dir dbname=postgres user=postgres'"
    echo "export KORVEX_PG_DIR='$dir'"
    ;;
  stop)
    dir="${2:-${KORVEX_PG_DIR:-}}"
    [ -n "$dir" ] && [ -d "$dir/data" ] || exit 0
    as_owner "$bindir/pg_ctl" -D "$dir/data" -m fast -w stop >/dev/null 2>&1 || true
    rm -rf "$dir"
    ;;
  *)
    echo "usage: pg_server.sh start | stop [DIR]" >&2
    exit 2
    ;;
esac
