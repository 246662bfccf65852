// A payroll database made for one test: an SQLite file in a fresh folder,
// or a schema of its own on the test server (KORVEX_PG, which
// scripts/test.sh starts), opened through the data-access objects and
// handed to an engine as its Parent's "Connect", with every SQL text the
// run sends kept.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/postgres.hpp"
#include "korvex/sqlite.hpp"
#include "support.hpp"

namespace korvex::testing {

/// The value of a database result a test cannot go on without: a failure
/// fails the test with the database's message, and value() then ends it.
template <class T>
T need(DatabaseResult<T> result) {
  if (!result.ok()) ADD_FAILURE() << "database: " << toUtf8(result.error().message);
  return std::move(result).value();
}
inline void need(const DatabaseResult<>& result) {
  if (!result.ok()) ADD_FAILURE() << "database: " << toUtf8(result.error().message);
}

/// Runs SQL on a Connection object: the record set, or a failure.
inline DispatchResult executeOn(HostObject& connection, std::string_view sql) {
  const std::array<Value, 1> text{Value::string(fromUtf8(sql))};
  return connection.callMethod(u"Execute", text);
}

/// The value of field `index` of the current row of a record set result.
inline Value fieldOf(const DispatchResult& rs, std::int32_t index) {
  if (!rs.ok()) return {};
  const std::array<Value, 1> at{Value::lng(index)};
  const DispatchResult f = rs.value.objectValue()->getProperty(u"Fields", at);
  return f.ok() ? f.value.objectValue()->getDefault({}).value : Value{};
}

/// The databases the data tests run on.
enum class Backend { Sqlite, Postgres };

inline std::string backendName(const ::testing::TestParamInfo<Backend>& info) {
  return info.param == Backend::Sqlite ? "Sqlite" : "Postgres";
}

/// The test server's connection string; empty when there is none.
inline std::string testServer() {
  const char* server = std::getenv("KORVEX_PG");
  return server != nullptr ? server : "";
}

/// A schema of its own on the test server, for one test: the connection
/// string that works in it, dropped with everything in it at the end.
class ServerSchema {
 public:
  ServerSchema() {
    static std::atomic<int> count{0};
    name_ = "korvex_t" + std::to_string(::getpid()) + "_" + std::to_string(++count);
    DatabaseResult<PostgresDatabase> admin = PostgresDatabase::open(testServer());
    if (!admin.ok()) {
      ADD_FAILURE() << "test server: " << toUtf8(admin.error().message);
      return;
    }
    admin_.emplace(std::move(admin).value());
    need(admin_->execute("CREATE SCHEMA " + name_));
  }
  ~ServerSchema() {
    if (admin_) need(admin_->execute("DROP SCHEMA " + name_ + " CASCADE"));
  }
  std::string connection() const {
    return testServer() + " options='-csearch_path=" + name_ + ",public'";
  }

 private:
  std::string name_;
  std::optional<PostgresDatabase> admin_;
};

inline constexpr const char* kNoServer =
    "no PostgreSQL server: KORVEX_PG is not set (scripts/test.sh starts one)";

class DatabaseTest : public ::testing::Test {
 protected:
  /// The database the test runs on (a parameter of the tests on both).
  virtual Backend backend() const { return Backend::Sqlite; }
  bool onServer() const { return backend() == Backend::Postgres; }

  void SetUp() override {
    std::u16string connect;
    if (onServer()) {
      if (testServer().empty()) GTEST_SKIP() << kNoServer;
      schema_.emplace();
      connect = fromUtf8(schema_->connection());
      objects_ = postgresObjectFactory(log_);
    } else {
      path_ = createFile("pay");
      connect = fromUtf8(path_);
    }
    DispatchResult c = openConnection(*objects_, connect);
    ASSERT_TRUE(c.ok()) << toUtf8(c.description);
    connection_ = c.value.objectValue();
    engine_.SetObjectFactory(objects_);
    engine_.SetParent(connectParent(connection_));
    // SQLite's int holds 64 bits, the server's 32.
    exec(std::string("create table 工资表2005年03月 (工号 varchar(10) primary key, 姓名 "
                     "nvarchar(20), 基本工资 money, 入职日期 date, 在职 bit, 工龄 ") +
         (onServer() ? "bigint" : "int") +
         ", 系数 float);"
         "insert into 工资表2005年03月 values ('001', '张三', 3000.5, '2001-03-15', 1, 4, 1.5);"
         "insert into 工资表2005年03月 values ('0012', '李四', NULL, '2005-03-31 08:30:00', 0, "
         "5000000000, NULL);");
  }

  /// An empty database file NAME.db in the test's folder.
  std::string createFile(const std::string& name) {
    const std::string path = dir_.file(name + ".db");
    std::ofstream{path};
    return path;
  }

  /// Runs SQL on the test's connection; the record set, or a failure.
  DispatchResult exec(std::string_view sql) {
    DispatchResult r = executeOn(*connection_, sql);
    EXPECT_TRUE(r.ok()) << sql << ": " << toUtf8(r.description);
    return r;
  }
  /// The first field of the first row of a query.
  Value scalar(std::string_view sql) { return fieldOf(exec(sql), 0); }

  /// Evaluates an expression on the engine; the SQL texts it sent.
  Outcome evaluate(std::string_view expression) {
    const std::size_t before = log_->texts().size();
    Outcome o = EvaluateOn(engine_, expression);
    const std::vector<std::u16string> texts = log_->texts();
    sent_.assign(texts.begin() + static_cast<std::ptrdiff_t>(before), texts.end());
    return o;
  }
  std::vector<std::string> sent() const {
    std::vector<std::string> out;
    for (const auto& s : sent_) out.push_back(toUtf8(s));
    return out;
  }

  ScratchDir dir_;
  std::optional<ServerSchema> schema_;
  std::string path_;
  std::shared_ptr<SqlLog> log_ = std::make_shared<SqlLog>();
  std::shared_ptr<ObjectFactory> objects_ = sqliteObjectFactory(log_);
  ObjectRef connection_;
  BasicEngine engine_;
  std::vector<std::u16string> sent_;
};

/// A DatabaseTest run on each backend (TEST_P, instantiated with
/// KORVEX_ON_BOTH_BACKENDS).
class BothBackends : public DatabaseTest, public ::testing::WithParamInterface<Backend> {
 protected:
  Backend backend() const override { return GetParam(); }
};

/// Tests that take the backend as their parameter and make their own
/// database (the command's): the server runs skip without a server.
class OnEachBackend : public ::testing::TestWithParam<Backend> {
 protected:
  void SetUp() override {
    if (onServer() && testServer().empty()) GTEST_SKIP() << kNoServer;
  }
  bool onServer() const { return GetParam() == Backend::Postgres; }
};

#define KORVEX_ON_BOTH_BACKENDS(suite)                                                             \
  INSTANTIATE_TEST_SUITE_P(                                                                        \
      , suite,                                                                                     \
      ::testing::Values(::korvex::testing::Backend::Sqlite, ::korvex::testing::Backend::Postgres), \
      ::korvex::testing::backendName)

}  // namespace korvex::testing
