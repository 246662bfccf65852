// The tokens of an SQL text, for the dialect's adaptation and its rewrites:
// what is a quoted literal, a quoted name or a comment is known once, so
// that nothing inside one is ever taken for code.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace korvex::ds {

enum class SqlTokenKind {
  Blank,    // white space
  Comment,  // "-- ..." up to the line's end, or "/* ... */"
  Word,     // a keyword, a bare name or a number: letters, digits, "_", non-ASCII
  Name,     // a quoted name: "name", [name] or `name`
  Text,     // a quoted literal: 'text', '' for a quote inside
  Symbol,   // an operator or punctuation: "(", ",", "=", "<=", "||", ...
};

struct SqlToken {
  SqlTokenKind kind;
  std::size_t begin;  // offset in the text, in code units
  std::size_t size;
  bool closed = true;  // false for a literal, name or comment the text ends inside
};

/// The text cut into tokens that together cover it exactly, in order.
/// Works on UTF-16 and on UTF-8 alike (every non-ASCII unit is a word's).
template <class Char>
std::vector<SqlToken> sqlTokens(std::basic_string_view<Char> sql);

/// Whether a word is `upper` (an ASCII upper-case word) in any letter case.
template <class Char>
bool isWord(std::basic_string_view<Char> word, std::string_view upper);

/// Where columns can be added at the end of the select list of a statement
/// that reads each of its rows from one row of one table: before its FROM
/// (so that ORDER BY 1 still means the first column shown). None for
/// anything else: DISTINCT, GROUP BY and compounds make a result row of
/// several rows, a join of several tables, and other statements have no
/// select list.
std::optional<std::size_t> selectListEnd(std::string_view sql);

extern template std::vector<SqlToken> sqlTokens(std::string_view);
extern template std::vector<SqlToken> sqlTokens(std::u16string_view);
extern template bool isWord(std::string_view, std::string_view);
extern template bool isWord(std::u16string_view, std::string_view);

}  // namespace korvex::ds
