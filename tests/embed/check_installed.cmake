# Installs the build in BUILD into WORK/prefix, builds the program in SOURCE
# against it alone and runs it; then configures the same program with
# KORVEX's tree (TREE) as its subproject, which must register none of
# KORVEX's tests in the host's.
file(REMOVE_RECURSE ${WORK})
function(step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}")
  endif()
endfunction()
step(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix)
if(EXISTS ${WORK}/prefix/include/engine OR EXISTS ${WORK}/prefix/include/korvex/engine_services.hpp)
  message(FATAL_ERROR "internal headers were installed")
endif()
step(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/build -DCMAKE_CXX_COMPILER=${CXX}
     -DCMAKE_PREFIX_PATH=${WORK}/prefix)
step(${CMAKE_COMMAND} --build ${WORK}/build)
step(${WORK}/build/embed)
# A C host that knows the installed copy through pkg-config alone.
find_program(PKG_CONFIG pkg-config)
find_program(C_COMPILER cc)
if(PKG_CONFIG AND C_COMPILER AND CAPI_TEST)
  set(ENV{PKG_CONFIG_PATH} ${WORK}/prefix/lib/pkgconfig)
  execute_process(COMMAND ${PKG_CONFIG} --cflags --libs korvex OUTPUT_VARIABLE flags
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  separate_arguments(flags)
  step(${C_COMPILER} -std=c99 ${CAPI_TEST} ${flags} -lpthread -o ${WORK}/capi_host)
  set(ENV{LD_LIBRARY_PATH} ${WORK}/prefix/lib)
  step(${WORK}/capi_host ${WORK}/capi_host.db)
endif()
# A Python host with the installed module and library alone.
find_program(PYTHON python3)
if(PYTHON AND PYTHON_TEST)
  set(ENV{PYTHONPATH} ${WORK}/prefix/share/korvex/python)
  set(ENV{KORVEX_LIBRARY} ${WORK}/prefix/lib/libkorvex.so.0)
  get_filename_component(tests ${PYTHON_TEST} DIRECTORY)
  step(${PYTHON} -m unittest test_korvex WORKING_DIRECTORY ${tests})
endif()
step(${CMAKE_COMMAND} -S ${SOURCE} -B ${WORK}/sub -DCMAKE_CXX_COMPILER=${CXX} -DKORVEX_SOURCE=${TREE})
execute_process(COMMAND ${CMAKE_CTEST_COMMAND} -N WORKING_DIRECTORY ${WORK}/sub OUTPUT_VARIABLE listed)
if(NOT listed MATCHES "Total Tests: 0")
  message(FATAL_ERROR "the subproject registered tests in the host:\n${listed}")
endif()
