#include "values/text_scan.hpp"

namespace korvex::vb {

bool equalsNoCase(std::u16string_view a, std::u16string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (asciiUpper(a[i]) != asciiUpper(b[i])) return false;
  }
  return true;
}

bool Cursor::acceptWord(std::u16string_view word) noexcept {
  if (word.empty() || text.size() - pos < word.size()) return false;
  if (!equalsNoCase(text.substr(pos, word.size()), word)) return false;
  pos += word.size();
  return true;
}

bool Cursor::readUnsigned(std::int64_t& value, int& digits, int maxDigits) noexcept {
  value = 0;
  digits = 0;
  while (!atEnd() && isDigit(text[pos]) && digits < maxDigits) {
    value = value * 10 + (text[pos] - u'0');
    ++digits;
    ++pos;
  }
  return digits > 0;
}

}  // namespace korvex::vb
