// User-defined date/time formats: d w m q y h n s tokens, ddddd/dddddd/ttttt/c
// for the locale's own forms, the AM/PM family, and / and : as the locale's
// separators.
#include <cstdint>

#include "values/calendar.hpp"
#include "values/date_text.hpp"
#include "values/format.hpp"
#include "values/format_detail.hpp"
#include "values/ops.hpp"

namespace korvex::vb::detail {

namespace {

// How many times the letter at `i` repeats there, in any case.
std::size_t runLength(std::u16string_view s, std::size_t i) {
  std::size_t n = 1;
  while (i + n < s.size() && asciiLower(s[i + n]) == asciiLower(s[i])) ++n;
  return n;
}

// Everything a format may ask about one date, computed once.
struct DateFacts {
  DateTimeParts parts;
  std::int64_t days = 0;
  int weekday = 1;  // 1 = Sunday

  explicit DateFacts(double serial) : parts(splitSerial(serial)) {
    days = daysFromCivil(parts.year, parts.month, parts.day);
    weekday = dayOfWeek(days) + 1;
  }
  int dayOfYear() const { return static_cast<int>(days - daysFromCivil(parts.year, 1, 1)) + 1; }
  int weekOfYear() const {
    const int jan1 = dayOfWeek(daysFromCivil(parts.year, 1, 1));
    return (dayOfYear() - 1 + jan1) / 7 + 1;
  }
  int hour12() const { return parts.hour % 12 == 0 ? 12 : parts.hour % 12; }
};

bool usesTwelveHours(std::u16string_view fmt) {
  std::u16string ignored;
  std::size_t i = 0;
  while (i < fmt.size()) {
    if (takeQuotedOrEscaped(fmt, i, ignored)) continue;
    if (asciiLower(fmt[i]) == u'a' && ampmTokenLength(fmt, i) > 0) return true;
    ++i;
  }
  return false;
}

}  // namespace

std::u16string formatDate(double serial, std::u16string_view fmt, const Locale& loc) {
  if (!isValidSerial(serial)) raise(kOverflow);
  const DateFacts f(serial);
  const DateTimeParts& p = f.parts;
  const bool twelve = usesTwelveHours(fmt);
  bool afterHour = false;  // an m right after h or hh means minutes

  std::u16string out;
  out.reserve(fmt.size() + 16);
  std::size_t i = 0;
  while (i < fmt.size()) {
    if (takeQuotedOrEscaped(fmt, i, out)) continue;
    const char16_t c = fmt[i];
    const std::size_t run = runLength(fmt, i);
    std::size_t used = 1;
    bool hourToken = false;
    switch (asciiLower(c)) {
      case u'd':
        used = run > 6 ? 6 : run;
        if (used <= 2) {
          appendInt(out, p.day, static_cast<int>(used));
        } else if (used <= 4) {
          out += weekdayName(f.weekday, used == 3, loc);
        } else {
          out += renderDatePicture(used == 5 ? loc.shortDate : loc.longDate, p, loc);
        }
        break;
      case u'w':
        used = run > 2 ? 2 : run;
        appendInt(out, used == 1 ? f.weekday : f.weekOfYear());
        break;
      case u'm':
        used = run > 4 ? 4 : run;
        if (used <= 2 && afterHour) {
          appendInt(out, p.minute, static_cast<int>(used));
        } else if (used <= 2) {
          appendInt(out, p.month, static_cast<int>(used));
        } else {
          out += monthName(p.month, used == 3, loc);
        }
        break;
      case u'q':
        appendInt(out, (p.month - 1) / 3 + 1);
        break;
      case u'y':
        if (run >= 4) {
          used = 4;
          appendInt(out, p.year, 4);
        } else if (run >= 2) {
          used = 2;
          appendInt(out, p.year % 100, 2);
        } else {
          appendInt(out, f.dayOfYear());
        }
        break;
      case u'h':
        used = run > 2 ? 2 : run;
        appendInt(out, twelve ? f.hour12() : p.hour, static_cast<int>(used));
        hourToken = true;
        break;
      case u'n':
        used = run > 2 ? 2 : run;
        appendInt(out, p.minute, static_cast<int>(used));
        break;
      case u's':
        used = run > 2 ? 2 : run;
        appendInt(out, p.second, static_cast<int>(used));
        break;
      case u't':
        if (run >= 5) {
          used = 5;
          out += renderDatePicture(loc.longTime, p, loc);
        } else {
          used = run;
          out.append(fmt.substr(i, run));
        }
        break;
      case u'c':
        out += dateToString(serial, loc);
        break;
      case u'a':
        used = ampmTokenLength(fmt, i);
        if (used == 5) {
          out.append(fmt.substr(p.hour < 12 ? i : i + 3, 2));
        } else if (used == 4) {
          out += p.hour < 12 ? loc.amDesignator : loc.pmDesignator;
        } else if (used == 3) {
          out.push_back(fmt[p.hour < 12 ? i : i + 2]);
        } else {
          used = 1;
          out.push_back(c);
        }
        break;
      case u'/':
        out.push_back(loc.dateSeparator);
        hourToken = afterHour;  // separators sit between h and m
        break;
      case u':':
        out.push_back(loc.timeSeparator);
        hourToken = afterHour;
        break;
      default:
        out.push_back(c);
        // Literals do not break the tie between h and a following m.
        i += used;
        continue;
    }
    // Every token other than h ends the hour's claim on a following m.
    afterHour = hourToken;
    i += used;
  }
  return out;
}

}  // namespace korvex::vb::detail
