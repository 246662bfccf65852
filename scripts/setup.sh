#!/bin/sh
# Sets KORVEX up on a Debian-based system: installs the build tools that are
# missing, builds into build/, runs examples/hello.bas and computes a month of
# the demo payroll.
set -eu

cd "$(dirname "$0")/.."

# The build tools and the libraries the engine is built on.
scripts/deps.sh

jobs="${KORVEX_JOBS:-2}"
cmake -S . -B build
cmake --build build -j"$jobs"

echo "setup: running examples/hello.bas"
build/korvex run --json examples/hello.bas

# A month's payroll on a demo database: the formulas of examples/payroll/,
# one per wage item, run in order as one script for every employee of the
# open month (the demo closes the months before it).
demo=build/demo.db
if build/korvex demo --help >/dev/null 2>&1 && [ -d examples/payroll ]; then
  build/korvex demo "$demo" --force
  echo "setup: computing March 2025 on $demo"
  build/korvex batch examples/payroll/*.bas --db "$demo" \
    --record "SELECT * FROM [工资表2025年03月]"
else
  echo "setup: this build has no demo payroll yet; skipping the payroll batch"
fi
