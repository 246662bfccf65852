# 64-bit Windows (x64): cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-x86_64.cmake
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(KORVEX_MINGW_TRIPLET x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
