# Package file of an installed KORVEX: the static libraries need the
# database (korvex_sqlite), zip and XML (korvex_workbook) libraries they were
# built with.
include(CMakeFindDependencyMacro)
find_dependency(SQLite3)
find_dependency(EXPAT)
find_dependency(PkgConfig)
pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
include("${CMAKE_CURRENT_LIST_DIR}/korvexTargets.cmake")
