# Package file of an installed KORVEX: the static libraries need the
# database (korvex_sqlite), zip and XML (korvex_workbook) libraries they were
# built with (libpq for korvex_postgres).
include(CMakeFindDependencyMacro)
find_dependency(SQLite3)
find_dependency(EXPAT)
find_dependency(PkgConfig)
pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
pkg_check_modules(LIBPQ REQUIRED IMPORTED_TARGET libpq)
include("${CMAKE_CURRENT_LIST_DIR}/korvexTargets.cmake")
# korvex::korvex_c is the shared library with the C interface (korvex.h);
# a host linking only it needs none of the above, but they are looked for
# all the same, since the exported targets name them.
