# Runs the Python host's tests against the shared library.
#   cmake -DPYTHON=<python3> -DLIBRARY=<libkorvex.so> -DBINDINGS=<dir> -P run_python.cmake
if(NOT PYTHON)
  message("python3 is missing: the Python host's tests are skipped")
  return()
endif()
set(ENV{KORVEX_LIBRARY} ${LIBRARY})
set(ENV{PYTHONPATH} ${BINDINGS})
execute_process(COMMAND ${PYTHON} -m unittest -v test_korvex
                WORKING_DIRECTORY ${CMAKE_CURRENT_LIST_DIR}
                RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the Python host's tests failed")
endif()
