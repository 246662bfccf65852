#include "workbook/cell_ref.hpp"

namespace korvex::xlsx {

namespace {

bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isLetter(char c) { return isUpper(c) || (c >= 'a' && c <= 'z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isNameChar(char c) { return isLetter(c) || isDigit(c) || c == '_' || c == '.'; }

}  // namespace

std::string columnName(std::int32_t column) {
  std::string out;
  while (column > 0) {
    const std::int32_t rem = (column - 1) % 26;
    out.insert(out.begin(), static_cast<char>('A' + rem));
    column = (column - 1) / 26;
  }
  return out;
}

std::string cellName(CellRef ref) { return columnName(ref.column) + std::to_string(ref.row); }

std::optional<CellRef> parseCellName(std::string_view text) {
  std::size_t i = 0;
  std::int64_t column = 0, row = 0;
  for (; i < text.size() && isLetter(text[i]) && i < 3; ++i) {
    column = column * 26 + ((text[i] & ~0x20) - 'A' + 1);
  }
  const std::size_t digits = i;
  for (; i < text.size() && isDigit(text[i]) && i - digits < 8; ++i)
    row = row * 10 + (text[i] - '0');
  if (digits == 0 || i == digits || i != text.size()) return std::nullopt;
  if (column > kMaxColumns || row < 1 || row > kMaxRows) return std::nullopt;
  return CellRef{static_cast<std::int32_t>(row), static_cast<std::int32_t>(column)};
}

std::string shiftFormula(std::string_view f, std::int32_t rows, std::int32_t columns) {
  std::string out;
  out.reserve(f.size() + 8);
  std::size_t i = 0;
  while (i < f.size()) {
    const char c = f[i];
    if (c == '"' || c == '\'') {  // a text or a quoted sheet name, copied whole
      const std::size_t start = i++;
      while (i < f.size() && f[i] != c) ++i;
      i = i < f.size() ? i + 1 : i;
      out.append(f.substr(start, i - start));
      continue;
    }
    const bool boundary = i == 0 || !isNameChar(f[i - 1]);
    if (!boundary || !(c == '$' || isLetter(c))) {
      out += c;
      ++i;
      continue;
    }
    // Try $?LETTERS$?DIGITS not followed by a name character or '('.
    std::size_t j = i;
    const bool absColumn = f[j] == '$';
    if (absColumn) ++j;
    const std::size_t letters = j;
    while (j < f.size() && isLetter(f[j]) && j - letters < 3) ++j;
    const std::size_t letterEnd = j;
    const bool absRow = j < f.size() && f[j] == '$';
    if (absRow) ++j;
    const std::size_t digits = j;
    while (j < f.size() && isDigit(f[j])) ++j;
    const bool isRef =
        letterEnd > letters && j > digits && (j == f.size() || (!isNameChar(f[j]) && f[j] != '('));
    const auto ref = isRef ? parseCellName(std::string(f.substr(letters, letterEnd - letters)) +
                                           std::string(f.substr(digits, j - digits)))
                           : std::nullopt;
    if (!ref) {
      // Not a reference: copy the whole word so its tail is not taken for one.
      std::size_t k = i + 1;
      while (k < f.size() && isNameChar(f[k])) ++k;
      out.append(f.substr(i, k - i));
      i = k;
      continue;
    }
    const std::int32_t col = absColumn ? ref->column : ref->column + columns;
    const std::int32_t row = absRow ? ref->row : ref->row + rows;
    if (col < 1 || col > kMaxColumns || row < 1 || row > kMaxRows) {
      out += "#REF!";
    } else {
      out += absColumn ? "$" : "";
      out += columnName(col);
      out += absRow ? "$" : "";
      out += std::to_string(row);
    }
    i = j;
  }
  return out;
}

}  // namespace korvex::xlsx
