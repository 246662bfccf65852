// User-defined string formats: @ (character or blank), & (character or
// nothing), < (lower case), > (upper case), ! (fill from the left).
#include "values/format_detail.hpp"
#include "values/ops.hpp"

namespace korvex::vb::detail {

std::u16string formatString(std::u16string_view s, bool isNull, std::u16string_view fmt) {
  const std::vector<std::u16string_view> sections = splitSections(fmt);
  const std::u16string_view section =
      (isNull || s.empty()) && sections.size() >= 2 ? sections[1] : sections[0];

  bool toUpper = false, toLower = false, fromLeft = false;
  int placeholders = 0;
  std::u16string ignored;
  for (std::size_t i = 0; i < section.size();) {
    if (takeQuotedOrEscaped(section, i, ignored)) continue;
    switch (section[i]) {
      case u'@':
      case u'&':
        ++placeholders;
        break;
      case u'>':
        toUpper = true;
        toLower = false;
        break;
      case u'<':
        toLower = true;
        toUpper = false;
        break;
      case u'!':
        fromLeft = true;
        break;
      default:
        break;
    }
    ++i;
  }

  const std::u16string text = toUpper ? upperCase(s) : toLower ? lowerCase(s) : std::u16string(s);
  const int len = static_cast<int>(text.size());
  // Characters that find no placeholder: before the first one when filling
  // from the right, after the last one when filling from the left.
  const int extra = len > placeholders ? len - placeholders : 0;

  std::u16string out;
  out.reserve(section.size() + text.size());
  int k = 0;
  for (std::size_t i = 0; i < section.size();) {
    if (takeQuotedOrEscaped(section, i, out)) continue;
    const char16_t c = section[i++];
    if (c == u'<' || c == u'>' || c == u'!') continue;
    if (c != u'@' && c != u'&') {
      out.push_back(c);
      continue;
    }
    int at;
    if (fromLeft) {
      at = k < len ? k : -1;
    } else {
      if (k == 0) out.append(text, 0, static_cast<std::size_t>(extra));
      at = len - placeholders + k;
    }
    if (at >= 0) {
      out.push_back(text[static_cast<std::size_t>(at)]);
    } else if (c == u'@') {
      out.push_back(u' ');
    }
    ++k;
    if (fromLeft && k == placeholders && extra > 0) {
      out.append(text, static_cast<std::size_t>(placeholders), std::u16string::npos);
    }
  }
  if (placeholders == 0) out += text;
  return out;
}

}  // namespace korvex::vb::detail
