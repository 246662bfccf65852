// The SQL functions: DoSQL runs a script of SQL statements and gives the
// first field of the last result, DoSqlEx gives the last result as an
// array.
#include <array>
#include <vector>

#include "engine/context.hpp"
#include "engine/script_reader.hpp"
#include "functions/families.hpp"
#include "functions/source_query.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::fn {

namespace {

constexpr std::int32_t kSqlFailed = 30;

// Cut at CR, at LF or at the pair CR LF; a text without a final break is
// read as if it had one, and empty lines stay (as empty texts).
std::vector<std::u16string_view> splitSqlLines(std::u16string_view text) {
  std::vector<std::u16string_view> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t brk = text.find_first_of(u"\r\n", start);
    if (brk == std::u16string_view::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    lines.push_back(text.substr(start, brk - start));
    start = brk + ((text[brk] == u'\r' && brk + 1 < text.size() && text[brk + 1] == u'\n') ? 2 : 1);
  }
  return lines;
}

// "use NAME": the database NAME, trimmed.
bool parseUseStatement(std::u16string_view line, std::u16string_view& database) {
  const std::u16string_view t = trimBlanks(firstLine(line));
  if (t.size() < 4 || !equalsNoCase(t.substr(0, 4), u"use ")) return false;
  database = trimBlanks(t.substr(4));
  return true;
}

bool isGo(std::u16string_view line) { return equalsNoCase(line, u"go"); }

std::int32_t stateOf(const ObjectRef& obj) {
  return vb::toLong(getMember(obj, u"State"), Locale::zhCN());
}

void closeIfOpen(const ObjectRef& connection) {
  if (connection && stateOf(connection) == 1) callMember(connection, u"Close");
}

ObjectRef newPrivateConnection(Context& ctx, const ObjectRef& host) {
  ObjectRef c = createObject(ctx, u"Connection");
  setMember(c, u"ConnectionString", getMember(host, u"ConnectionString"));
  return c;
}

// The rows of an open record set as a two-dimensional array with one spare
// row and one spare column (both upper bounds are the counts), field names
// in row 0 with the header flag; Booleans become "是"/"否" and numeric
// texts get a leading apostrophe so that a spreadsheet keeps them as text.
Value recordsetToArray(const ObjectRef& rs, bool header, const Locale& loc) {
  const ObjectRef fields = objectOf(getMember(rs, u"Fields"));
  const std::int32_t f = vb::toLong(getMember(fields, u"Count"), loc);
  std::int32_t r = 0;
  const auto ignoring = [](auto&& step) {
    try {
      step();
    } catch (const vb::RuntimeError&) {
    }
  };
  ignoring([&] { callMember(rs, u"MoveLast"); });
  ignoring([&] { r = vb::toLong(getMember(rs, u"RecordCount"), loc); });
  if (header) ++r;
  ignoring([&] {
    if (!vb::toBoolean(getMember(rs, u"BOF"), loc)) callMember(rs, u"MoveFirst");
  });

  Array table({{0, r + 1}, {0, f + 1}});
  auto& cells = table.elements();
  const auto cell = [&](std::int32_t row, std::int32_t col) -> Value& {
    return cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(f + 1) +
                 static_cast<std::size_t>(col)];
  };
  std::vector<ObjectRef> columns;
  for (std::int32_t j = 0; j < f; ++j) {
    const std::array<Value, 1> index{Value::lng(j)};
    columns.push_back(objectOf(getMember(fields, u"Item", index)));
    if (header) cell(0, j) = getMember(columns.back(), u"Name");
  }
  for (std::int32_t row = header ? 1 : 0; !vb::toBoolean(getMember(rs, u"EOF"), loc); ++row) {
    for (std::int32_t j = 0; j < f; ++j) {
      const ObjectRef& field = columns[static_cast<std::size_t>(j)];
      Value v = getMember(field, u"Value");
      const std::int32_t type = vb::toLong(getMember(field, u"Type"), loc);
      if (type == 11) {
        const bool no = v.isNull() || vb::toDouble(v, loc) == 0;
        v = Value::string(no ? u"否" : u"是");
      } else if ((type == 129 || type == 200 || type == 202 || type == 130) && !v.isNull() &&
                 vb::isNumeric(v, loc)) {
        v = Value::string(u"'" + vb::toString(v, loc));
      }
      if (row <= r) cell(row, j) = std::move(v);
    }
    callMember(rs, u"MoveNext");
  }
  return Value::array(std::move(table));
}

// The statement list of DoSQL and DoSqlEx. DoSQL runs every statement on
// the host connection, even after a use line (the private connection it
// re-opens serves nothing else); DoSqlEx runs them in record sets of its
// own, on the private connection once a use line was seen.
std::int32_t runSqlScript(Call& call, std::u16string_view sql, bool asArray, bool header,
                          Value& result, std::u16string_view name) {
  Context& ctx = call.context();
  const Locale& loc = call.locale();
  ObjectRef privateConnection;
  ObjectRef rs;
  try {
    const ObjectRef host = hostConnection(ctx);
    privateConnection = newPrivateConnection(ctx, host);
    callMember(privateConnection, u"Open");
    bool useSeen = false;
    for (const std::u16string_view raw : splitSqlLines(sql)) {
      const std::u16string_view line = trimBlanks(raw);
      std::u16string_view database;
      if (parseUseStatement(line, database)) {
        closeIfOpen(privateConnection);
        privateConnection = newPrivateConnection(ctx, host);
        const std::array<Value, 1> key{Value::string(u"Initial Catalog")};
        setMember(objectOf(getMember(privateConnection, u"Properties", key)), u"Value",
                  Value::string(database));
        callMember(privateConnection, u"Open");
        useSeen = true;
        continue;
      }
      if (line.empty() || isGo(line)) continue;
      if (!asArray) {
        const std::array<Value, 1> text{Value::string(line)};
        rs = objectOf(callMember(host, u"Execute", text));
        continue;
      }
      rs = createObject(ctx, u"Recordset");
      setMember(rs, u"CursorLocation", Value::lng(3));
      setMember(rs, u"CursorType", Value::lng(3));
      setMember(rs, u"LockType", Value::lng(3));
      const std::array<Value, 5> open{Value::string(line),
                                      Value::object(useSeen ? privateConnection : host),
                                      Value::lng(-1), Value::lng(-1), Value::lng(-1)};
      callMember(rs, u"Open", open);
    }
    // No statement ran: the missing record set fails as the platform's
    // unset object would.
    if (!rs) vb::raise(vb::kObjectNotSet);
    if (stateOf(rs) != 0) {
      if (asArray) {
        result = recordsetToArray(rs, header, loc);
      } else if (vb::toBoolean(getMember(rs, u"EOF"), loc)) {
        result = Value::null();
      } else {
        const std::array<Value, 1> first{Value::lng(0)};
        result = getMember(objectOf(getMember(rs, u"Fields", first)), u"Value");
      }
    } else if (asArray) {
      result = Value::array(Array());
    }
    rs.reset();
    closeIfOpen(privateConnection);
    return 0;
  } catch (const vb::RuntimeError& f) {
    rs.reset();
    try {
      closeIfOpen(privateConnection);
    } catch (const vb::RuntimeError&) {
    }
    std::u16string message = u"函数:";
    message += name;
    message += u"\r\n";
    message += f.description();
    return call.fail(kSqlFailed, std::move(message));
  }
}

std::int32_t executeSql(Call& call, Value& result) {
  // Whatever the argument is, its text is the SQL.
  const std::u16string sql = vb::toString(call.arg(1), call.locale());
  return runSqlScript(call, sql, false, false, result, call.entry().displayName());
}

std::int32_t doSqlEx(Call& call, Value& result) {
  const std::u16string sql = vb::toString(call.arg(1), call.locale());
  // Only a Boolean sets the header flag; anything else leaves it off.
  const bool header =
      call.count() == 2 && call.arg(2).type() == VarType::Boolean && call.arg(2).booleanValue();
  return runSqlScript(call, sql, true, header, result, call.entry().displayName());
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"DoSQL", u"ExecuteSQL"}, 1, 1, {ArgCheck::Any}, executeSql,
     {u"SQL", ResultKind::Any,
      u"逐行执行 SQL (可含 use 库名, go); 得最后结果第一行第一个字段, 无行为 Null"}},
    {{u"DoSqlEx"}, 1, 2, {ArgCheck::Any, ArgCheck::Any}, doSqlEx,
     {u"SQL[, 含标题]", ResultKind::Array,
      u"如 DoSQL, 但得最后结果的二维数组; 含标题为 True 时第 0 行为字段名"}},
};
// clang-format on

}  // namespace

Family sqlFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
