#!/bin/sh
# Builds KORVEX and runs every test. With KORVEX_SANITIZE=1 the build goes to
# build-asan/ with the address and undefined-behaviour sanitizers (and
# without the benchmarks).
set -eu

cd "$(dirname "$0")/.."
jobs="${KORVEX_JOBS:-2}"

# What the build needs, as setup.sh installs it; Python as the second
# reader of the saved workbooks and LibreOffice for the workbook interop
# test (each test is skipped if its reader cannot be installed).
scripts/deps.sh
scripts/deps.sh python3 ||
  echo "test: could not install python3; saved workbooks will not be read a second time" >&2
# The PostgreSQL server for the data tests on a server (skipped without).
if ! ls /usr/lib/postgresql/*/bin/initdb >/dev/null 2>&1; then
  scripts/deps.sh postgresql ||
    echo "test: could not install the PostgreSQL server; the data tests will run on SQLite only" >&2
fi
if ! command -v soffice >/dev/null 2>&1; then
  scripts/deps.sh libreoffice-calc-nogui ||
    echo "test: could not install LibreOffice; the interop test will be skipped" >&2
fi

if [ "${KORVEX_SANITIZE:-0}" = "1" ]; then
  dir=build-asan
  cmake -S . -B "$dir" -DKORVEX_SANITIZE=ON -DKORVEX_BENCHMARKS=OFF
  export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
  export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
else
  dir=build
  cmake -S . -B "$dir"
fi

cmake --build "$dir" -j"$jobs"

# The data tests run on SQLite and on a throwaway PostgreSQL server
# (scripts/pg_server.sh), stopped when this script ends; without a server
# their server runs are skipped. KORVEX_PG set beforehand names a server
# of one's own instead.
if [ -z "${KORVEX_PG:-}" ]; then
  root=$(pwd)
  if pg_env=$(scripts/pg_server.sh start); then
    eval "$pg_env"
    trap '"$root/scripts/pg_server.sh" stop "$KORVEX_PG_DIR"' EXIT
  else
    echo "test: no PostgreSQL server could be started; the data tests run on SQLite only" >&2
  fi
fi

(cd "$dir" && ctest --output-on-failure -j"$jobs")

# The Windows builds and the automation component's tests under Wine (they
# install what they need, or say in one line why they are skipped).
if [ "${KORVEX_SANITIZE:-0}" != "1" ]; then
  scripts/windows.sh
fi
