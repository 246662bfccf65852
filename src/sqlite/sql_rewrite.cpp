#include "sqlite/sql_rewrite.hpp"

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "sqlite/sql_tokens.hpp"

namespace korvex::ds {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

enum class Fn { Year, Month, Rtrim };

// One filter "F(col) = literal", with the parentheses around it.
struct Filter {
  Fn fn;
  std::size_t start, end;  // its tokens, with the parentheses around it
  std::size_t call;        // the function's name
  std::size_t column;      // the column's first token (a name, or the qualifier)
  std::size_t columnEnd;
  std::size_t literal;
  std::string qualifier, name;
  long value = 0;  // of a YEAR or MONTH filter
};

bool equalNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

std::string twoDigits(int n) { return {char('0' + n / 10), char('0' + n % 10)}; }

std::string firstOfMonth(long year, int month) {
  std::string y = std::to_string(year);
  while (y.size() < 4) y.insert(y.begin(), '0');
  return y + "-" + twoDigits(month) + "-01";
}

class Rewriter {
 public:
  Rewriter(std::string_view sql, const ColumnTest& holds) : sql_(sql), holds_(holds) {
    for (const SqlToken& t : sqlTokens(sql)) {
      if (t.kind != SqlTokenKind::Blank && t.kind != SqlTokenKind::Comment) tokens_.push_back(t);
    }
  }

  std::optional<std::string> run() {
    // EXPLAIN shows the plan of the statement as it runs: rewritten.
    const std::size_t first = !word(0, "EXPLAIN") ? 0 : word(1, "QUERY") && word(2, "PLAN") ? 3 : 1;
    if (!pairParentheses() || !anyWord(first, {"SELECT", "DELETE", "INSERT", "REPLACE"})) {
      return std::nullopt;
    }
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      if (word(i, "WITH")) return std::nullopt;
    }
    std::string out;
    std::size_t copied = 0;  // offset in the text
    std::size_t i = 0;
    while (i < tokens_.size()) {
      std::string replacement;
      std::size_t from = 0, to = 0;  // the tokens replaced
      if (const std::optional<Filter> f = filterAt(i); f && f->start >= next_) {
        replace(*f, replacement, from, to);
      }
      if (replacement.empty()) {
        ++i;
        continue;
      }
      out.append(sql_.substr(copied, tokens_[from].begin - copied));
      out += replacement;
      copied = tokens_[to - 1].begin + tokens_[to - 1].size;
      next_ = i = to;
    }
    if (copied == 0) return std::nullopt;
    out.append(sql_.substr(copied));
    return out;
  }

 private:
  std::string_view text(std::size_t i) const {
    return sql_.substr(tokens_[i].begin, tokens_[i].size);
  }
  std::string_view span(std::size_t from, std::size_t to) const {
    return sql_.substr(tokens_[from].begin,
                       tokens_[to - 1].begin + tokens_[to - 1].size - tokens_[from].begin);
  }
  bool word(std::size_t i, std::string_view upper) const {
    return i < tokens_.size() && tokens_[i].kind == SqlTokenKind::Word && isWord(text(i), upper);
  }
  bool anyWord(std::size_t i, std::initializer_list<std::string_view> words) const {
    for (std::string_view w : words) {
      if (word(i, w)) return true;
    }
    return false;
  }
  bool symbol(std::size_t i, std::string_view s) const {
    return i < tokens_.size() && tokens_[i].kind == SqlTokenKind::Symbol && text(i) == s;
  }
  // A name: a quoted one, or a word that is not a number.
  bool isName(std::size_t i) const {
    if (i >= tokens_.size()) return false;
    if (tokens_[i].kind == SqlTokenKind::Name) return tokens_[i].closed;
    return tokens_[i].kind == SqlTokenKind::Word && !(text(i)[0] >= '0' && text(i)[0] <= '9');
  }
  std::string nameOf(std::size_t i) const {
    const std::string_view t = text(i);
    if (tokens_[i].kind != SqlTokenKind::Name) return std::string(t);
    std::string name;
    const char close = t[0] == '[' ? ']' : t[0];
    for (std::size_t k = 1; k + 1 < t.size(); ++k) {
      name += t[k];
      if (t[k] == close && close != ']') ++k;  // a doubled quote
    }
    return name;
  }

  // The parentheses: each token's innermost enclosing "(" and each "(" its
  // ")"; false when they do not pair.
  bool pairParentheses() {
    parent_.assign(tokens_.size(), kNone);
    match_.assign(tokens_.size(), kNone);
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
      if (symbol(i, ")")) {
        if (open.empty()) return false;
        match_[open.back()] = i;
        match_[i] = open.back();
        open.pop_back();
      }
      parent_[i] = open.empty() ? kNone : open.back();
      if (symbol(i, "(")) open.push_back(i);
    }
    return open.empty();
  }

  // The filter whose function name is token i.
  std::optional<Filter> filterAt(std::size_t i) const {
    Filter f{};
    if (word(i, "YEAR")) {
      f.fn = Fn::Year;
    } else if (word(i, "MONTH")) {
      f.fn = Fn::Month;
    } else if (word(i, "RTRIM")) {
      f.fn = Fn::Rtrim;
    } else {
      return std::nullopt;
    }
    f.call = i;
    std::size_t k = i + 1;
    if (!symbol(k++, "(") || !isName(k)) return std::nullopt;
    f.column = k;
    f.name = nameOf(k++);
    if (symbol(k, ".") && isName(k + 1)) {
      f.qualifier = std::move(f.name);
      f.name = nameOf(k + 1);
      k += 2;
    }
    f.columnEnd = k;
    if (!symbol(k++, ")") || !(symbol(k, "=") || symbol(k, "=="))) return std::nullopt;
    f.literal = ++k;
    if (k >= tokens_.size()) return std::nullopt;
    const std::string_view lit = text(k);
    if (f.fn == Fn::Rtrim) {
      if (tokens_[k].kind != SqlTokenKind::Text || !tokens_[k].closed) return std::nullopt;
    } else {
      if (tokens_[k].kind != SqlTokenKind::Word || lit.size() > 9) return std::nullopt;
      for (char c : lit) {
        if (c < '0' || c > '9') return std::nullopt;
        f.value = f.value * 10 + (c - '0');
      }
    }
    f.start = i;
    f.end = k + 1;
    while (f.start > 0 && symbol(f.start - 1, "(") && match_[f.start - 1] == f.end) {
      --f.start;
      ++f.end;
    }
    return f;
  }

  // The filter starting at token i (after its parentheses).
  std::optional<Filter> filterFrom(std::size_t i) const {
    std::size_t call = i;
    while (symbol(call, "(")) ++call;
    std::optional<Filter> f = filterAt(call);
    if (f && f->start != i) return std::nullopt;
    return f;
  }

  // The rewrite of the filter f, and of the one it is ANDed with when they
  // are YEAR and MONTH of one column; nothing when no rewrite may apply.
  void replace(const Filter& f, std::string& replacement, std::size_t& from,
               std::size_t& to) const {
    const std::string_view column = span(f.column, f.columnEnd);
    if (f.fn == Fn::Rtrim) {
      if (!whole(f.start, f.end) || !columnHolds(f, ColumnKind::NoTrailingBlanks)) return;
      replacement = "(" + std::string(column) + " = " + std::string(text(f.literal)) + " AND " +
                    std::string(span(f.call, f.literal + 1)) + ")";
      from = f.call;
      to = f.literal + 1;
      return;
    }
    if (word(f.end, "AND")) {
      const std::optional<Filter> g = filterFrom(f.end + 1);
      if (g && g->fn != Fn::Rtrim && g->fn != f.fn && equalNoCase(g->name, f.name) &&
          equalNoCase(g->qualifier, f.qualifier)) {
        const long year = f.fn == Fn::Year ? f.value : g->value;
        const long month = f.fn == Fn::Month ? f.value : g->value;
        if (year >= 100 && month >= 1 && month <= 12 && year + (month == 12) <= 9999 &&
            whole(f.start, g->end) && columnHolds(f, ColumnKind::IsoDates)) {
          replacement = range(column, firstOfMonth(year, static_cast<int>(month)),
                              month == 12 ? firstOfMonth(year + 1, 1)
                                          : firstOfMonth(year, static_cast<int>(month) + 1));
          from = f.start;
          to = g->end;
          return;
        }
      }
    }
    if (f.fn == Fn::Year && f.value >= 100 && f.value <= 9998 && whole(f.start, f.end) &&
        columnHolds(f, ColumnKind::IsoDates)) {
      replacement = range(column, firstOfMonth(f.value, 1), firstOfMonth(f.value + 1, 1));
      from = f.call;
      to = f.literal + 1;
    }
  }

  static std::string range(std::string_view column, const std::string& first,
                           const std::string& after) {
    return "(" + std::string(column) + " >= '" + first + "' AND " + std::string(column) + " < '" +
           after + "')";
  }

  // Whether tokens [from, to) are a whole operand of AND or OR, so that
  // what stands for them may replace them.
  bool whole(std::size_t from, std::size_t to) const {
    const bool endsWell = to == tokens_.size() || symbol(to, ")") || symbol(to, ";") ||
                          anyWord(to, {"AND", "OR", "GROUP", "ORDER", "LIMIT", "HAVING", "WINDOW",
                                       "UNION", "INTERSECT", "EXCEPT", "RETURNING"});
    if (!endsWell || from == 0) return false;
    const std::size_t before = from - 1;
    if (symbol(before, "(") || word(before, "WHERE") || word(before, "OR")) return true;
    return word(before, "AND") && !closesBetween(before);
  }

  // Whether the AND at token i is the one of "x BETWEEN a AND b".
  bool closesBetween(std::size_t i) const {
    std::vector<std::size_t> level;  // the tokens before it at its level, back to a boundary
    for (std::size_t k = i; k-- > 0;) {
      if (symbol(k, ")")) {
        k = match_[k];
        continue;
      }
      if (k == parent_[i] || anyWord(k, {"WHERE", "ON", "HAVING", "WHEN", "THEN", "ELSE", "OR"})) {
        break;
      }
      level.push_back(k);
    }
    int open = 0;  // BETWEENs still waiting for their AND
    for (std::size_t n = level.size(); n-- > 0;) {
      if (word(level[n], "BETWEEN")) ++open;
      if (word(level[n], "AND") && open > 0) --open;
    }
    return open > 0;
  }

  // Whether the filter's column is one of the table the WHERE holding it
  // reads, and holds only values of the kind.
  bool columnHolds(const Filter& f, ColumnKind kind) const {
    // The query whose clause holds the filter: the innermost "(SELECT ...)"
    // around it, or the statement.
    std::size_t scope = parent_[f.start];
    while (scope != kNone && !word(scope + 1, "SELECT")) scope = parent_[scope];
    std::size_t at = f.start;
    while (parent_[at] != scope) at = parent_[at];
    std::size_t where = kNone;
    for (std::size_t k = at; k-- > 0 && k != scope;) {
      if (symbol(k, ")")) {
        k = match_[k];
        continue;
      }
      if (anyWord(k, {"SELECT", "FROM", "WHERE", "GROUP", "HAVING", "ORDER", "LIMIT", "ON", "USING",
                      "SET", "VALUES", "WINDOW", "UNION", "INTERSECT", "EXCEPT", "JOIN",
                      "RETURNING", "DO", "CONFLICT"})) {
        if (word(k, "WHERE")) where = k;
        break;
      }
    }
    // FROM t WHERE, FROM t a WHERE, FROM t AS a WHERE.
    if (where == kNone || where < 3) return false;
    std::size_t from = kNone;
    std::string alias;
    if (word(where - 2, "FROM") && isName(where - 1)) {
      from = where - 2;
    } else if (where >= 4 && word(where - 4, "FROM") && isName(where - 3) &&
               word(where - 2, "AS") && isName(where - 1)) {
      from = where - 4;
      alias = nameOf(where - 1);
    } else if (word(where - 3, "FROM") && isName(where - 2) && isName(where - 1)) {
      from = where - 3;
      alias = nameOf(where - 1);
    } else {
      return false;
    }
    if (!readsFrom(from, scope)) return false;
    const std::string table = nameOf(from + 1);
    if (!f.qualifier.empty() && !equalNoCase(f.qualifier, alias.empty() ? table : alias)) {
      return false;
    }
    return holds_(table, f.name, kind);
  }

  // Whether the FROM at token i is the one of a SELECT or DELETE (an
  // UPDATE's FROM joins its table with others).
  bool readsFrom(std::size_t i, std::size_t scope) const {
    if (i > 0 && word(i - 1, "DELETE")) return true;
    for (std::size_t k = i; k-- > 0 && k != scope;) {
      if (symbol(k, ")")) {
        k = match_[k];
        continue;
      }
      if (word(k, "SELECT")) return true;
      if (anyWord(k, {"SET", "UPDATE", "FROM", "WHERE", "VALUES"})) return false;
    }
    return false;
  }

  std::string_view sql_;
  const ColumnTest& holds_;
  std::vector<SqlToken> tokens_;  // without blanks and comments
  std::vector<std::size_t> parent_, match_;
  std::size_t next_ = 0;  // the first token not yet rewritten
};

}  // namespace

std::optional<std::string> rewriteFilters(std::string_view statement, const ColumnTest& holds) {
  return Rewriter(statement, holds).run();
}

}  // namespace korvex::ds
