# 32-bit Windows (x86): cmake -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-i686.cmake
set(CMAKE_SYSTEM_PROCESSOR x86)
set(KORVEX_MINGW_TRIPLET i686-w64-mingw32)
# Doubles in SSE2 registers, as on x86-64: the x87 unit keeps intermediate
# results in 80 bits, so sums, products and comparisons would round
# differently from the 64-bit builds.
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse")
include(${CMAKE_CURRENT_LIST_DIR}/mingw-common.cmake)
