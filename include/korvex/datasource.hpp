// The data-access objects on SQLite, for hosts that hand the engine a real
// database.
//
// The objects answer the late-bound members of the platform's data-access
// library: a Connection (ConnectionString, Open, Close, State, Execute,
// Properties("Initial Catalog"), BeginTrans/CommitTrans/RollbackTrans), a
// Recordset (Fields, EOF, BOF, the moves, RecordCount, State, Open, Edit,
// Update, ...) and a Command with Parameters. A connection string names the
// database file ("Data Source=PATH" or the bare path); the file must exist.
//
//   auto log = std::make_shared<korvex::SqlLog>();
//   auto objects = korvex::sqliteObjectFactory(log);
//   korvex::DispatchResult c = korvex::openConnection(*objects, u"Data Source=pay.db");
//   if (!c.ok()) { /* c.description says why */ }
//   engine.SetObjectFactory(objects);        // functions create theirs here
//   engine.SetParent(korvex::connectParent(c.value.objectValue()));
//   engine.Execute();
//   for (auto& sql : log->texts()) ...        // every SQL text the run sent
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/host_object.hpp"

namespace korvex {

/// The SQL texts the objects were given to run, in order, exactly as
/// written (before any adaptation to the database's dialect).
class SqlLog {
 public:
  void add(std::u16string_view sql) { texts_.emplace_back(sql); }
  const std::vector<std::u16string>& texts() const noexcept { return texts_; }

 private:
  std::vector<std::u16string> texts_;
};

/// Makes "Connection", "Recordset" and "Command" objects (names matched
/// case-insensitively) on SQLite. Every object it makes, and every object
/// those make, records its SQL texts in `log` when one is given.
std::shared_ptr<ObjectFactory> sqliteObjectFactory(std::shared_ptr<SqlLog> log = nullptr);

/// Creates a Connection with the factory and opens it; the result's value
/// is the open connection, or the failure says why.
DispatchResult openConnection(ObjectFactory& factory, std::u16string_view connectionString);

/// A host object whose member "Connect" is the given connection: what a
/// host hands the engine as its Parent.
ObjectRef connectParent(ObjectRef connection);

}  // namespace korvex
