// The SQL functions of the payroll database that SQLite lacks: YEAR,
// MONTH, DAY, LEFT, RIGHT, LEN, ISNULL and GETDATE.
#pragma once

#include "sqlite/sql_dialect.hpp"

struct sqlite3;

namespace korvex::ds {

/// Registers the functions on a connection; false if SQLite refused.
/// LEFT, RIGHT and ISNULL are keywords in SQLite: they are registered
/// under the names of kRenamedFunctions, which the dialect writes instead.
bool registerPayrollFunctions(sqlite3* db);

inline constexpr FunctionRename kRenamedFunctions[] = {
    {u"LEFT", u"KORVEX_LEFT"}, {u"RIGHT", u"KORVEX_RIGHT"}, {u"ISNULL", u"KORVEX_ISNULL"}};

}  // namespace korvex::ds
