# 32-bit Windows (x86): cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-i686.cmake
set(CMAKE_SYSTEM_PROCESSOR x86)
set(KORVEX_MINGW_TRIPLET i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
