#include "values/text_scan.hpp"

#include "values/ops.hpp"

namespace korvex {

bool equalsNoCase(std::u16string_view a, std::u16string_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (asciiUpper(a[i]) != asciiUpper(b[i])) return false;
  }
  return true;
}

void upperNameInto(std::u16string_view name, std::u16string& out) {
  out.assign(name);
  for (char16_t& c : out) {
    if (c >= 0x80) {
      out = vb::upperCase(name);
      return;
    }
    c = asciiUpper(c);
  }
}

}  // namespace korvex

namespace korvex::vb {

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
