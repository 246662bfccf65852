#include "sqlite/sql_dialect.hpp"

#include "sqlite/field_types.hpp"

namespace korvex::ds {

namespace {

bool isWordChar(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
         c == u'_' || c >= 0x80;
}

bool sameUpper(std::u16string_view word, std::u16string_view upper) {
  if (word.size() != upper.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    char16_t c = word[i];
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 32);
    if (c != upper[i]) return false;
  }
  return true;
}

// The literal starting at the quote `i`; returns the index after it, or
// npos when it is not closed.
std::size_t literalEnd(std::u16string_view sql, std::size_t i, bool& doubled) {
  std::size_t j = i + 1;
  while (j < sql.size()) {
    if (sql[j] == u'\'') {
      if (j + 1 < sql.size() && sql[j + 1] == u'\'') {
        doubled = true;
        j += 2;
        continue;
      }
      return j + 1;
    }
    ++j;
  }
  return std::u16string_view::npos;
}

}  // namespace

std::u16string adaptSql(std::u16string_view sql, std::span<const FunctionRename> renames) {
  std::u16string out;
  out.reserve(sql.size() + 16);
  std::size_t i = 0;
  while (i < sql.size()) {
    const char16_t c = sql[i];
    if (c == u'\'') {
      bool doubled = false;
      const std::size_t end = literalEnd(sql, i, doubled);
      if (end == std::u16string_view::npos) {  // unclosed: the database will say so
        out.append(sql.substr(i));
        break;
      }
      const std::u16string_view body = sql.substr(i + 1, end - i - 2);
      const auto date = doubled ? std::nullopt : parseDateText(body);
      out += u'\'';
      if (date) {
        out += isoDateText(*date);
      } else {
        out.append(body);
      }
      out += u'\'';
      i = end;
    } else if (c == u'"' || c == u'[') {
      // A quoted name is copied whole: a quote inside it starts no literal.
      const std::size_t close = sql.find(c == u'"' ? u'"' : u']', i + 1);
      const std::size_t stop = close == std::u16string_view::npos ? sql.size() : close + 1;
      out.append(sql.substr(i, stop - i));
      i = stop;
    } else if (isWordChar(c)) {
      std::size_t j = i;
      while (j < sql.size() && isWordChar(sql[j])) ++j;
      const std::u16string_view word = sql.substr(i, j - i);
      std::size_t k = j;
      while (k < sql.size() && (sql[k] == u' ' || sql[k] == u'\t')) ++k;
      std::u16string_view replacement = word;
      if (k < sql.size() && sql[k] == u'(') {
        for (const FunctionRename& r : renames) {
          if (sameUpper(word, r.from)) replacement = r.to;
        }
      }
      out.append(replacement);
      i = j;
    } else {
      out += c;
      ++i;
    }
  }
  return out;
}

}  // namespace korvex::ds
