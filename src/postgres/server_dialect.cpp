#include "postgres/server_dialect.hpp"

#include <algorithm>
#include <array>
#include <charconv>

#include "sqlite/sql_dialect.hpp"
#include "sqlite/sql_tokens.hpp"

namespace korvex::ds {

namespace {

// The functions the session defines (see the backend's session setup);
// ISNULL is the server's own COALESCE.
constexpr FunctionRename kServerRenames[] = {
    {u"YEAR", u"pg_temp.korvex_year"},
    {u"MONTH", u"pg_temp.korvex_month"},
    {u"DAY", u"pg_temp.korvex_day"},
    {u"LEFT", u"pg_temp.korvex_left"},
    {u"RIGHT", u"pg_temp.korvex_right"},
    {u"LEN", u"pg_temp.korvex_len"},
    {u"ISNULL", u"coalesce"},
    {u"GETDATE", u"pg_temp.korvex_getdate"},
};

struct TypeRename {
  std::string_view from;  // upper case
  std::u16string_view to;
  bool domain;
};

// Column types of the payroll database the server lacks or spells
// otherwise. money and bit become domains, so that the column's declared
// type still says what it holds (a Currency, a Boolean) while it stores a
// number; the server's own money type formats by locale.
constexpr TypeRename kTypeRenames[] = {
    {"MONEY", u"public.korvex_money", true},
    {"SMALLMONEY", u"public.korvex_money", true},
    {"BIT", u"public.korvex_bit", true},
    {"DATETIME", u"timestamp(0)", false},
    {"SMALLDATETIME", u"timestamp(0)", false},
    {"NVARCHAR", u"varchar", false},
    {"NCHAR", u"char", false},
    {"NTEXT", u"text", false},
    {"TINYINT", u"smallint", false},
    {"IMAGE", u"bytea", false},
    {"VARBINARY", u"bytea", false},
    {"BLOB", u"bytea", false},
};

std::u16string quotedLower(std::u16string_view name) {
  std::u16string out = u"\"";
  for (char16_t c : name) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
    if (c == u'"') out += u'"';
    out += c;
  }
  return out + u"\"";
}

// The inside of a quoted name token, its doubled closing quotes undone.
std::u16string nameInside(std::u16string_view token) {
  const char16_t close = token.front() == u'[' ? u']' : token.front();
  std::u16string inside;
  for (std::size_t i = 1; i + 1 < token.size(); ++i) {
    inside += token[i];
    if (close != u']' && token[i] == close && token[i + 1] == close) ++i;
  }
  return inside;
}

template <class Char>
bool allDigits(std::basic_string_view<Char> s) {
  return !s.empty() && std::all_of(s.begin(), s.end(), [](Char c) { return c >= '0' && c <= '9'; });
}

std::u16string dollar(std::size_t n) {
  const std::string digits = std::to_string(n);
  return u"$" + std::u16string(digits.begin(), digits.end());
}

std::size_t numberOf(std::u16string_view digits) {
  std::size_t n = 0;
  for (char16_t c : digits) n = n * 10 + static_cast<std::size_t>(c - u'0');
  return n;
}

// Functions whose answer depends on nothing but their arguments and the
// data: a query calling only these gives the same rows in one snapshot.
// Anything else (the clock, random numbers, sequences, functions of the
// site's own) may not.
constexpr std::string_view kSteadyCalls[] = {
    "SUM",          "COUNT",      "AVG",           "MIN",          "MAX",        "COALESCE",
    "EXISTS",       "IN",         "ANY",           "ALL",          "CAST",       "ROUND",
    "ABS",          "RTRIM",      "TRIM",          "LTRIM",        "UPPER",      "LOWER",
    "LENGTH",       "SUBSTR",     "SUBSTRING",     "LEFT",         "RIGHT",      "CHR",
    "CONCAT",       "NULLIF",     "AND",           "OR",           "NOT",        "BETWEEN",
    "ON",           "WHERE",      "FROM",          "SELECT",       "AS",         "WHEN",
    "THEN",         "ELSE",       "KORVEX_YEAR",   "KORVEX_MONTH", "KORVEX_DAY", "KORVEX_LEFT",
    "KORVEX_RIGHT", "KORVEX_LEN", "KORVEX_LENGTH", "HAVING",       "BY",         "LIKE",
    "IS",
};

}  // namespace

bool namesServer(std::string_view database) {
  if (database.starts_with("postgresql://") || database.starts_with("postgres://")) return true;
  // key=value settings: a word, "=", and among them the host or database.
  const auto setting = [&](std::string_view key) {
    for (std::size_t at = database.find(key); at != std::string_view::npos;
         at = database.find(key, at + 1)) {
      const bool starts = at == 0 || database[at - 1] == ' ';
      std::size_t eq = at + key.size();
      while (eq < database.size() && database[eq] == ' ') ++eq;
      if (starts && eq < database.size() && database[eq] == '=') return true;
    }
    return false;
  };
  return setting("host") || setting("dbname") || setting("service");
}

ServerText adaptForServer(std::u16string_view written) {
  const std::u16string sql = adaptSql(written, kServerRenames);
  const std::u16string_view text = sql;
  const std::vector<SqlToken> tokens = sqlTokens(text);
  ServerText out;
  out.sql.reserve(sql.size() + 16);
  bool statementStart = true, declares = false;
  std::size_t bare = 0;  // "?" placeholders so far
  for (std::size_t k = 0; k < tokens.size(); ++k) {
    const SqlToken& t = tokens[k];
    const std::u16string_view piece = text.substr(t.begin, t.size);
    const SqlToken* next = k + 1 < tokens.size() ? &tokens[k + 1] : nullptr;
    const std::u16string_view after = next ? text.substr(next->begin, next->size) : u"";
    if (t.kind == SqlTokenKind::Word && statementStart) {
      declares = isWord(piece, "CREATE") || isWord(piece, "ALTER");
      statementStart = false;
    }
    // "[]" names nothing in the payroll texts; on the server it is an array.
    if (t.kind == SqlTokenKind::Name && t.closed && piece != u"[]") {
      out.sql += quotedLower(nameInside(piece));
    } else if (t.kind == SqlTokenKind::Symbol && piece == u"?") {
      if (next && next->kind == SqlTokenKind::Word && allDigits(after)) {
        out.sql += dollar(numberOf(after));
        ++k;
      } else {
        out.sql += dollar(++bare);
      }
    } else if (t.kind == SqlTokenKind::Symbol && piece == u":" && next &&
               next->kind == SqlTokenKind::Word && after.size() > 1 &&
               (after[0] == u'p' || after[0] == u'P') && allDigits(after.substr(1)) &&
               !(k > 0 && text.substr(tokens[k - 1].begin, tokens[k - 1].size) == u":")) {
      out.sql += dollar(numberOf(after.substr(1)) + 1);
      ++k;
    } else if (t.kind == SqlTokenKind::Word && declares) {
      const auto type = std::find_if(std::begin(kTypeRenames), std::end(kTypeRenames),
                                     [&](const TypeRename& r) { return isWord(piece, r.from); });
      if (type != std::end(kTypeRenames)) {
        out.sql += type->to;
        out.usesDomains = out.usesDomains || type->domain;
      } else {
        out.sql += piece;
      }
    } else {
      if (t.kind == SqlTokenKind::Symbol && piece == u";") statementStart = true;
      out.sql += piece;
    }
  }
  return out;
}

std::vector<std::string_view> serverStatements(std::string_view sql) {
  std::vector<std::string_view> statements;
  std::size_t start = 0;
  bool code = false;  // the current piece holds more than blanks and comments
  for (const SqlToken& t : sqlTokens(sql)) {
    if (t.kind == SqlTokenKind::Symbol && sql[t.begin] == ';') {
      if (code) statements.push_back(sql.substr(start, t.begin - start));
      start = t.begin + 1;
      code = false;
    } else if (t.kind != SqlTokenKind::Blank && t.kind != SqlTokenKind::Comment) {
      code = true;
    }
  }
  if (code) statements.push_back(sql.substr(start));
  return statements;
}

std::string firstWord(std::string_view statement) {
  for (const SqlToken& t : sqlTokens(statement)) {
    if (t.kind == SqlTokenKind::Blank || t.kind == SqlTokenKind::Comment) continue;
    std::string word(statement.substr(t.begin, t.size));
    for (char& c : word) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return t.kind == SqlTokenKind::Word ? word : std::string();
  }
  return {};
}

TransactionWord transactionWord(std::string_view statement) {
  std::vector<std::string_view> words;  // up to the first token that is not a word
  bool onlyWords = true;
  for (const SqlToken& t : sqlTokens(statement)) {
    if (t.kind == SqlTokenKind::Blank || t.kind == SqlTokenKind::Comment) continue;
    if (t.kind != SqlTokenKind::Word) {
      onlyWords = false;
      break;
    }
    words.push_back(statement.substr(t.begin, t.size));
  }
  if (words.empty()) return TransactionWord::None;
  const std::string_view w = words[0];
  const bool plain =
      onlyWords && (words.size() == 1 ||
                    (words.size() == 2 && (isWord(words[1], "TRANSACTION") ||
                                           isWord(words[1], "WORK") || isWord(words[1], "TRAN"))));
  if (isWord(w, "BEGIN") && plain) return TransactionWord::Begin;
  if (isWord(w, "START") && onlyWords && words.size() == 2 && isWord(words[1], "TRANSACTION")) {
    return TransactionWord::Begin;
  }
  if ((isWord(w, "COMMIT") || isWord(w, "END")) && plain) return TransactionWord::Commit;
  if (isWord(w, "ROLLBACK") && plain) return TransactionWord::Rollback;
  const bool savepoint =
      std::any_of(words.begin(), words.end(), [](std::string_view x) { return isWord(x, "TO"); });
  if (isWord(w, "COMMIT") || isWord(w, "END") || isWord(w, "ABORT") ||
      (isWord(w, "ROLLBACK") && !savepoint) ||
      (isWord(w, "PREPARE") && words.size() > 1 && isWord(words[1], "TRANSACTION"))) {
    return TransactionWord::Ends;
  }
  return TransactionWord::None;
}

std::vector<bool> placeholdersUsed(std::string_view statement) {
  std::vector<bool> used;
  const std::vector<SqlToken> tokens = sqlTokens(statement);
  for (std::size_t k = 0; k + 1 < tokens.size(); ++k) {
    if (tokens[k].kind != SqlTokenKind::Symbol || statement[tokens[k].begin] != '$') continue;
    const std::string_view digits = statement.substr(tokens[k + 1].begin, tokens[k + 1].size);
    if (tokens[k + 1].kind != SqlTokenKind::Word || !allDigits(digits)) continue;
    std::size_t n = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), n);
    if (n == 0 || n > 65535) continue;
    if (used.size() < n) used.resize(n, false);
    used[n - 1] = true;
  }
  return used;
}

bool steadyQuery(std::string_view sql) {
  const std::vector<SqlToken> tokens = sqlTokens(sql);
  bool first = true;
  for (std::size_t k = 0; k < tokens.size(); ++k) {
    const SqlToken& t = tokens[k];
    if (t.kind != SqlTokenKind::Word) continue;
    const std::string_view word = sql.substr(t.begin, t.size);
    if (first && !isWord(word, "SELECT")) return false;
    first = false;
    for (std::string_view locks : {"FOR", "INTO"}) {
      if (isWord(word, locks)) return false;
    }
    std::size_t next = k + 1;
    while (next < tokens.size() && tokens[next].kind == SqlTokenKind::Blank) ++next;
    const bool called = next < tokens.size() && tokens[next].kind == SqlTokenKind::Symbol &&
                        sql[tokens[next].begin] == '(';
    if (called && std::none_of(std::begin(kSteadyCalls), std::end(kSteadyCalls),
                               [&](std::string_view steady) { return isWord(word, steady); })) {
      return false;
    }
  }
  return !first;
}

}  // namespace korvex::ds
