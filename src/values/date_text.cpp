#include "values/date_text.hpp"

#include "values/ops.hpp"

namespace korvex::vb {

namespace {

void appendNumber(std::u16string& out, int value, int minDigits) {
  char16_t buf[12];
  int n = 0;
  auto v = static_cast<unsigned>(value < 0 ? -value : value);
  do {
    buf[n++] = static_cast<char16_t>(u'0' + v % 10);
    v /= 10;
  } while (v != 0);
  while (n < minDigits) buf[n++] = u'0';
  if (value < 0) out.push_back(u'-');
  while (n > 0) out.push_back(buf[--n]);
}

std::size_t runLength(std::u16string_view s, std::size_t i) {
  std::size_t j = i;
  while (j < s.size() && s[j] == s[i]) ++j;
  return j - i;
}

int dayOfWeekOf(const DateTimeParts& p) { return dayOfWeek(daysFromCivil(p.year, p.month, p.day)); }

}  // namespace

std::u16string renderDatePicture(std::u16string_view picture, const DateTimeParts& p,
                                 const Locale& loc) {
  std::u16string out;
  out.reserve(picture.size() + 8);
  std::size_t i = 0;
  while (i < picture.size()) {
    const char16_t c = picture[i];
    const std::size_t n = runLength(picture, i);
    switch (c) {
      case u'y':
        if (n >= 3) {
          appendNumber(out, p.year, 4);
        } else if (n == 2) {
          appendNumber(out, p.year % 100, 2);
        } else {
          appendNumber(out, p.year % 100, 1);
        }
        break;
      case u'M':
        if (n >= 4) {
          out += loc.monthNames[static_cast<std::size_t>(p.month - 1)];
        } else if (n == 3) {
          out += loc.monthAbbrevs[static_cast<std::size_t>(p.month - 1)];
        } else {
          appendNumber(out, p.month, static_cast<int>(n));
        }
        break;
      case u'd':
        if (n >= 4) {
          out += loc.dayNames[static_cast<std::size_t>(dayOfWeekOf(p))];
        } else if (n == 3) {
          out += loc.dayAbbrevs[static_cast<std::size_t>(dayOfWeekOf(p))];
        } else {
          appendNumber(out, p.day, static_cast<int>(n));
        }
        break;
      case u'H':
        appendNumber(out, p.hour, n >= 2 ? 2 : 1);
        break;
      case u'h': {
        const int h12 = p.hour % 12 == 0 ? 12 : p.hour % 12;
        appendNumber(out, h12, n >= 2 ? 2 : 1);
        break;
      }
      case u'm':
        appendNumber(out, p.minute, n >= 2 ? 2 : 1);
        break;
      case u's':
        appendNumber(out, p.second, n >= 2 ? 2 : 1);
        break;
      case u't': {
        const std::u16string& d = p.hour < 12 ? loc.amDesignator : loc.pmDesignator;
        if (n >= 2) {
          out += d;
        } else if (!d.empty()) {
          out.push_back(d.front());
        }
        break;
      }
      case u'\'': {
        // Quoted literal, copied without its quotes.
        std::size_t j = i + 1;
        while (j < picture.size() && picture[j] != u'\'') out.push_back(picture[j++]);
        i = j < picture.size() ? j + 1 : j;
        continue;
      }
      default:
        out.append(n, c);
        break;
    }
    i += n;
  }
  return out;
}

std::u16string dateToString(double serial, const Locale& loc) {
  if (!isValidSerial(serial)) raise(kOverflow);
  const DateTimeParts p = splitSerial(serial);
  const bool hasTime = p.hour != 0 || p.minute != 0 || p.second != 0;
  const bool hasDate = !(p.year == 1899 && p.month == 12 && p.day == 30);
  if (!hasDate) return renderDatePicture(loc.longTime, p, loc);
  std::u16string out = renderDatePicture(loc.shortDate, p, loc);
  if (hasTime) {
    out.push_back(u' ');
    out += renderDatePicture(loc.longTime, p, loc);
  }
  return out;
}

}  // namespace korvex::vb
