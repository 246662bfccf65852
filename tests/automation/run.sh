#!/bin/bash
# Tests the automation component under Wine:
#
#     tests/automation/run.sh DLL x64|x86
#
# In a fresh Wine prefix (removed afterwards) it registers DLL with regsvr32,
# checks the registration, runs the shared script cases (made from
# tests/scripts by make_cases.py) and component_test.vbs with cscript, then
# unregisters the DLL and checks that the class is gone. Prints a summary and
# exits non-zero on any failure. KORVEX_TEST_VERBOSE=1 prints every check,
# not only the failures.
set -u

usage() {
  echo "usage: $0 DLL x64|x86" >&2
  exit 2
}
[ $# -eq 2 ] || usage
dll=$(realpath -e "$1" 2>/dev/null) || { echo "$0: no DLL at $1" >&2; exit 2; }
arch=$2
here=$(cd "$(dirname "$0")" && pwd)
scripts=$here/../scripts

case $arch in
  x64) export WINEARCH=win64; wine=/usr/lib/wine/wine64 ;;
  x86) export WINEARCH=win32; wine=$(command -v wine || true) ;;
  *) usage ;;
esac
for tool in "$wine" python3 iconv timeout; do
  command -v "$tool" >/dev/null || { echo "$0: $tool is missing" >&2; exit 2; }
done
wineserver=/usr/lib/wine/wineserver
[ -x "$wineserver" ] || wineserver=$(command -v wineserver || echo true)

work=$(mktemp -d "${TMPDIR:-/tmp}/korvex-automation-$arch.XXXXXX")
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
cleanup() {
  "$wineserver" -k >/dev/null 2>&1
  "$wineserver" -w >/dev/null 2>&1
  rm -rf "$work"
}
trap cleanup EXIT

failures=()
fail() {
  echo "FAIL $*"
  failures+=("$*")
}

# Runs a Windows program of the prefix, bounded in time.
win() {
  local limit=$1
  shift
  timeout "$limit" "$wine" "$@"
}

crlf() { sed 's/\r*$/\r/'; }

echo "== $arch: $(basename "$dll") in a fresh prefix"
if ! win 300 wineboot -i >"$work/wineboot.out" 2>&1; then
  cat "$work/wineboot.out"
  echo "FAIL the Wine prefix could not be made"
  exit 1
fi
tests=$WINEPREFIX/drive_c/korvex-tests
mkdir -p "$tests"
cp "$dll" "$tests/korvex-automation.dll"
windll='C:\korvex-tests\korvex-automation.dll'

# ---- registration ----------------------------------------------------------
if win 120 regsvr32 /s "$windll" >"$work/regsvr32.out" 2>&1; then
  echo "ok   regsvr32"
else
  fail "regsvr32 $windll (exit $?): $(cat "$work/regsvr32.out")"
fi

# The CLSID a ProgID names in the registry, or nothing.
clsid_of() {
  win 60 reg query "HKCR\\$1\\CLSID" /ve 2>/dev/null | tr -d '\r' | grep -o '{[0-9A-Fa-f-]*}' | head -1
}
clsid=$(clsid_of Morlan.BasicEngine)
versioned=$(clsid_of Morlan.BasicEngine.1)
if [ -z "$clsid" ]; then
  fail "Morlan.BasicEngine has no CLSID in the registry"
elif [ "$versioned" != "$clsid" ]; then
  fail "Morlan.BasicEngine.1 names ${versioned:-no CLSID}, Morlan.BasicEngine $clsid"
else
  threading=$(win 60 reg query "HKCR\\CLSID\\$clsid\\InprocServer32" /v ThreadingModel 2>/dev/null |
    tr -d '\r' | awk '/ThreadingModel/ {print $NF}')
  if [ "$threading" = Apartment ]; then
    echo "ok   both ProgIDs name $clsid, apartment-threaded"
  else
    fail "ThreadingModel of $clsid is '${threading}', expected Apartment"
  fi
fi

# ---- the test scripts ------------------------------------------------------
# Each runs as checks.vbs + stand_ins.vbs + its own text (Wine's VBScript
# cannot include files), with its texts in NAME.strings, and reports to
# NAME.log. cscript exits 0 even when the script broke off with an error, so
# the report's last line must be the success line as well.
run_vbs() { # NAME LABEL
  local name=$1 label=$2 status log
  win 600 cscript.exe //nologo "C:\\korvex-tests\\$name.vbs" >"$work/$name.out" 2>&1
  status=$?
  log=$work/$name.log.txt
  if [ -f "$tests/$name.log" ]; then
    iconv -f UTF-16 -t UTF-8 "$tests/$name.log" | tr -d '\r' >"$log"
  else
    : >"$log"
  fi
  if [ "${KORVEX_TEST_VERBOSE:-0}" = 1 ]; then
    cat "$log"
  else
    grep -v '^PASS ' "$log" | grep -v '^case '
  fi
  [ -s "$work/$name.out" ] && sed 's/^/  cscript: /' "$work/$name.out" | tr -d '\r'
  if [ $status -ne 0 ]; then
    fail "$label: cscript exit status $status"
  elif ! tail -n 1 "$log" | grep -Eq "^$label: [0-9]+ passed\$"; then
    fail "$label: the script stopped before its end (last report line: $(tail -n 1 "$log"))"
  else
    echo "ok   $(tail -n 1 "$log")"
  fi
}

if ! python3 "$here/make_cases.py" "$scripts" "$work/cases" >"$work/make_cases.out"; then
  cat "$work/make_cases.out"
  fail "make_cases.py could not make the shared cases"
else
  sed 's/^/  /' "$work/make_cases.out"
  cat "$here/checks.vbs" "$here/stand_ins.vbs" "$work/cases.vbs" | crlf >"$tests/cases.vbs"
  cp "$work/cases.strings" "$tests/cases.strings"
  run_vbs cases "shared cases"
fi

# component_test.vbs keeps its non-ASCII texts in lines "'@ KEY TEXT".
cat "$here/checks.vbs" "$here/stand_ins.vbs" "$here/component_test.vbs" | grep -v "^'@ " |
  crlf >"$tests/component.vbs"
{
  printf '\xff\xfe'
  sed -n "s/^'@ \([^ ]*\) \(.*\)\$/\1\t\2/p" "$here/component_test.vbs" | crlf | iconv -f UTF-8 -t UTF-16LE
} >"$tests/component.strings"
run_vbs component "component tests"

# ---- unregistration --------------------------------------------------------
if win 120 regsvr32 /s /u "$windll" >"$work/unregister.out" 2>&1; then
  echo "ok   regsvr32 /u"
else
  fail "regsvr32 /u (exit $?): $(cat "$work/unregister.out")"
fi
printf 'On Error Resume Next\r\nSet o = CreateObject("Morlan.BasicEngine")\r\nIf Err.Number = 0 Then WScript.Quit 3\r\nWScript.Quit 7\r\n' >"$tests/gone.vbs"
win 120 cscript.exe //nologo 'C:\korvex-tests\gone.vbs' >/dev/null 2>&1
gone=$?
left=$(clsid_of Morlan.BasicEngine)$(clsid_of Morlan.BasicEngine.1)
if [ $gone -ne 7 ]; then
  fail "CreateObject(\"Morlan.BasicEngine\") after regsvr32 /u: exit $gone (3 = still created)"
elif [ -n "$left" ]; then
  fail "the ProgIDs are still registered after regsvr32 /u"
elif [ -n "${clsid:-}" ] && win 60 reg query "HKCR\\CLSID\\$clsid" >/dev/null 2>&1; then
  fail "HKCR\\CLSID\\$clsid is still registered after regsvr32 /u"
else
  echo "ok   unregistered: the class can no longer be created"
fi

echo "== $arch: ${#failures[@]} failure(s)"
[ ${#failures[@]} -eq 0 ]
