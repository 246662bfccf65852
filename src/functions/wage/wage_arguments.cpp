// Period and text arguments of the wage-domain functions, and the pieces of
// text their SQL is made of.
#include <cstdio>

#include "functions/protocol.hpp"
#include "functions/source_query.hpp"
#include "functions/wage/wage_sql.hpp"
#include "values/calendar.hpp"
#include "values/ops.hpp"

namespace korvex::fn::wage {

std::int32_t readPeriod(const fn::Call& call, std::size_t first, Period& period) {
  const Value& a = call.arg(first);
  const Value& b = call.arg(first + 1);
  const Locale& loc = call.locale();
  if (vb::isNumeric(a, loc) && vb::isNumeric(b, loc)) {
    period.byMonth = true;
    period.year = vb::toInteger(a, loc);
    period.month = vb::toInteger(b, loc);
    return 0;
  }
  if (vb::isDate(a, loc) && vb::isDate(b, loc)) {
    period.byMonth = false;
    period.start = vb::toDate(a, loc);
    period.end = vb::toDate(b, loc);
    return 0;
  }
  return call.typeError();
}

std::int32_t readText(const fn::Call& call, std::size_t i, std::u16string& text) {
  if (i > call.count()) {
    text.clear();
    return 0;
  }
  if (!call.arg(i).isString()) return call.typeError();
  text = vb::toString(call.arg(i), call.locale());
  return 0;
}

double queryTotal(const fn::Call& call, std::u16string_view sql, std::u16string_view field) {
  const Value v = queryField(call.context(), sql, field, Value::dbl(0));
  return vb::toDouble(v, call.locale());
}

std::u16string decimal(long long n) {
  const std::string digits = std::to_string(n);
  return std::u16string(digits.begin(), digits.end());
}

// Rounded to the second first, as the platform formats a date.
std::u16string monthDayYear(double serial) {
  const vb::DateTimeParts d = vb::splitSerial(serial);
  char text[16];
  std::snprintf(text, sizeof text, "%02d/%02d/%04d", d.month, d.day, d.year);
  return std::u16string(text, text + 10);
}

std::vector<SamplePeriod> samplePeriods() {
  return {{u"2025, 3", Period{true, 2025, 3, 0, 0}},
          {u"#2025-03-01#, #2025-03-31#",
           Period{false, 0, 0, static_cast<double>(vb::daysFromCivil(2025, 3, 1)),
                  static_cast<double>(vb::daysFromCivil(2025, 3, 31))}}};
}

std::u16string wageTableName(std::int16_t year, std::int16_t month) {
  const std::u16string twoDigits = u"00" + decimal(month);
  return u"工资表" + decimal(year) + u"年" + twoDigits.substr(twoDigits.size() - 2) + u"月";
}

}  // namespace korvex::fn::wage
