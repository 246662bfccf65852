#include "output.hpp"

#include <cerrno>
#include <cstdio>

#include "korvex/system_error.hpp"
#include "korvex/value.hpp"

namespace korvex::cli {

bool writeOutcome(std::ostream& out, std::ostream& err, std::string_view text) {
  errno = 0;
  out << text << std::flush;
  if (out) return true;
  const int code = errno;
  err << "korvex: 无法写出运行结果";
  if (code != 0) err << ": " << systemErrorText(code);
  err << '\n';
  return false;
}

std::string printable(std::u16string_view text) {
  std::u16string shown;
  shown.reserve(text.size());
  for (const char16_t c : text) {
    if (c >= 0x20 && c != 0x7F) {
      shown += c;
      continue;
    }
    switch (c) {
      case u'\n':
        shown += u"\\n";
        break;
      case u'\r':
        shown += u"\\r";
        break;
      case u'\t':
        shown += u"\\t";
        break;
      default: {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(c));
        for (const char* p = escape; *p != '\0'; ++p) shown += static_cast<char16_t>(*p);
      }
    }
  }
  return toUtf8(shown);
}

}  // namespace korvex::cli
