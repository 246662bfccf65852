#include "sqlite/sql_dialect.hpp"

#include <algorithm>
#include <optional>
#include <vector>

#include "sqlite/field_types.hpp"
#include "sqlite/sql_tokens.hpp"

namespace korvex::ds {

namespace {

bool sameUpper(std::u16string_view word, std::u16string_view upper) {
  if (word.size() != upper.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    char16_t c = word[i];
    if (c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 32);
    if (c != upper[i]) return false;
  }
  return true;
}

}  // namespace

std::u16string adaptSql(std::u16string_view sql, std::span<const FunctionRename> renames) {
  std::u16string out;
  out.reserve(sql.size() + 16);
  const std::vector<SqlToken> tokens = sqlTokens(sql);
  for (std::size_t k = 0; k < tokens.size(); ++k) {
    const SqlToken& t = tokens[k];
    const std::u16string_view text = sql.substr(t.begin, t.size);
    if (t.kind == SqlTokenKind::Text && t.closed) {
      const std::u16string_view body = text.substr(1, text.size() - 2);
      const bool doubled = body.find(u'\'') != std::u16string_view::npos;
      const auto date = doubled ? std::nullopt : parseDateText(body);
      if (date) {
        out += u'\'';
        out += isoDateText(*date);
        out += u'\'';
        continue;
      }
    } else if (t.kind == SqlTokenKind::Word) {
      std::size_t after = k + 1;
      while (after < tokens.size() && tokens[after].kind == SqlTokenKind::Blank) ++after;
      if (after < tokens.size() && sql[tokens[after].begin] == u'(' &&
          tokens[after].kind == SqlTokenKind::Symbol) {
        const auto renamed = std::find_if(renames.begin(), renames.end(),
                                          [&](const auto& r) { return sameUpper(text, r.from); });
        if (renamed != renames.end()) {
          out.append(renamed->to);
          continue;
        }
      }
    }
    out.append(text);
  }
  return out;
}

}  // namespace korvex::ds
