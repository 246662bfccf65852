#!/bin/sh
# Cross-compiles the KORVEX core and the automation component for 64-bit
# (build-win64/) and 32-bit (build-win32/) Windows with mingw-w64, and runs
# the component's tests under Wine when they exist. Installs the compilers
# and Wine when missing; when that is impossible it says so in one line and
# succeeds, unless KORVEX_WINDOWS_REQUIRED=1.
set -eu

cd "$(dirname "$0")/.."
jobs="${KORVEX_JOBS:-2}"
# libwine-dev: the system interface definitions (oaidl.idl) the type library
# is compiled against.
packages="g++-mingw-w64-x86-64 g++-mingw-w64-i686 mingw-w64-tools libwine-dev wine wine64 wine32:i386"

skip() {
  echo "windows: skipped: $1"
  [ "${KORVEX_WINDOWS_REQUIRED:-0}" = "1" ] && exit 1
  exit 0
}

installed() {
  for p in $packages; do
    dpkg -s "$p" >/dev/null 2>&1 || return 1
  done
}

# The 32-bit Wine needs the i386 architecture; a mirror whose i386 index of
# the security suite lags the amd64 one leaves wine32:i386 uninstallable
# (the two architectures' versions must match), so the second try reads
# only the main and updates suites, from a sources list of its own.
install_packages() {
  if [ "$(id -u)" -eq 0 ]; then
    sudo=""
  elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
    sudo="sudo"
  else
    return 1
  fi
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    $sudo dpkg --add-architecture i386 || return 1
  fi
  # shellcheck disable=SC2086
  scripts/deps.sh $packages && return 0
  echo "windows: retrying with the main and updates suites only" >&2
  # shellcheck source=/dev/null
  release="$(. /etc/os-release && echo "${VERSION_CODENAME:-bookworm}")"
  sources="$(mktemp -d)"
  printf 'Types: deb\nURIs: http://deb.debian.org/debian\nSuites: %s %s-updates\nComponents: main\nSigned-By: /usr/share/keyrings/debian-archive-keyring.gpg\n' \
    "$release" "$release" >"$sources/main.sources"
  only="-o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts=$sources"
  status=0
  # shellcheck disable=SC2086
  { $sudo apt-get $only update &&
    $sudo env DEBIAN_FRONTEND=noninteractive apt-get $only install -y $packages; } || status=1
  rm -rf "$sources"
  return $status
}

if ! installed; then
  command -v apt-get >/dev/null 2>&1 || skip "no apt-get to install the mingw-w64 compilers and Wine"
  install_packages || skip "could not install $packages"
  installed || skip "could not install $packages"
fi

# One build per target: directory, toolchain file, the tests' architecture.
for target in "build-win64 mingw-x86_64 x64" "build-win32 mingw-i686 x86"; do
  # shellcheck disable=SC2086
  set -- $target
  cmake -S . -B "$1" -DCMAKE_TOOLCHAIN_FILE="cmake/toolchains/$2.cmake" -DCMAKE_BUILD_TYPE=Release
  cmake --build "$1" -j"$jobs"
  if [ -f tests/automation/run.sh ]; then
    tests/automation/run.sh "$1/korvex-automation.dll" "$3"
  fi
done
echo "windows: built build-win64 and build-win32"
