// `korvex check`: every file read and checked, the findings printed as
// "FILE:LINE:COLUMN: 错误: ..." with the line and a caret under the place,
// or as one JSON array.
#include "check_command.hpp"

#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "json.hpp"
#include "korvex/batch.hpp"
#include "korvex/check.hpp"
#include "korvex/postgres.hpp"
#include "korvex/sqlite.hpp"
#include "korvex/value.hpp"
#include "run_command.hpp"  // the exit statuses

namespace korvex::cli {

namespace {

struct CheckOptions {
  bool json = false;
  std::string db;
  std::optional<std::string> record;
  std::vector<std::string> files;
};

// Parsed options, or nullopt with the reason in `error`.
std::optional<CheckOptions> parseCheck(std::span<const std::string_view> args, std::string& error) {
  CheckOptions o;
  bool optionsEnded = false;
  for (std::size_t k = 0; k < args.size(); ++k) {
    const std::string_view arg = args[k];
    if (optionsEnded || arg.size() < 2 || arg[0] != '-') {
      o.files.emplace_back(arg);
    } else if (arg == "--") {
      optionsEnded = true;
    } else if (arg == "--json") {
      o.json = true;
    } else if (arg == "--db" || arg == "--record") {
      if (k + 1 == args.size() || args[k + 1].empty()) {
        error = "选项 " + std::string(arg) + " 需要一个值";
        return std::nullopt;
      }
      (arg == "--db" ? o.db : o.record.emplace()) = std::string(args[++k]);
    } else {
      error = "未知的选项 '" + std::string(arg) + "'";
      return std::nullopt;
    }
  }
  if (o.files.empty()) error = "缺少要检查的脚本文件";
  if (o.record.has_value() != !o.db.empty()) error = "--db 和 --record 要一起给出";
  if (!error.empty()) return std::nullopt;
  return o;
}

// The column names of the record's query on a database server: the query
// compiled by the server, not run.
std::optional<std::vector<std::u16string>> serverRecordFields(const CheckOptions& o,
                                                              std::string& error) {
  DatabaseResult<PostgresDatabase> opened = PostgresDatabase::open(o.db);
  if (!opened.ok()) {
    error = "无法连接数据库 '" + shownConnection(o.db) + "': " + toUtf8(opened.error().message);
    return std::nullopt;
  }
  const auto kind = opened.value().inspect(fromUtf8(*o.record));
  DatabaseResult<std::vector<std::u16string>> names =
      kind.ok() && kind.value() == SqliteDatabase::TextKind::Query
          ? opened.value().columnNames(fromUtf8(*o.record))
          : DatabaseResult<std::vector<std::u16string>>(kind.ok() ? DatabaseFailure{}
                                                                  : kind.error());
  if (!names.ok()) {
    error = "--record 必须是一条返回记录的查询语句";
    if (!names.error().message.empty()) error += ": " + toUtf8(names.error().message);
    return std::nullopt;
  }
  return std::move(names).value();
}

// The column names of the record's query: the database opened read-only,
// the query prepared but not run.
std::optional<std::vector<std::u16string>> recordFields(const CheckOptions& o, std::string& error) {
  if (isServerDatabase(o.db)) return serverRecordFields(o, error);
  auto opened = SqliteDatabase::open(o.db, SqliteDatabase::Mode::ReadOnly);
  if (!opened.ok()) {
    error = "无法打开数据库 '" + o.db + "': " + toUtf8(opened.error().message);
    return std::nullopt;
  }
  SqliteDatabase& db = opened.value();
  const auto kind = db.inspect(fromUtf8(*o.record));
  if (!kind.ok() || kind.value() != SqliteDatabase::TextKind::Query) {
    error = "--record 必须是一条返回记录的查询语句";
    if (!kind.ok()) error += ": " + toUtf8(kind.error().message);
    return std::nullopt;
  }
  auto statement = db.prepare(*o.record);
  if (!statement.ok()) {
    error = "--record 的查询无法执行: " + toUtf8(statement.error().message);
    return std::nullopt;
  }
  std::vector<std::u16string> fields;
  for (int c = 0; c < statement.value().columnCount(); ++c) {
    fields.push_back(fromUtf8(statement.value().columnName(c)));
  }
  return fields;
}

// Columns a character takes in a terminal: East Asian wide characters two.
int widthOf(char32_t c) {
  const bool wide = (c >= 0x1100 && c <= 0x115F) || (c >= 0x2E80 && c <= 0xA4CF) ||
                    (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) ||
                    (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFF60) ||
                    (c >= 0xFFE0 && c <= 0xFFE6) || c >= 0x20000;
  return wide ? 2 : 1;
}

// The blanks that put a caret under `column` (from 1) of `line`; tabs are
// kept so that the caret lines up however wide the terminal shows them.
std::string caretPadding(std::u16string_view line, int column) {
  std::string pad;
  int seen = 1;
  for (std::size_t k = 0; k < line.size() && seen < column; ++k, ++seen) {
    char32_t c = line[k];
    if (c >= 0xD800 && c <= 0xDBFF && k + 1 < line.size()) {
      c = 0x10000 + ((c - 0xD800) << 10) + (line[++k] - 0xDC00);
    }
    pad += c == u'\t' ? std::string("\t") : std::string(static_cast<std::size_t>(widthOf(c)), ' ');
  }
  return pad;
}

void printText(std::ostream& out, const std::string& file, std::u16string_view text,
               const std::vector<CheckFinding>& findings) {
  const std::vector<std::u16string_view> lines = scriptLines(text);
  for (const CheckFinding& f : findings) {
    const std::u16string_view line =
        f.line >= 1 && static_cast<std::size_t>(f.line) <= lines.size() ? lines[f.line - 1] : u"";
    out << file << ':' << f.line << ':' << f.column << ": "
        << (f.severity == CheckSeverity::Error ? "错误" : "警告") << ": " << toUtf8(f.message)
        << "\n    " << toUtf8(line) << "\n    " << caretPadding(line, f.column) << "^\n";
  }
}

std::string findingJson(const std::string& file, const CheckFinding& f) {
  return "{\"file\": " + jsonString(fromUtf8(file)) + ", \"line\": " + std::to_string(f.line) +
         ", \"column\": " + std::to_string(f.column) + ", \"severity\": \"" +
         (f.severity == CheckSeverity::Error ? "error" : "warning") + "\", \"code\": \"" + f.code +
         "\", \"message\": " + jsonString(f.message) + "}";
}

}  // namespace

int runCheck(std::span<const std::string_view> args, std::ostream& out, std::ostream& err) {
  std::string error;
  const std::optional<CheckOptions> options = parseCheck(args, error);
  CheckSettings settings;
  if (options && !options->db.empty()) {
    if (auto fields = recordFields(*options, error)) settings.fields = std::move(*fields);
  }
  if (!error.empty()) {
    err << "korvex check: " << error << "\n用 'korvex --help' 查看用法。\n";
    return kExitUsage;
  }
  bool unreadable = false;
  bool found = false;
  std::vector<std::string> json;
  for (const std::string& file : options->files) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    if (!in.good() && !in.eof()) {
      err << "korvex check: 无法读取文件 '" << file << "'\n";
      unreadable = true;
      continue;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    const std::u16string text = fromUtf8(bytes);
    const std::vector<CheckFinding> findings = checkScript(text, settings);
    found = found || !findings.empty();
    if (!options->json) printText(out, file, text, findings);
    for (const CheckFinding& f : findings) json.push_back(findingJson(file, f));
  }
  if (options->json) {
    out << '[';
    for (std::size_t k = 0; k < json.size(); ++k) out << (k == 0 ? "" : ",\n ") << json[k];
    out << "]\n";
  }
  out.flush();
  if (unreadable || !out) return kExitUsage;
  return found ? kExitScriptFailed : kExitSuccess;
}

}  // namespace korvex::cli
