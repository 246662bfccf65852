#!/bin/sh
# The demo's open month computed on a PostgreSQL server by 1, 2 and 4
# processes at once (each with one worker thread), next to the same month
# on a SQLite file (--jobs 1 and 2); every server result is compared with
# the file's, value for value.
#
#   bench/server_month.sh [EMPLOYEES] [KORVEX]     (default 10000, build/korvex)
#
# Uses the server KORVEX_PG names, or starts a throwaway one
# (scripts/pg_server.sh). Prints one line per run: wall time and rows/s.
set -eu
cd "$(dirname "$0")/.."
employees=${1:-10000}
korvex=$(realpath "${2:-build/korvex}")
examples=$(pwd)/examples/payroll
if [ -z "${KORVEX_PG:-}" ]; then
  eval "$(scripts/pg_server.sh start)"
  trap 'scripts/pg_server.sh stop "$KORVEX_PG_DIR"' EXIT
fi
work=$(mktemp -d "${TMPDIR:-/tmp}/korvex-bench.XXXXXX")
schema="korvex_bench_$$"
server="$KORVEX_PG options='-csearch_path=$schema,public'"
table='工资表2025年03月'
record="SELECT * FROM [$table]"
items='基本工资 = 0, 计件工资 = 0, 考核工资 = 0, 顶班工资 = 0, 班组奖金 = 0, 车间奖金 = 0, 超产奖 = 0, 保底补差 = 0, 应发工资 = 0'

sql() {  # SQL on the connection $1, in a run of its own
  printf 'DIM n\nn = DoSQL("%s")\n' "$2" >"$work/sql.bas"
  "$korvex" run --db "$1" "$work/sql.bas"
}
now() { date +%s.%N; }
report() {  # label, start, end, rows
  awk -v l="$1" -v s="$2" -v e="$3" -v r="$4" \
    'BEGIN { printf "%-24s %8.1f s %8.0f rows/s\n", l, e - s, r / (e - s) }'
}
dump() {
  printf 'DIM t\nt = DoSqlEx("select * from [%s] order by 工号")\n' "$table" >"$work/dump.bas"
  "$korvex" run --json --db "$1" "$work/dump.bas" >"$2"
}

"$korvex" demo "$work/fresh.db" --employees "$employees" >/dev/null
sql "$KORVEX_PG" "create schema $schema"
"$korvex" demo "$server" --employees "$employees" >/dev/null
rows=$(printf 'MSGBOX DoSQL("select count(*) from [%s]")\n' "$table" >"$work/count.bas" &&
  "$korvex" run --db "$work/fresh.db" "$work/count.bas")
echo "$employees employees, $rows rows in $table, load $(cut -d' ' -f1 /proc/loadavg)"

for jobs in 1 2; do
  cp "$work/fresh.db" "$work/month.db"
  start=$(now)
  "$korvex" batch "$examples"/*.bas --db "$work/month.db" --record "$record" --jobs "$jobs" >/dev/null
  report "SQLite, --jobs $jobs" "$start" "$(now)" "$rows"
done
dump "$work/month.db" "$work/file.json"

for processes in 1 2 4; do
  sql "$server" "update [$table] set $items"
  sql "$server" "delete from korvex_claims" 2>/dev/null || true
  start=$(now)
  pids=""
  for i in $(seq "$processes"); do
    "$korvex" batch "$examples"/*.bas --db "$server" --record "$record" >/dev/null &
    pids="$pids $!"
  done
  for pid in $pids; do wait "$pid"; done
  report "PostgreSQL, $processes process(es)" "$start" "$(now)" "$rows"
  dump "$server" "$work/server.json"
  cmp -s "$work/file.json" "$work/server.json" || echo "  the table differs from SQLite's!"
done
sql "$KORVEX_PG" "drop schema $schema cascade"
rm -rf "$work"
