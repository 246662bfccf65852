#!/bin/sh
# Runs each benchmark script of bench/ side by side with the same algorithm
# in Lua 5.4: `korvex run --json` on NAME.bas, `lua5.4` on NAME.lua. Each
# side runs RUNS times (5 unless set); the table shows the median wall time
# of each in milliseconds and their ratio (KORVEX / Lua, lower is better).
#
#   bench/compare.sh [KORVEX]       KORVEX defaults to $KORVEX, then build/korvex
#
# Environment: KORVEX (the command), LUA (default lua5.4), RUNS (default 5).
# A missing lua5.4 is installed through scripts/deps.sh (Debian's lua5.4).
set -eu

here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
korvex=${1:-${KORVEX:-$root/build/korvex}}
lua=${LUA:-lua5.4}
runs=${RUNS:-5}

if [ ! -x "$korvex" ]; then
  echo "compare: no korvex command at $korvex (build first: cmake --build build)" >&2
  exit 2
fi
if ! command -v "$lua" >/dev/null 2>&1; then
  if [ "$lua" = lua5.4 ]; then
    "$root/scripts/deps.sh" lua5.4 || true
  fi
  if ! command -v "$lua" >/dev/null 2>&1; then
    echo "compare: $lua not found; install Debian's lua5.4 (apt-get install lua5.4) or set LUA" >&2
    exit 2
  fi
fi

now_ns() { date +%s%N; }

# median_ms COMMAND...: runs the command $runs times, its output discarded,
# and prints the median wall time in milliseconds. A failing run stops the
# comparison: a time for a script that did not finish means nothing.
median_ms() {
  i=0
  times=""
  while [ "$i" -lt "$runs" ]; do
    start=$(now_ns)
    if ! "$@" >/dev/null 2>&1; then
      echo "compare: failed: $*" >&2
      "$@" 2>&1 | head -c 2000 >&2
      exit 1
    fi
    end=$(now_ns)
    times="$times $(((end - start) / 1000))"
    i=$((i + 1))
  done
  printf '%s\n' $times | sort -n | awk '{ t[NR] = $1 }
    END { m = (NR % 2) ? t[(NR + 1) / 2] : (t[NR / 2] + t[NR / 2 + 1]) / 2; printf "%.1f\n", m / 1000 }'
}

printf '%-10s %12s %12s %8s\n' workload "korvex ms" "lua ms" ratio
for bas in "$here"/*.bas; do
  name=$(basename "$bas" .bas)
  script_lua="$here/$name.lua"
  [ -f "$script_lua" ] || continue
  k=$(median_ms "$korvex" run --json "$bas")
  l=$(median_ms "$lua" "$script_lua")
  awk -v n="$name" -v k="$k" -v l="$l" \
    'BEGIN { printf "%-10s %12.1f %12.1f %7.1fx\n", n, k, l, (l > 0 ? k / l : 0) }'
done
