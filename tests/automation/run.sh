#!/bin/bash
# run.sh DLL x64|x86: registers DLL in a fresh Wine prefix, runs the shared cases and
# component_test.vbs, unregisters it. KORVEX_TEST_VERBOSE=1 prints every check.
set -u
case ${2:-} in
  x64) export WINEARCH=win64; wine=/usr/lib/wine/wine64 ;;
  x86) export WINEARCH=win32; wine=wine ;;
  *) echo "usage: $0 DLL x64|x86" >&2; exit 2 ;;
esac
dll=$(realpath -e "$1") || exit 2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/korvex-automation-$2.XXXXXX")
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
wineserver=$( [ -x /usr/lib/wine/wineserver ] && echo /usr/lib/wine/wineserver || echo wineserver)
trap '$wineserver -k >/dev/null 2>&1; $wineserver -w >/dev/null 2>&1; rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL $*"; failures=$((failures + 1)); }
win() { timeout "$@" >"$work/out" 2>&1; }
clsid_of() { timeout 60 $wine reg query "HKCR\\$1\\CLSID" /ve 2>/dev/null | grep -o '{[0-9A-Fa-f-]*}'; }

echo "== $2: $(basename "$dll") in a fresh prefix"
win 300 $wine wineboot -i || { cat "$work/out"; fail "the Wine prefix could not be made"; exit 1; }
tests=$WINEPREFIX/drive_c/korvex-tests && mkdir -p "$tests" && cp "$dll" "$tests/korvex-automation.dll"
win 120 $wine regsvr32 /s 'C:\korvex-tests\korvex-automation.dll' || fail "regsvr32: $(cat "$work/out")"
clsid=$(clsid_of Morlan.BasicEngine)
threading=$(timeout 60 $wine reg query "HKCR\\CLSID\\$clsid\\InprocServer32" /v ThreadingModel 2>/dev/null |
  tr -d '\r' | awk '/ThreadingModel/ {print $NF}')
typelib=$(timeout 60 $wine reg query "HKCR\\CLSID\\$clsid\\TypeLib" /ve 2>/dev/null | grep -o '{[0-9A-Fa-f-]*}' | tail -n 1)
typelib_registered() { timeout 60 $wine reg query "HKCR\\TypeLib\\${typelib:-none}\\1.0" >/dev/null 2>&1; }
[ -n "$clsid" ] && [ "$(clsid_of Morlan.BasicEngine.1)" = "$clsid" ] && [ "$threading" = Apartment ] && typelib_registered &&
  echo "ok   both ProgIDs name $clsid, apartment-threaded, type library $typelib" ||
  fail "Morlan.BasicEngine names '$clsid', .1 '$(clsid_of Morlan.BasicEngine.1)', threading '$threading', type library '$typelib'"

# cscript exits 0 even when a script broke off with an error, so the
# script's report must also end in its success line.
run_vbs() { # NAME LABEL
  win 600 $wine cscript.exe //nologo "C:\\korvex-tests\\$1.vbs"
  local status=$? log last
  log=$(iconv -f UTF-16 -t UTF-8 "$tests/$1.log" 2>/dev/null | tr -d '\r') last=${log##*$'\n'}
  [ "${KORVEX_TEST_VERBOSE:-0}" = 1 ] && echo "$log" || echo "$log" | grep -v -e '^PASS ' -e '^case ' -e "^$2: "
  sed 's/^/  cscript: /' "$work/out"
  [ $status -eq 0 ] && [[ $last =~ ^$2:\ [0-9]+\ passed$ ]] && echo "ok   $last" || fail "$2: cscript exit $status, last line: $last"
}
if python3 "$here/make_cases.py" "$here/../scripts" "$work/cases" >"$work/cases.out"; then
  cp "$work/cases.strings" "$tests/"
  cat "$here/checks.vbs" "$here/stand_ins.vbs" "$work/cases.vbs" | sed 's/\r*$/\r/' >"$tests/cases.vbs"
  run_vbs cases "shared cases"
else
  fail "make_cases.py could not make the shared cases"
fi
sed 's/^/  /' "$work/cases.out"
# component_test.vbs keeps its non-ASCII texts in lines "'@ KEY=TEXT|KEY=TEXT".
sed -n "s/^'@ //p" "$here/component_test.vbs" | tr '|' '\n' | sed 's/=/\t/; s/$/\r/' |
  { printf '\xff\xfe'; iconv -f UTF-8 -t UTF-16LE; } >"$tests/component.strings"
grep -hv "^'@ " "$here/checks.vbs" "$here/stand_ins.vbs" "$here/component_test.vbs" | sed 's/\r*$/\r/' >"$tests/component.vbs"
run_vbs component "component tests"

win 120 $wine regsvr32 /s /u 'C:\korvex-tests\korvex-automation.dll' || fail "regsvr32 /u: $(cat "$work/out")"
printf 'On Error Resume Next\r\nSet o = CreateObject("Morlan.BasicEngine")\r\nIf Err.Number = 0 Then WScript.Quit 3\r\nWScript.Quit 7\r\n' >"$tests/gone.vbs"
win 120 $wine cscript.exe //nologo 'C:\korvex-tests\gone.vbs'
gone=$?
[ $gone -eq 7 ] && [ -z "$(clsid_of Morlan.BasicEngine)$(clsid_of Morlan.BasicEngine.1)" ] &&
  ! timeout 60 $wine reg query "HKCR\\CLSID\\${clsid:-none}" >/dev/null 2>&1 &&
  ! typelib_registered &&
  echo "ok   unregistered: the class can no longer be created" ||
  fail "still registered after regsvr32 /u (cscript exit $gone, 3 when created)"
echo "== $2: $failures failure(s)"
[ $failures -eq 0 ]
