// The database behind the data-access objects.
//
// One interface serves every kind of database: open a file or server, run a
// statement (with positional parameters) and get its rows with the column
// types, transactions, and the dialect hooks that make the payroll SQL
// texts run unchanged. The objects the scripts see (Connection, Recordset,
// Command) talk only to this interface; SQLite is the embedded default.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvex/sqlite.hpp"
#include "korvex/value.hpp"

namespace korvex::ds {

/// Field type codes of the data-access objects.
enum FieldType : std::int32_t {
  kTypeLong = 3,
  kTypeDouble = 5,
  kTypeCurrency = 6,
  kTypeDate = 7,
  kTypeBoolean = 11,
  kTypeBigInt = 20,
  kTypeText = 202,
  kTypeBinary = 205,
};

// The column and result types are the public ones, so that a host holding
// a SqliteDatabase sees what the objects see.
using Column = SqlColumn;
using ResultSet = SqlResult;

/// A failure reported by the database, in its own words. The objects'
/// code between a database call and the member a script called is deep and
/// has one answer for every failure, so the failure travels there as an
/// exception; it never leaves this library (the objects and SqliteDatabase
/// turn it back into a value).
class DbError : public std::runtime_error {
 public:
  explicit DbError(std::u16string message)
      : std::runtime_error("database error"), message_(std::move(message)) {}
  const std::u16string& message() const noexcept { return message_; }

 private:
  std::u16string message_;
};

/// The value of a public database result; its failure throws DbError.
template <class T>
T valueOrThrow(DatabaseResult<T> result) {
  if (!result.ok()) throw DbError(result.error().message);
  return std::move(result).value();
}
inline void valueOrThrow(const DatabaseResult<>& result) {
  if (!result.ok()) throw DbError(result.error().message);
}

class Backend {
 public:
  virtual ~Backend() = default;

  /// Runs a statement text (adapted to the dialect first); the parameters
  /// bind to its placeholders in order. Throws DbError.
  virtual ResultSet run(std::u16string_view sql, std::span<const Value> params = {}) = 0;
  /// Runs a statement text as it is, its parameters bound exactly as given
  /// (64-bit integers, text bytes and BLOBs untouched); the last `identity`
  /// columns of its rows come back as stored, in rowIdentities. Throws
  /// DbError.
  virtual ResultSet runExact(std::u16string_view sql, std::span<const SqlParameter> params,
                             std::size_t identity = 0) = 0;

  /// Transactions; each throws DbError when the database refuses.
  virtual void begin() = 0;
  virtual void commit() = 0;
  virtual void rollback() = 0;

  /// The rows of the stored procedure `name` run with `inputs` (the input
  /// parameters in order); nullopt when the database has no such
  /// procedure. Throws DbError.
  virtual std::optional<ResultSet> procedure(std::u16string_view name,
                                             std::span<const Value> inputs) = 0;

  /// Dialect hook: the text the database actually runs for a text written
  /// for the payroll database.
  virtual std::u16string adapt(std::u16string_view sql) const = 0;
  /// Dialect hook: a placeholder for parameter i (0-based) in a text.
  virtual std::u16string placeholder(std::size_t i) const = 0;

  /// The catalog (database name) and the location of another catalog
  /// beside this one, for "use NAME".
  virtual std::u16string catalog() const = 0;
};

/// Opens a SQLite file; it must exist. Throws DbError.
std::shared_ptr<Backend> openSqlite(const std::string& path, SqliteAccess access = {});
/// The file a catalog name stands for beside an open SQLite file.
std::string sqliteCatalogPath(const std::string& currentPath, std::u16string_view catalog);

}  // namespace korvex::ds
