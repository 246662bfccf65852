// The data-access host objects: Connection, Recordset (with Fields and
// Field) and Command (with Parameters), on the Backend interface.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "korvex/host_object.hpp"
#include "korvex/sqlite.hpp"
#include "sqlite/backend.hpp"

namespace korvex::ds {

/// Platform numbers of data-access failures.
inline constexpr std::int32_t kProviderError = -2147467259;  // the database refused
inline constexpr std::int32_t kObjectClosed = 3704;
inline constexpr std::int32_t kConnectionUnusable = 3709;

/// 3704: the object is closed.
DispatchResult objectClosed();
/// 3705: the object is open and must not be.
DispatchResult alreadyOpen();
/// 3709: no open connection to run on.
DispatchResult connectionUnusable();
/// 3001: an argument of the wrong type or out of range.
DispatchResult badArguments();
/// A database failure as the objects report it.
DispatchResult providerError(std::u16string message);

/// Opens a database on a server for a connection string in the server's
/// own form, in the catalog named (empty: the one the string names).
/// Throws DbError.
using ServerOpener = std::function<std::shared_ptr<Backend>(
    std::u16string_view connection, std::u16string_view catalog, const SqliteAccess& access)>;

class Connection final : public HostObject, public std::enable_shared_from_this<Connection> {
 public:
  /// `access`: how every database this connection opens is opened; with
  /// `server`, the connection string names a server's database, else a
  /// SQLite file.
  Connection(std::shared_ptr<SqlLog> log, SqliteAccess access, ServerOpener server = nullptr)
      : log_(std::move(log)), access_(access), server_(std::move(server)) {}

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override;
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override;

  /// The open database, or nullptr while closed.
  const std::shared_ptr<Backend>& backend() const noexcept { return backend_; }
  const std::shared_ptr<SqlLog>& log() const noexcept { return log_; }
  /// Records `sql` and runs it; the result is a Recordset (closed for a
  /// statement that returns no rows).
  DispatchResult execute(std::u16string_view sql, std::span<const Value> params = {});

 private:
  DispatchResult open();
  DispatchResult setCatalog(const Value& value);
  std::u16string catalog() const;

  std::shared_ptr<SqlLog> log_;
  SqliteAccess access_;
  ServerOpener server_;
  std::u16string connectionString_;
  std::optional<std::u16string> catalog_;  // "Initial Catalog" set by the user
  std::shared_ptr<Backend> backend_;
  std::string path_;  // of the open file
};

struct RecordsetData;

class Recordset final : public HostObject {
 public:
  Recordset();
  /// An open record set holding a result (a closed one when the result
  /// has no rows); `backend` receives the writes of Update.
  Recordset(ResultSet result, std::shared_ptr<Backend> backend);

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override;
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult getDefault(std::span<const Value> args) override;

 private:
  DispatchResult open(std::span<const Value> args);
  DispatchResult move(std::u16string_view name);
  void adopt(Recordset& other);

  std::shared_ptr<RecordsetData> data_;
  ObjectRef fields_;
};

class Command final : public HostObject {
 public:
  Command();
  ~Command() override;

  DispatchResult getProperty(std::u16string_view name, std::span<const Value> args) override;
  DispatchResult setProperty(std::u16string_view name, std::span<const Value> args,
                             const Value& value) override;
  DispatchResult callMethod(std::u16string_view name, std::span<const Value> args) override;

 private:
  DispatchResult execute();
  DispatchResult runProcedure(Connection& connection);

  ObjectRef connection_;
  std::u16string text_;
  std::int32_t type_ = 1;  // 1 text, 4 stored procedure
  ObjectRef parameters_;
};

}  // namespace korvex::ds
