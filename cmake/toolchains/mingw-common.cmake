# Cross-compiling for Windows with mingw-w64; included by the per-target
# toolchain files after they set KORVEX_MINGW_TRIPLET.
set(CMAKE_SYSTEM_NAME Windows)

# The POSIX-thread flavour of the compilers: the core uses std::mutex and
# std::thread, which the win32-thread flavour lacks.
set(CMAKE_C_COMPILER ${KORVEX_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KORVEX_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${KORVEX_MINGW_TRIPLET}-windres)

# The IDL compiler for type libraries and interface headers.
find_program(KORVEX_WIDL NAMES ${KORVEX_MINGW_TRIPLET}-widl widl
  DOC "The IDL compiler for the target (type libraries, interface headers)")

# Headers and libraries from the target's tree only; programs from the host.
set(CMAKE_FIND_ROOT_PATH /usr/${KORVEX_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The C++ runtime, libgcc and the thread library linked in: what is built
# imports only system DLLs.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
endforeach()
