# The payroll formulas of examples/payroll, joined in order, run for the
# first employees of the open month of a small demo database and must end
# without error, leaving a positive 应发工资 written back to each row.
#
# Usage: cmake -DKORVEX=<korvex command> -DEXAMPLES=<dir> -DWORK=<dir>
#              -P run_payroll_examples.cmake

set(db "${WORK}/payroll_examples.db")
file(REMOVE "${db}")
execute_process(COMMAND "${KORVEX}" demo "${db}" --employees 12 --months 2
                RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "korvex demo failed: ${err}")
endif()

file(GLOB formulas "${EXAMPLES}/*.bas")
list(SORT formulas)
set(script "${WORK}/payroll_examples.bas")
file(WRITE "${script}" "")
foreach(f IN LISTS formulas)
  file(READ "${f}" text)
  file(APPEND "${script}" "${text}")
endforeach()

set(table "[工资表2025年02月]")

# Read by the checker with the record's fields, the formulas have nothing to report.
execute_process(COMMAND "${KORVEX}" check --db "${db}" --record "select * from ${table}" ${formulas}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0 OR NOT out STREQUAL "")
  message(FATAL_ERROR "korvex check found mistakes in the examples (exit ${status}):\n${out}${err}")
endif()
foreach(row 0 1 2 3 4 5)
  set(record "select * from ${table} where 工号 = (select 工号 from ${table} order by 工号 limit 1 offset ${row})")
  execute_process(COMMAND "${KORVEX}" run --json --db "${db}" --record "${record}" "${script}"
                  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "row ${row}: ${out}${err}")
  endif()
endforeach()

set(check "${WORK}/payroll_examples_check.bas")
file(WRITE "${check}" "MSGBOX DoSQL(\"select count(*) from (select 应发工资 from ${table} order by 工号 limit 6) where 应发工资 > 0\")")
execute_process(COMMAND "${KORVEX}" run --db "${db}" "${check}" OUTPUT_VARIABLE paid)
string(STRIP "${paid}" paid)
if(NOT paid EQUAL 6)
  message(FATAL_ERROR "应发工资 written for ${paid} of 6 rows")
endif()
