// The command's database options: --db hands the engine a Parent whose
// "Connect" is the open SQLite file, --record sets the current record,
// --trace-sql keeps every SQL text the run sends.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/sqlite.hpp"
#include "options.hpp"

namespace korvex::cli {

class DatabaseSession {
 public:
  /// Opens what the options ask for on the engine; false, with a one-line
  /// reason in `error`, when the file is missing or the record's SQL fails.
  bool attach(const RunOptions& options, BasicEngine& engine, std::string& error);
  /// The SQL texts sent since attach, with --trace-sql; nothing otherwise.
  std::optional<std::vector<std::u16string>> traced() const;

 private:
  std::shared_ptr<SqlLog> log_;
  std::size_t firstTraced_ = 0;
};

}  // namespace korvex::cli
