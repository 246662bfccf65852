// What the command tests of run and batch share: a folder with the six
// employees' pay table and a script, and the table read back.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "database_fixture.hpp"
#include "korvex/sqlite.hpp"

namespace korvex::cli {

// Six employees; E4 has negative pieces, which the pay script refuses.
constexpr const char* kSchema =
    "CREATE TABLE pay (code TEXT PRIMARY KEY, pieces INTEGER, wage REAL);"
    "INSERT INTO pay VALUES ('E1', 10, 0), ('E2', 20, 0), ('E3', 30, 0), ('E4', -1, 0),"
    " ('E5', 50, 0), ('E6', 60, 0);";

constexpr const char* kPayScript =
    "DIM rate\r\nrate = 2.5\r\nIf pieces < 0 Then RaiseError \"negative\"\r\n"
    "wage = pieces * rate\r\n";

struct Files {
  std::string db;
  std::string script;
};

// The six employees' table in a new file at `path`.
inline void makePayDatabase(const std::string& path) {
  std::ofstream(path, std::ios::binary).flush();  // an empty file is an empty database
  testing::need(testing::need(SqliteDatabase::open(path)).query(fromUtf8(kSchema)));
}

// A folder of its own holding pay.db (or `dbName`) and the script pay.bas.
inline Files makeFiles(const std::string& name, const std::string& script = kPayScript,
                       const std::string& dbName = "pay.db") {
  namespace fs = std::filesystem;
  const fs::path dir = fs::path(::testing::TempDir()) / ("batch_" + name);
  fs::remove_all(dir);
  fs::create_directories(dir);
  Files f{(dir / dbName).string(), (dir / "pay.bas").string()};
  makePayDatabase(f.db);
  std::ofstream(f.script, std::ios::binary) << script;
  return f;
}

inline std::string wages(const std::string& db) {
  std::string out;
  for (const auto& row : testing::need(testing::need(SqliteDatabase::open(db))
                                           .query(u"SELECT code, wage FROM pay ORDER BY code"))
                             .rows) {
    out += toUtf8(row[0].stringValue()) + "=" + std::to_string(row[1].doubleValue()) + " ";
  }
  return out;
}

inline const std::string kUnchanged =
    "E1=0.000000 E2=0.000000 E3=0.000000 E4=0.000000 E5=0.000000 E6=0.000000 ";

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

}  // namespace korvex::cli
