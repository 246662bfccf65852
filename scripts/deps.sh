#!/bin/sh
# Installs the Debian packages that are not installed yet (through sudo when
# not run as root): those given as arguments, or without arguments the build
# tools and the libraries KORVEX is built on. setup.sh and test.sh both call
# it, so that each works on a fresh machine.
set -eu

[ "$#" -gt 0 ] || set -- g++ cmake make pkg-config libgtest-dev libbenchmark-dev \
  clang-format libsqlite3-dev libzip-dev libexpat1-dev libpq-dev

missing=""
for p in "$@"; do
  if ! dpkg -s "$p" >/dev/null 2>&1; then
    missing="$missing $p"
  fi
done
[ -n "$missing" ] || exit 0

echo "deps: installing$missing"
if [ "$(id -u)" -eq 0 ]; then
  sudo=""
elif command -v sudo >/dev/null 2>&1; then
  sudo="sudo"
else
  echo "deps: need root (or sudo) to install:$missing" >&2
  exit 1
fi
$sudo apt-get update
# shellcheck disable=SC2086
$sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y $missing
