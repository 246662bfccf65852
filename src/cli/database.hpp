// The command's database options: --db hands the engine a Parent whose
// "Connect" is the open SQLite file (or the server's database), --record sets the current record,
// --trace-sql keeps every SQL text the run sends. Everything the run
// writes through that connection (its SQL and the record's fields) is one
// transaction: committed when the run succeeds, rolled back when it fails
// or with --dry-run.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "assigned_fields.hpp"
#include "korvex/engine.hpp"
#include "korvex/postgres.hpp"
#include "korvex/sqlite.hpp"
#include "options.hpp"

namespace korvex::cli {

class DatabaseSession {
 public:
  DatabaseSession() = default;
  DatabaseSession(const DatabaseSession&) = delete;
  DatabaseSession& operator=(const DatabaseSession&) = delete;
  /// Rolls back a transaction still open.
  ~DatabaseSession();

  /// Opens what the options ask for on the engine and begins the run's
  /// transaction; false, with a one-line reason in `error`, when the file is
  /// missing or the record's SQL fails (nothing is kept then).
  bool attach(const RunOptions& options, BasicEngine& engine, std::string& error);
  /// Ends the transaction: commits when `keep`, else rolls back. False, with
  /// the reason in `error`, when that fails (the script ended the
  /// transaction itself, the disk is full, ...).
  bool finish(bool keep, std::string& error);
  /// The SQL texts sent since attach, with --trace-sql; nothing otherwise.
  std::optional<std::vector<std::u16string>> traced() const;
  /// The record's fields the script assigned, with --record; nothing
  /// otherwise.
  std::optional<AssignedFieldList> assigned() const;

 private:
  std::shared_ptr<SqlLog> log_;
  std::size_t firstTraced_ = 0;
  // While the transaction is open: the file, or the server's session.
  std::optional<std::variant<SqliteDatabase, PostgresDatabase>> database_;
  // In a dry run, a second connection that reads the file for as long as the
  // run lasts: a commit the script itself sends cannot take the file then.
  std::shared_ptr<AssignedFieldList> assigned_;
};

}  // namespace korvex::cli
