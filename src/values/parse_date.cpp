// Text -> date serial: the locale's short and long date forms, yyyy-mm-dd,
// m/d/yyyy and yyyy/m/d (also with blanks for separators), each optionally
// followed by a time, or a time alone.
#include <utility>

#include "values/calendar.hpp"
#include "values/ops.hpp"
#include "values/text_scan.hpp"

namespace korvex::vb {

namespace {

struct Num {
  std::int64_t value = 0;
  int digits = 0;
};

bool readNum(Cursor& c, Num& n) { return c.readUnsigned(n.value, n.digits, 9); }

// One- and two-digit years fall in 1930..2029 (0-29 in the 2000s, 30-99 in
// the 1900s), like the platform's default window.
int expandYear(const Num& y) {
  if (y.digits <= 2) return static_cast<int>(y.value < 30 ? 2000 + y.value : 1900 + y.value);
  return static_cast<int>(y.value);
}

bool validDate(int y, int m, int d) {
  return y >= 100 && y <= 9999 && m >= 1 && m <= 12 && d >= 1 && d <= daysInMonth(y, m);
}

struct DateResult {
  int year = 0, month = 0, day = 0;
};

bool makeDate(std::int64_t y, std::int64_t m, std::int64_t d, DateResult& out) {
  if (y > 9999 || m > 12 || d > 31) return false;
  out = DateResult{static_cast<int>(y), static_cast<int>(m), static_cast<int>(d)};
  return validDate(out.year, out.month, out.day);
}

// Month and day in month-first order; the platform swaps them when the first
// cannot be a month but the second can ("13/1/2005" is 13 January).
bool monthDay(std::int64_t first, std::int64_t second, int year, DateResult& out) {
  if (first > 12 && second <= 12) std::swap(first, second);
  return makeDate(year, first, second, out);
}

// Which field the locale's short date starts with: 'y', 'M' or 'd'.
char16_t shortDateLead(const Locale& loc) {
  for (char16_t ch : loc.shortDate) {
    if (ch == u'y' || ch == u'M' || ch == u'd') return ch;
  }
  return u'M';
}

bool isDateSeparator(char16_t ch, const Locale& loc) {
  return ch == u'/' || ch == u'-' || ch == u'.' || ch == loc.dateSeparator;
}

// A separator between the numbers of a date: one of the separator
// characters with blanks around it, or blanks alone ("1 2 2005"). Returns
// the character, u' ' for blanks alone, or 0 when there is none.
char16_t readDateSeparator(Cursor& c, const Locale& loc) {
  Cursor t = c;
  t.skipBlanks();
  char16_t sep = u' ';
  if (isDateSeparator(t.peek(), loc)) {
    sep = t.peek();
    ++t.pos;
    t.skipBlanks();
  } else if (t.pos == c.pos) {
    return 0;
  }
  c = t;
  return sep;
}

// N sep N sep N, with one separator used twice.
bool numericDate(Cursor& c, const Locale& loc, DateResult& out) {
  Cursor t = c;
  Num a, b, y;
  if (!readNum(t, a)) return false;
  const char16_t sep = readDateSeparator(t, loc);
  if (sep == 0 || !readNum(t, b) || readDateSeparator(t, loc) != sep || !readNum(t, y)) {
    return false;
  }
  bool ok = false;
  if (a.digits >= 3) {
    // yyyy/m/d, yyyy-mm-dd: year first, month before day.
    ok = makeDate(a.value, b.value, y.value, out);
  } else if (y.digits >= 3) {
    ok = shortDateLead(loc) == u'd' ? monthDay(b.value, a.value, expandYear(y), out)
                                    : monthDay(a.value, b.value, expandYear(y), out);
  } else {
    // All fields short: the locale's own order decides.
    switch (shortDateLead(loc)) {
      case u'y':
        // When year first gives no date ("4/1/99"), month/day/year is tried,
        // the order MaxDay builds its text in.
        ok = makeDate(expandYear(a), b.value, y.value, out) ||
             monthDay(a.value, b.value, expandYear(y), out);
        break;
      case u'd':
        ok = monthDay(b.value, a.value, expandYear(y), out);
        break;
      default:
        ok = monthDay(a.value, b.value, expandYear(y), out);
        break;
    }
  }
  if (ok) c = t;
  return ok;
}

// 2005年3月1日
bool cjkDate(Cursor& c, DateResult& out) {
  Cursor t = c;
  Num y, m, d;
  if (!readNum(t, y) || !t.accept(u'年') || !readNum(t, m) || !t.accept(u'月') || !readNum(t, d) ||
      !t.accept(u'日')) {
    return false;
  }
  if (!makeDate(expandYear(y), m.value, d.value, out)) return false;
  c = t;
  return true;
}

// A month name or abbreviation of the locale; longest match first.
int readMonthName(Cursor& c, const Locale& loc) {
  int best = 0;
  std::size_t bestLen = 0;
  for (std::size_t i = 0; i < 12; ++i) {
    for (const std::u16string* name : {&loc.monthNames[i], &loc.monthAbbrevs[i]}) {
      Cursor t = c;
      if (name->size() > bestLen && t.acceptWord(*name)) {
        best = static_cast<int>(i) + 1;
        bestLen = name->size();
      }
    }
  }
  c.pos += bestLen;
  return best;
}

void skipWeekdayName(Cursor& c, const Locale& loc) {
  Cursor t = c;
  for (std::size_t i = 0; i < 7; ++i) {
    if (t.acceptWord(loc.dayNames[i]) || t.acceptWord(loc.dayAbbrevs[i])) {
      t.skipBlanks();
      t.accept(u',');
      t.skipBlanks();
      c = t;
      return;
    }
  }
}

void skipJoin(Cursor& c) {
  c.skipBlanks();
  if (c.accept(u',') || c.accept(u'-') || c.accept(u'/') || c.accept(u'.')) c.skipBlanks();
}

// "March 1, 2005", "Tuesday, March 1, 2005", "1-Mar-2005", "1 March 2005".
bool namedMonthDate(Cursor& c, const Locale& loc, DateResult& out) {
  Cursor t = c;
  skipWeekdayName(t, loc);
  Num d, y;
  int month = readMonthName(t, loc);
  if (month != 0) {
    t.skipBlanks();
    if (!readNum(t, d)) return false;
    skipJoin(t);
    if (!readNum(t, y)) return false;
  } else {
    if (!readNum(t, d)) return false;
    skipJoin(t);
    month = readMonthName(t, loc);
    if (month == 0) return false;
    skipJoin(t);
    if (!readNum(t, y)) return false;
  }
  if (!makeDate(expandYear(y), month, d.value, out)) return false;
  c = t;
  return true;
}

// AM/PM designators: the locale's, and the English ones in any locale.
// Returns 0 when none, 1 for AM, 2 for PM.
int readDesignator(Cursor& c, const Locale& loc) {
  if (c.acceptWord(loc.amDesignator)) return 1;
  if (c.acceptWord(loc.pmDesignator)) return 2;
  if (c.acceptWord(u"AM") || c.acceptWord(u"A")) return 1;
  if (c.acceptWord(u"PM") || c.acceptWord(u"P")) return 2;
  return 0;
}

// H:mm[:ss] or "3 PM", with an AM/PM designator before or after.
bool timeOfDay(Cursor& c, const Locale& loc, double& out) {
  Cursor t = c;
  int ampm = readDesignator(t, loc);
  if (ampm != 0) t.skipBlanks();
  Num h, m, s;
  if (!readNum(t, h)) return false;
  const bool hasMinutes = t.accept(loc.timeSeparator) || t.accept(u':');
  if (hasMinutes) {
    if (!readNum(t, m)) return false;
    if (t.accept(loc.timeSeparator) || t.accept(u':')) {
      if (!readNum(t, s)) return false;
    }
  }
  if (ampm == 0) {
    Cursor u = t;
    u.skipBlanks();
    ampm = readDesignator(u, loc);
    if (ampm != 0) t = u;
  }
  if (!hasMinutes && ampm == 0) return false;  // a bare number is no time
  // AM and PM only move the hours of a 12-hour clock; an hour that can
  // only be on a 24-hour clock ("13:00 AM") stays as it is.
  std::int64_t hour = h.value;
  if (ampm == 1 && hour == 12) hour = 0;
  if (ampm == 2 && hour < 12) hour += 12;
  if (hour > 23 || m.value > 59 || s.value > 59) return false;
  out = timeFraction(static_cast<int>(hour), static_cast<int>(m.value), static_cast<int>(s.value));
  c = t;
  return true;
}

bool datePart(Cursor& c, const Locale& loc, DateResult& out) {
  return cjkDate(c, out) || numericDate(c, loc, out) || namedMonthDate(c, loc, out);
}

}  // namespace

std::optional<double> parseDate(std::u16string_view text, const Locale& loc) {
  Cursor c{trimParserBlanks(text)};
  if (c.atEnd()) return std::nullopt;
  DateResult d;
  double time = 0;
  const bool hasDate = datePart(c, loc, d);
  if (hasDate) {
    if (!c.atEnd()) {
      c.skipBlanks();
      if (!timeOfDay(c, loc, time)) return std::nullopt;
    }
  } else {
    if (!timeOfDay(c, loc, time)) return std::nullopt;
    // A time may also come first: "10:30 2005-03-01".
    if (!c.atEnd()) {
      c.skipBlanks();
      if (!datePart(c, loc, d)) return std::nullopt;
      if (!c.atEnd()) return std::nullopt;
      return combineSerial(daysFromCivil(d.year, d.month, d.day), time);
    }
    return time;
  }
  if (!c.atEnd()) return std::nullopt;
  return combineSerial(daysFromCivil(d.year, d.month, d.day), time);
}

}  // namespace korvex::vb
