# The checker's cases: every cases/NAME.bas is checked with `korvex check
# NAME.bas` (in that folder); the output must be NAME.expected exactly, the
# exit status 1, or 0 when NAME.expected is empty. With NAME.json beside it,
# `korvex check --json NAME.bas` must print that. A missing file and a bad
# option are usage errors (2).
#
# Usage: cmake -DKORVEX=<korvex command> -DCASES=<cases folder> -P run_check_cases.cmake

file(GLOB cases RELATIVE "${CASES}" "${CASES}/*.bas")
list(LENGTH cases count)
if(count LESS 40)
  message(FATAL_ERROR "only ${count} cases in ${CASES}")
endif()
set(failures "")
function(expect name want args)
  execute_process(COMMAND "${KORVEX}" check ${args} WORKING_DIRECTORY "${CASES}"
                  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  set(code 1)
  if(want STREQUAL "")
    set(code 0)
  endif()
  if(NOT out STREQUAL want OR NOT status EQUAL code)
    set(failures "${failures}\n--- ${name} (exit ${status}):\n${out}${err}" PARENT_SCOPE)
  endif()
endfunction()
foreach(case IN LISTS cases)
  string(REGEX REPLACE "\\.bas$" "" name "${case}")
  file(READ "${CASES}/${name}.expected" want)
  expect(${name} "${want}" "${case}")
  if(EXISTS "${CASES}/${name}.json")
    file(READ "${CASES}/${name}.json" want)
    expect(${name}.json "${want}" "--json;${case}")
  endif()
endforeach()
foreach(args "no-such-file.bas" "--jsn;clean.bas" "--db;x.db;clean.bas")
  execute_process(COMMAND "${KORVEX}" check ${args} WORKING_DIRECTORY "${CASES}"
                  RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
  if(NOT status EQUAL 2)
    set(failures "${failures}\n--- check ${args}: exit ${status}, not 2")
  endif()
endforeach()
if(failures)
  message(FATAL_ERROR "checker cases that failed:${failures}")
endif()
message(STATUS "${count} checker cases")
