# Installs the build in BUILD into WORK/prefix, builds the program in SOURCE
# against it alone and runs it.
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
