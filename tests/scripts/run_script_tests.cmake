# End-to-end script tests: runs every NAME.bas in SCRIPTS through
#   KORVEX run --json [arguments from NAME.args] NAME.bas
# and compares standard output with NAME.json. NAME.args, if present, holds
# one command-line argument per line (empty lines are skipped; an argument
# cannot contain ";"). The exit status must be 0 when the expected "errNum"
# is 0, 1 for another errNum, and 2 (a usage error) when NAME.json is empty.
# Trailing line breaks of NAME.json and of the output are ignored; everything
# else must match byte for byte.
#
# An argument "@DB@" stands for a fresh database file made for the case in
# WORK (default: the current directory) and filled by payroll.setup, a
# script that builds the test payroll tables with DoSQL.
#
# Usage: cmake -DKORVEX=<korvex command> -DSCRIPTS=<dir> [-DFILTER=<regex>]
#              [-DWORK=<dir>] -P run_script_tests.cmake

if(NOT KORVEX OR NOT SCRIPTS)
  message(FATAL_ERROR "run_script_tests.cmake needs -DKORVEX=... and -DSCRIPTS=...")
endif()

get_filename_component(SCRIPTS "${SCRIPTS}" ABSOLUTE)
get_filename_component(KORVEX "${KORVEX}" ABSOLUTE)
file(GLOB cases RELATIVE "${SCRIPTS}" "${SCRIPTS}/*.bas")
list(SORT cases)
if(NOT cases)
  message(FATAL_ERROR "no script cases found in ${SCRIPTS}")
endif()

set(passed 0)
set(failed "")

# Strips trailing CR/LF characters.
function(strip_breaks var)
  string(REGEX REPLACE "[\r\n]+$" "" stripped "${${var}}")
  set(${var} "${stripped}" PARENT_SCOPE)
endfunction()

foreach(case_file IN LISTS cases)
  string(REGEX REPLACE "\\.bas$" "" name "${case_file}")
  if(FILTER AND NOT name MATCHES "${FILTER}")
    continue()
  endif()

  if(NOT EXISTS "${SCRIPTS}/${name}.json")
    message("FAIL ${name}: ${name}.json is missing")
    list(APPEND failed "${name}")
    continue()
  endif()

  set(args "")
  if(EXISTS "${SCRIPTS}/${name}.args")
    file(READ "${SCRIPTS}/${name}.args" args_text)
    string(REPLACE "\r\n" "\n" args_text "${args_text}")
    string(REPLACE "\n" ";" args_lines "${args_text}")
    foreach(arg IN LISTS args_lines)
      if(NOT arg STREQUAL "")
        list(APPEND args "${arg}")
      endif()
    endforeach()
  endif()

  if("${args}" MATCHES "@DB@")
    if(NOT WORK)
      set(WORK "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    set(db "${WORK}/${name}.db")
    file(WRITE "${db}" "")
    execute_process(
      COMMAND "${KORVEX}" run --db "${db}" payroll.setup
      WORKING_DIRECTORY "${SCRIPTS}"
      OUTPUT_VARIABLE setup_out ERROR_VARIABLE setup_out RESULT_VARIABLE setup_status)
    if(NOT setup_status EQUAL 0)
      message("FAIL ${name}: payroll.setup failed: ${setup_out}")
      list(APPEND failed "${name}")
      continue()
    endif()
    string(REPLACE "@DB@" "${db}" args "${args}")
  endif()

  execute_process(
    COMMAND "${KORVEX}" run --json ${args} "${case_file}"
    WORKING_DIRECTORY "${SCRIPTS}"
    OUTPUT_VARIABLE actual
    ERROR_VARIABLE stderr_text
    RESULT_VARIABLE status)
  file(READ "${SCRIPTS}/${name}.json" expected)
  strip_breaks(actual)
  strip_breaks(expected)

  set(problems "")
  if(NOT actual STREQUAL expected)
    string(APPEND problems "  output differs from ${name}.json:\n  - ${expected}\n  + ${actual}\n")
  endif()
  set(expected_status 1)
  if(expected STREQUAL "")
    set(expected_status 2)
  elseif(expected MATCHES "^{\"errNum\": 0,")
    set(expected_status 0)
  endif()
  if(NOT status STREQUAL expected_status)
    string(APPEND problems "  exit status ${status}, expected ${expected_status}\n")
  endif()
  if(NOT stderr_text STREQUAL "" AND NOT problems STREQUAL "")
    string(APPEND problems "  standard error: ${stderr_text}\n")
  endif()

  if(problems STREQUAL "")
    math(EXPR passed "${passed} + 1")
  else()
    message("FAIL ${name}\n${problems}")
    list(APPEND failed "${name}")
  endif()
endforeach()

list(LENGTH failed failed_count)
message("script tests: ${passed} passed, ${failed_count} failed")
if(failed_count GREATER 0)
  message(FATAL_ERROR "failing scripts: ${failed}")
endif()
