#!/bin/sh
# Sets KORVEX up on a Debian-based system: installs the build tools that are
# missing, builds into build/ and runs examples/hello.bas.
set -eu

cd "$(dirname "$0")/.."

packages="g++ cmake make pkg-config libgtest-dev libbenchmark-dev clang-format libsqlite3-dev libzip-dev libexpat1-dev"
missing=""
for p in $packages; do
  if ! dpkg -s "$p" >/dev/null 2>&1; then
    missing="$missing $p"
  fi
done

if [ -n "$missing" ]; then
  echo "setup: installing$missing"
  if [ "$(id -u)" -eq 0 ]; then
    sudo=""
  elif command -v sudo >/dev/null 2>&1; then
    sudo="sudo"
  else
    echo "setup: need root (or sudo) to install:$missing" >&2
    exit 1
  fi
  $sudo apt-get update
  # shellcheck disable=SC2086
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y $missing
fi

jobs="${KORVEX_JOBS:-2}"
cmake -S . -B build
cmake --build build -j"$jobs"

echo "setup: running examples/hello.bas"
build/korvex run --json examples/hello.bas
