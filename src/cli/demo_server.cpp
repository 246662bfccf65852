#include "demo_server.hpp"

#include <unistd.h>

#include <array>
#include <filesystem>
#include <vector>

#include "korvex/postgres.hpp"
#include "korvex/sqlite.hpp"

namespace korvex::cli {

namespace {

// CalcByWorkGroup(code, start, end, group, product) as the demo file's
// procedure computes it: the employee's equal share of the piece wages of
// his work groups (or the group named) in the range, optionally of one
// product only. The output is the in-out parameter the Command appends.
constexpr std::string_view kCalcByWorkGroup = R"SQL(
CREATE FUNCTION calcbyworkgroup(code text, first_day date, last_day date, group_name text,
                                product text, INOUT 班组工资 float8 DEFAULT NULL)
LANGUAGE sql STABLE AS $$
WITH grp(name) AS (
    SELECT DISTINCT 班组名称 FROM wa_group
     WHERE COALESCE(group_name, '') = '' AND 工号 = code AND 日期 BETWEEN first_day AND last_day
    UNION SELECT group_name WHERE COALESCE(group_name, '') <> ''),
  member(code) AS (
    SELECT DISTINCT 工号 FROM wa_group
     WHERE 班组名称 IN (SELECT name FROM grp) AND 日期 BETWEEN first_day AND last_day)
SELECT CASE WHEN (SELECT COUNT(*) FROM member) = 0 THEN 0.0 ELSE
  round((COALESCE((SELECT SUM(工资合计) FROM wa_jobdata
                   WHERE 工号 IN (SELECT code FROM member)
                     AND 日期 BETWEEN first_day AND last_day
                     AND (COALESCE(product, '') = '' OR 产品名称 = product)), 0)
        / (SELECT COUNT(*) FROM member))::numeric, 2) END::float8
$$)SQL";

// Rows per INSERT: many rows a statement, far below the server's limit of
// parameters.
constexpr std::size_t kRowsPerInsert = 200;

// A quoted name of the server, in lower case as the payroll texts' names
// are taken there.
std::string serverName(std::string_view name) {
  std::string out = "\"";
  for (char c : name) {
    if (c == '"') out += '"';
    out += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
  return out + "\"";
}

class Copy {
 public:
  Copy(SqliteDatabase& file, PostgresDatabase& server) : file_(file), server_(server) {}

  bool ok() const noexcept { return error_.empty(); }
  const std::string& error() const noexcept { return error_; }

  template <class T>
  bool check(const DatabaseResult<T>& result) {
    if (!result.ok() && ok()) error_ = "SQL 错误: " + toUtf8(result.error().message);
    return result.ok();
  }

  // Names and declarations of the file's tables and indexes, in order.
  std::vector<std::pair<std::string, std::string>> schema(const char* type) {
    std::vector<std::pair<std::string, std::string>> out;
    DatabaseResult<SqliteStatement> st = file_.prepare(
        std::string("SELECT name, sql FROM sqlite_master WHERE sql IS NOT NULL AND type = '") +
        type + "' AND name <> 'korvex_procedures' ORDER BY rowid");
    if (!check(st)) return out;
    for (;;) {
      DatabaseResult<bool> row = st.value().step();
      if (!check(row) || !row.value()) break;
      out.emplace_back(std::get<std::string>(st.value().cell(0)),
                       std::get<std::string>(st.value().cell(1)));
    }
    return out;
  }

  void rows(const std::string& table) {
    DatabaseResult<SqliteStatement> st = file_.prepare("SELECT * FROM [" + table + "]");
    if (!check(st)) return;
    const int columns = st.value().columnCount();
    std::vector<SqlParameter> cells;
    std::size_t count = 0;
    const auto flush = [&] {
      if (count == 0) return;
      std::string sql = "INSERT INTO " + serverName(table) + " VALUES ";
      for (std::size_t r = 0; r < count; ++r) {
        sql += r == 0 ? "(" : ", (";
        for (int c = 0; c < columns; ++c) {
          sql += (c == 0 ? "$" : ", $") + std::to_string(r * columns + c + 1);
        }
        sql += ")";
      }
      check(server_.run(sql, cells));
      cells.clear();
      count = 0;
    };
    while (ok()) {
      DatabaseResult<bool> row = st.value().step();
      if (!check(row) || !row.value()) break;
      for (int c = 0; c < columns; ++c) cells.push_back(st.value().cell(c));
      if (++count == kRowsPerInsert) flush();
    }
    flush();
  }

 private:
  SqliteDatabase& file_;
  PostgresDatabase& server_;
  std::string error_;
};

}  // namespace

std::optional<DemoSummary> createDemoOnServer(const std::string& connection,
                                              const DemoSettings& settings, bool replace,
                                              std::string& error) {
  DatabaseResult<PostgresDatabase> opened = PostgresDatabase::open(connection);
  if (!opened.ok()) {
    error = "无法连接数据库 " + shownConnection(connection) + ": " + toUtf8(opened.error().message);
    return std::nullopt;
  }
  PostgresDatabase server = std::move(opened).value();
  std::error_code ec;
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path(ec) /
      ("korvex-demo-" + std::to_string(std::hash<std::string>{}(connection)) + "-" +
       std::to_string(::getpid()));
  std::filesystem::create_directories(dir, ec);
  const std::string file = (dir / "demo.db").string();
  std::optional<DemoSummary> summary = createDemoDatabase(file, settings, error);
  DatabaseResult<SqliteDatabase> source =
      summary ? SqliteDatabase::open(file) : DatabaseResult<SqliteDatabase>(DatabaseFailure{});
  if (summary && source.ok()) {
    Copy copy(source.value(), server);
    const auto tables = copy.schema("table");
    copy.check(server.begin());
    for (const auto& [name, sql] : tables) {
      if (!copy.ok()) break;
      const std::array<Value, 1> quoted{Value::string(fromUtf8(serverName(name)))};
      const DatabaseResult<SqlResult> there =
          server.query(u"SELECT to_regclass($1) IS NOT NULL", quoted);
      if (!copy.check(there)) break;
      if (there.value().rows.at(0).at(0).longValue() != 0) {
        if (!replace) {
          error = "数据库中已有表 " + name + ", 不会覆盖 (用 --force 替换)";
          break;
        }
        copy.check(server.execute("DROP TABLE " + serverName(name)));
      }
      copy.check(server.query(fromUtf8(sql)));
      copy.rows(name);
    }
    for (const auto& [name, sql] : copy.schema("index")) {
      if (copy.ok() && error.empty()) copy.check(server.query(fromUtf8(sql)));
    }
    if (copy.ok() && error.empty()) {
      copy.check(server.execute(
          "DROP FUNCTION IF EXISTS calcbyworkgroup(text, date, date, text, text, float8)"));
      copy.check(server.execute(kCalcByWorkGroup));
    }
    // Statistics for the planner now, not when the server next gets round
    // to it: the first month's batch runs right after.
    for (const auto& [name, sql] : tables) {
      if (copy.ok() && error.empty()) copy.check(server.execute("ANALYZE " + serverName(name)));
    }
    if (copy.ok() && error.empty()) copy.check(server.commit());
    if (!copy.ok() || !error.empty()) {
      (void)server.rollback();
      if (error.empty()) error = copy.error();
      summary.reset();
    }
  } else if (summary) {
    error = "无法读取临时的演示数据库: " + toUtf8(source.error().message);
    summary.reset();
  }
  std::filesystem::remove_all(dir, ec);
  return summary;
}

}  // namespace korvex::cli
