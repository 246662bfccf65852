#!/bin/sh
# A month shared by four processes on the test server, one of them killed
# in the middle, then run again: the wage table must equal the one a single
# process leaves on SQLite, and running the finished month once more must
# change nothing.
#
#   shared_month.sh KORVEX EXAMPLES WORK    (needs KORVEX_PG; exit 77 without)
set -eu
korvex=$1 examples=$2 work=$3
if [ -z "${KORVEX_PG:-}" ]; then
  echo "no PostgreSQL server: KORVEX_PG is not set (scripts/test.sh starts one)"
  exit 77
fi
rm -rf "$work" && mkdir -p "$work"
schema="korvex_month_$$"
server="$KORVEX_PG options='-csearch_path=$schema,public'"
record='SELECT * FROM [工资表2025年03月]'

printf 'DIM n\nn = DoSQL("%s")\n' "drop schema if exists $schema cascade" >"$work/drop.bas"
printf 'DIM n\nn = DoSQL("create schema %s")\n' "$schema" >"$work/create.bas"
"$korvex" run --db "$KORVEX_PG" "$work/create.bas"
trap '"$korvex" run --db "$KORVEX_PG" "$work/drop.bas" >/dev/null 2>&1 || true' EXIT

"$korvex" demo "$work/month.db" --employees 400 >/dev/null
"$korvex" demo "$server" --employees 400 >/dev/null
"$korvex" batch "$examples"/*.bas --db "$work/month.db" --record "$record" >/dev/null

pids=""
for i in 1 2 3 4; do
  "$korvex" batch "$examples"/*.bas --db "$server" --record "$record" --json \
    >"$work/process$i.json" 2>"$work/process$i.err" &
  pids="$pids $!"
done
victim=$(echo $pids | cut -d' ' -f2)
# Killed once it has committed a group of its own: in the middle of its work.
printf 'MSGBOX DoSQL("select count(*) from korvex_claims where done_by like %s")\n' \
  "'%:$victim'" >"$work/victim.bas"
tries=0
until "$korvex" run --db "$server" "$work/victim.bas" 2>/dev/null | grep -qv '^0$'; do
  tries=$((tries + 1))
  [ "$tries" -lt 600 ] || { echo "the process to kill never finished a group"; exit 1; }
  sleep 0.02
done
kill -9 "$victim"
status=0
for pid in $pids; do
  if [ "$pid" = "$victim" ]; then
    wait "$pid" || true
  else
    wait "$pid" || status=1
  fi
done
[ "$status" = 0 ] || { cat "$work"/process*.err; echo "a surviving process failed"; exit 1; }
if grep -q '"committed": true' "$work/process2.json" 2>/dev/null; then
  echo "the killed process had finished before the kill: the test proves nothing"
  exit 1
fi
# Every row done once: by a survivor, or committed by the victim before it died.
by_victim=$("$korvex" run --db "$server" "$work/victim.bas")
month=$(sed -n 's/.*"sharedRows": \([0-9]*\).*/\1/p' "$work/process1.json")
survivors=0
for i in 1 3 4; do
  survivors=$((survivors + $(sed -n 's/^{"rows": \([0-9]*\),.*/\1/p' "$work/process$i.json")))
done
if [ $((survivors + by_victim)) != "$month" ]; then
  echo "rows done: $survivors by the survivors, $by_victim by the killed process, of $month"
  exit 1
fi
# Whatever the killed process held is open again for this run.
"$korvex" batch "$examples"/*.bas --db "$server" --record "$record" --json >"$work/rerun.json"
# A finished month run again: every row computed anew (without sharing
# reads between rows this time), nothing changed.
"$korvex" batch "$examples"/*.bas --db "$server" --record "$record" --json --no-reuse \
  >"$work/again.json"
grep -q '"changedRows": 0,' "$work/again.json" || {
  cat "$work/again.json"
  echo "running the finished month again changed rows"
  exit 1
}

printf 'DIM 表\n表 = DoSqlEx("select * from [工资表2025年03月] order by 工号")\n' >"$work/dump.bas"
"$korvex" run --json --db "$work/month.db" "$work/dump.bas" >"$work/file.json"
"$korvex" run --json --db "$server" "$work/dump.bas" >"$work/server.json"
if ! cmp -s "$work/file.json" "$work/server.json"; then
  echo "the server's table differs from the file's:"
  head -c 600 "$work/file.json"; echo; head -c 600 "$work/server.json"; echo
  exit 1
fi
echo "4 processes (one killed) and a rerun left the table one process leaves on SQLite"
