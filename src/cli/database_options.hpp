// --db and --record as `korvex run` and `korvex batch` both take them: the
// file opened is exactly the one named, and the record query is one
// statement that only reads.
#pragma once

#include <string>

#include "korvex/sqlite.hpp"

namespace korvex::cli {

/// Opens the SQLite file `path` (it must exist) as a Connection of
/// `objects`; the open connection, or false with a one-line reason in
/// `error`.
bool openDatabaseOption(ObjectFactory& objects, const std::string& path, ObjectRef& connection,
                        std::string& error);

/// Refuses a --record text that is not exactly one statement reading rows,
/// as `database` compiles it, before any of it runs: false with a one-line
/// reason in `error`.
bool checkRecordQuery(SqliteDatabase database, const std::string& sql, std::string& error);

}  // namespace korvex::cli
