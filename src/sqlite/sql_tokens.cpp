#include "sqlite/sql_tokens.hpp"

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>

namespace korvex::ds {

namespace {

template <class Char>
bool isWordChar(Char c) {
  const auto u = static_cast<std::uint32_t>(static_cast<std::make_unsigned_t<Char>>(c));
  return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '_' ||
         u >= 0x80;
}

template <class Char>
bool isBlank(Char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

// The end of a quoted token opened at `i` and closed by `close`; a doubled
// closing character stands for itself when `doubling`.
template <class Char>
std::size_t quotedEnd(std::basic_string_view<Char> sql, std::size_t i, Char close, bool doubling,
                      bool& closed) {
  for (std::size_t j = i + 1; j < sql.size(); ++j) {
    if (sql[j] != close) continue;
    if (doubling && j + 1 < sql.size() && sql[j + 1] == close) {
      ++j;
      continue;
    }
    return j + 1;
  }
  closed = false;
  return sql.size();
}

}  // namespace

template <class Char>
std::vector<SqlToken> sqlTokens(std::basic_string_view<Char> sql) {
  std::vector<SqlToken> tokens;
  std::size_t i = 0;
  while (i < sql.size()) {
    const Char c = sql[i];
    const Char next = i + 1 < sql.size() ? sql[i + 1] : Char{};
    SqlToken t{SqlTokenKind::Symbol, i, 1};
    std::size_t end = i + 1;
    if (isBlank(c)) {
      t.kind = SqlTokenKind::Blank;
      while (end < sql.size() && isBlank(sql[end])) ++end;
    } else if (c == '-' && next == '-') {
      t.kind = SqlTokenKind::Comment;
      end = std::min(sql.find(Char('\n'), i), sql.size());
    } else if (c == '/' && next == '*') {
      t.kind = SqlTokenKind::Comment;
      const Char star[] = {'*', '/'};
      const std::size_t close = sql.find(std::basic_string_view<Char>(star, 2), i + 2);
      t.closed = close != std::basic_string_view<Char>::npos;
      end = t.closed ? close + 2 : sql.size();
    } else if (c == '\'') {
      t.kind = SqlTokenKind::Text;
      end = quotedEnd(sql, i, Char('\''), true, t.closed);
    } else if (c == '"' || c == '`') {
      t.kind = SqlTokenKind::Name;
      end = quotedEnd(sql, i, c, true, t.closed);
    } else if (c == '[') {
      t.kind = SqlTokenKind::Name;
      end = quotedEnd(sql, i, Char(']'), false, t.closed);
    } else if (isWordChar(c)) {
      t.kind = SqlTokenKind::Word;
      while (end < sql.size() && isWordChar(sql[end])) ++end;
    } else {
      // Operators of two characters (and "->>") are one symbol.
      for (std::string_view op : {"->>", "<=", ">=", "<>", "!=", "==", "||", "<<", ">>", "->"}) {
        if (sql.size() - i >= op.size() &&
            std::equal(op.begin(), op.end(), sql.begin() + static_cast<std::ptrdiff_t>(i),
                       [](char a, Char b) { return Char(a) == b; })) {
          end = i + op.size();
          break;
        }
      }
    }
    t.size = end - i;
    tokens.push_back(t);
    i = end;
  }
  return tokens;
}

template <class Char>
bool isWord(std::basic_string_view<Char> word, std::string_view upper) {
  if (word.size() != upper.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    Char c = word[i];
    if (c >= 'a' && c <= 'z') c = static_cast<Char>(c - 32);
    if (c != Char(upper[i])) return false;
  }
  return true;
}

std::optional<std::size_t> selectListEnd(std::string_view sql) {
  std::vector<SqlToken> words;      // outside parentheses
  std::vector<std::size_t> commas;  // the same
  int depth = 0;
  for (const SqlToken& t : sqlTokens(sql)) {
    const std::string_view text = sql.substr(t.begin, t.size);
    if (t.kind == SqlTokenKind::Word && depth == 0) words.push_back(t);
    if (t.kind != SqlTokenKind::Symbol) continue;
    if (text == "," && depth == 0) commas.push_back(t.begin);
    depth += text == "(" ? 1 : text == ")" ? -1 : 0;
  }
  const auto word = [&](const SqlToken& t, std::string_view upper) {
    return isWord(sql.substr(t.begin, t.size), upper);
  };
  if (words.empty() || !word(words[0], "SELECT")) return std::nullopt;
  std::optional<std::size_t> from;
  std::size_t fromEnd = sql.size();
  for (const SqlToken& w : words) {
    for (std::string_view many : {"DISTINCT", "GROUP", "UNION", "INTERSECT", "EXCEPT", "JOIN"}) {
      if (word(w, many)) return std::nullopt;
    }
    if (!from && word(w, "FROM")) from = w.begin;
    for (std::string_view next : {"WHERE", "ORDER", "LIMIT", "WINDOW"}) {
      if (from && fromEnd == sql.size() && word(w, next)) fromEnd = w.begin;
    }
  }
  // FROM a, b: a join.
  if (!from || std::any_of(commas.begin(), commas.end(),
                           [&](std::size_t at) { return at > *from && at < fromEnd; })) {
    return std::nullopt;
  }
  return from;
}

template std::vector<SqlToken> sqlTokens(std::string_view);
template std::vector<SqlToken> sqlTokens(std::u16string_view);
template bool isWord(std::string_view, std::string_view);
template bool isWord(std::u16string_view, std::string_view);

}  // namespace korvex::ds
