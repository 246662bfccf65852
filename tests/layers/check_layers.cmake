# The layers of src/ point one way: a folder includes only folders below it
# (and its own), so that no folder reaches up and no two folders include
# each other. Public headers count as the layer they belong to.
#
#   cmake -DSRC=<src folder> -P check_layers.cmake
#
# Fails listing every include that reaches up.

# Rank of each folder: lower ranks never include higher ones. The host-object
# libraries (the embedded database, the workbook) sit on the host objects
# and know nothing of the engine.
set(rank_values 0)
set(rank_host 1)
set(rank_sqlite 2)
set(rank_workbook 2)
set(rank_postgres 3)
set(rank_engine 3)
set(rank_functions 4)
set(rank_eval 5)
set(rank_statements 6)
set(rank_check 7)
set(rank_facade 8)
set(rank_batch 9)
set(rank_cli 10)
set(rank_capi 10)
set(rank_automation 10)

# Public headers that belong to a layer above the shared types.
set(public_engine.hpp facade)
set(public_function_reference.hpp eval)
set(public_datasource.hpp sqlite)
set(public_sqlite.hpp sqlite)
set(public_postgres.hpp postgres)
set(public_workbook.hpp workbook)
set(public_check.hpp check)
set(public_batch.hpp batch)

file(GLOB_RECURSE sources RELATIVE "${SRC}" "${SRC}/*.cpp" "${SRC}/*.hpp")
set(violations "")
foreach(file IN LISTS sources)
  string(REGEX MATCH "^[^/]+" folder "${file}")
  if(NOT DEFINED rank_${folder})
    list(APPEND violations "${file}: folder ${folder} has no layer")
    continue()
  endif()
  set(own ${rank_${folder}})
  file(STRINGS "${SRC}/${file}" includes REGEX "^#include \"")
  foreach(line IN LISTS includes)
    string(REGEX REPLACE "^#include \"([^\"]+)\".*" "\\1" target "${line}")
    if(NOT target MATCHES "/")
      continue()  # a file of the same folder
    endif()
    string(REGEX MATCH "^[^/]+" target_folder "${target}")
    if(target_folder STREQUAL "korvex")
      string(REGEX REPLACE "^korvex/" "" header "${target}")
      if(NOT DEFINED public_${header})
        continue()  # shared types: every layer may use them
      endif()
      set(target_folder ${public_${header}})
    endif()
    if(target_folder STREQUAL folder)
      continue()
    endif()
    if(NOT DEFINED rank_${target_folder})
      list(APPEND violations "${file}: includes ${target} from an unknown folder")
    elseif(rank_${target_folder} GREATER_EQUAL own)
      list(APPEND violations "${file}: ${folder} includes ${target} (${target_folder} is not below it)")
    endif()
  endforeach()
endforeach()

if(violations)
  list(JOIN violations "\n  " text)
  message(FATAL_ERROR "includes that reach up a layer:\n  ${text}")
endif()
list(LENGTH sources count)
message(STATUS "layers: ${count} files, every include points down")
