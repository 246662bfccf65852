// What the command tests of run and batch share: a folder with the six
// employees' pay table (in a file, or in a schema of its own on the test
// server) and a script, and the table read back.
#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <string_view>

#include "cli/batch_command.hpp"
#include "cli/options.hpp"
#include "cli/run_command.hpp"
#include "database_fixture.hpp"
#include "korvex/batch.hpp"
#include "korvex/postgres.hpp"
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
  std::string db;  // the file's path, or the server's connection string
  std::string script;
  std::shared_ptr<testing::ServerSchema> schema;  // while the files are used
};

// The six employees' table in a new file at `path`.
inline void makePayDatabase(const std::string& path) {
  std::ofstream(path, std::ios::binary).flush();  // an empty file is an empty database
  testing::need(testing::need(SqliteDatabase::open(path)).query(fromUtf8(kSchema)));
}

// A folder of its own holding pay.db (or `dbName`) and the script pay.bas;
// on the server, the table in a schema of its own instead of pay.db.
inline Files makeFiles(const std::string& name, const std::string& script = kPayScript,
                       const std::string& dbName = "pay.db",
                       testing::Backend backend = testing::Backend::Sqlite) {
  namespace fs = std::filesystem;
  // The server's run of a test may go on beside the file's.
  const bool server = backend == testing::Backend::Postgres;
  const fs::path dir = fs::path(::testing::TempDir()) / ("batch_" + name + (server ? "_pg" : ""));
  fs::remove_all(dir);
  fs::create_directories(dir);
  Files f{(dir / dbName).string(), (dir / "pay.bas").string(), nullptr};
  if (server) {
    f.schema = std::make_shared<testing::ServerSchema>();
    f.db = f.schema->connection();
    testing::need(testing::need(PostgresDatabase::open(f.db)).query(fromUtf8(kSchema)));
  } else {
    makePayDatabase(f.db);
  }
  std::ofstream(f.script, std::ios::binary) << script;
  return f;
}

inline std::string wages(const std::string& db) {
  const std::u16string sql = u"SELECT code, wage FROM pay ORDER BY code";
  const SqlResult table = isServerDatabase(db)
                              ? testing::need(testing::need(PostgresDatabase::open(db)).query(sql))
                              : testing::need(testing::need(SqliteDatabase::open(db)).query(sql));
  std::string out;
  for (const auto& row : table.rows) {
    out += toUtf8(row[0].stringValue()) + "=" + std::to_string(row[1].doubleValue()) + " ";
  }
  return out;
}

inline const std::string kUnchanged =
    "E1=0.000000 E2=0.000000 E3=0.000000 E4=0.000000 E5=0.000000 E6=0.000000 ";

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

/// A stream that takes nothing: a full disk, a closed pipe.
struct FullStream : private std::streambuf, public std::ostream {
  FullStream() : std::ostream(this) {}
  int overflow(int) override { return std::streambuf::traits_type::eof(); }
};

/// `korvex ARGS` (run or batch) with `input` as standard input; what it
/// prints goes to `to` when given.
inline Outcome korvex(std::span<const std::string_view> args, const std::string& input = {},
                      std::ostream* to = nullptr) {
  const CommandLine c = parseCommandLine(args);
  std::istringstream in(input);
  std::ostringstream out, err;
  std::ostream& o = to != nullptr ? *to : out;
  Outcome r;
  if (c.action == CommandLine::Action::Run) r.status = runScript(c.run, in, o, err);
  if (c.action == CommandLine::Action::Batch) r.status = runBatchCommand(c.batch, in, o, err);
  if (r.status < 0) ADD_FAILURE() << c.error;
  return {r.status, out.str(), err.str()};
}

}  // namespace korvex::cli
