// User-defined string formats: @ (character or blank), & (character or
// nothing), < (lower case), > (upper case), ! (fill from the left).
#include "values/format_detail.hpp"
#include "values/ops.hpp"

namespace korvex::vb::detail {

std::u16string formatString(std::u16string_view s, bool isNull, std::u16string_view fmt) {
  const std::vector<std::u16string_view> sections = splitSections(fmt);
  const std::u16string_view section =
      (isNull || s.empty()) && sections.size() >= 2 ? sections[1] : sections[0];

  // Of < and >, the first in the format sets the case; later ones are ignored.
  char16_t caseMark = 0;
  bool fromLeft = false;
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
      case u'<':
        if (caseMark == 0) caseMark = section[i];
        break;
      case u'!':
        fromLeft = true;
        break;
      default:
        break;
    }
    ++i;
  }

  const std::u16string text = caseMark == u'>'   ? upperCase(s)
                              : caseMark == u'<' ? lowerCase(s)
                                                 : std::u16string(s);
  const int len = static_cast<int>(text.size());
  // A shorter text leaves its missing characters at the first placeholders
  // (at the last ones with "!"). A longer text fills every placeholder from
  // its first character on, and the characters left over end the result.
  const int skipped = len < placeholders && !fromLeft ? placeholders - len : 0;

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
    const int at = k++ - skipped;
    if (at >= 0 && at < len) {
      out.push_back(text[static_cast<std::size_t>(at)]);
    } else if (c == u'@') {
      out.push_back(u' ');
    }
  }
  if (len > placeholders) out.append(text, static_cast<std::size_t>(placeholders));
  return out;
}

}  // namespace korvex::vb::detail
