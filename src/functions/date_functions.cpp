// Date functions: Date, Time, Day, Month, Hour, Minute, WeekDayName, MaxDay.
#include <ctime>
#include <string>

#include "functions/families.hpp"
#include "values/calendar.hpp"
#include "values/format.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck A = ArgCheck::Any;
constexpr ArgCheck D = ArgCheck::Date;

std::tm localNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
#ifdef _WIN32
  localtime_s(&parts, &now);  // the same thread-safe call, arguments swapped
#else
  localtime_r(&now, &parts);
#endif
  return parts;
}

std::int32_t today(Call&, Value& result) {
  const std::tm t = localNow();
  result = Value::date(
      static_cast<double>(vb::daysFromCivil(t.tm_year + 1900, t.tm_mon + 1, t.tm_mday)));
  return 0;
}

std::int32_t timeOfDay(Call&, Value& result) {
  const std::tm t = localNow();
  result = Value::date(vb::timeFraction(t.tm_hour, t.tm_min, t.tm_sec));
  return 0;
}

vb::DateParts partsOf(const Call& call, const Value& v) {
  return vb::splitDate(vb::toDate(v, call.locale()));
}

// Each part comes back as a Double.
template <int vb::DateParts::*Field>
std::int32_t datePart(Call& call, Value& result) {
  result = Value::dbl(partsOf(call, call.arg(1)).*Field);
  return 0;
}

std::int32_t weekDayName(Call& call, Value& result) {
  const double serial = vb::toDate(call.arg(1), call.locale());
  result = Value::string(vb::weekdayName(vb::weekday(serial), false, call.locale()));
  return 0;
}

// MaxDay(date) or MaxDay(month, year): the month and year are read back
// through the text "month/1/year", as the platform converts it.
std::int32_t maxDay(Call& call, Value& result) {
  const Locale& loc = call.locale();
  Value date = call.arg(1);
  if (call.count() == 2) {
    if (!Passes(ArgCheck::Numeric, call.arg(1), loc) ||
        !Passes(ArgCheck::Numeric, call.arg(2), loc)) {
      return call.typeError();
    }
    std::u16string text = vb::toString(Value::integer(vb::toInteger(call.arg(1), loc)), loc);
    text += u"/1/";
    text += vb::toString(Value::integer(vb::toInteger(call.arg(2), loc)), loc);
    date = Value::string(std::move(text));
  } else if (!Passes(D, date, loc)) {
    return call.typeError();
  }
  const vb::DateParts parts = partsOf(call, date);
  result = Value::integer(static_cast<std::int16_t>(vb::daysInMonth(parts.year, parts.month)));
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"Date"}, -1, -1, {A, A, A}, today,
     {u"", ResultKind::Date, u"今天的日期 (不检查参数个数, 给出的参数求值后不用)"}},
    {{u"Time"}, -1, -1, {A, A, A}, timeOfDay,
     {u"", ResultKind::Date, u"现在的时刻 (不检查参数个数, 给出的参数求值后不用)"}},
    {{u"Day"}, 1, 1, {D, A, A}, datePart<&vb::DateParts::day>,
     {u"日期", ResultKind::Number, u"日期中的日 (1-31)"}},
    {{u"Month"}, 1, 1, {D, A, A}, datePart<&vb::DateParts::month>,
     {u"日期", ResultKind::Number, u"日期中的月 (1-12)"}},
    {{u"Hour"}, 1, 1, {D, A, A}, datePart<&vb::DateParts::hour>,
     {u"日期", ResultKind::Number, u"日期中的小时 (0-23)"}},
    {{u"Minute"}, 1, 1, {D, A, A}, datePart<&vb::DateParts::minute>,
     {u"日期", ResultKind::Number, u"日期中的分钟 (0-59)"}},
    {{u"WeekDayName"}, 1, 1, {D, A, A}, weekDayName,
     {u"日期", ResultKind::String, u"日期是星期几的名称 (按区域设置)"}},
    // Month first: MaxDay(2025, 2) reads "2025/1/2", a day in January: 31.
    {{u"MaxDay"}, 1, 2, {A, A, A}, maxDay,
     {u"日期或月[, 年]", ResultKind::Number,
      u"该月的天数: MaxDay(日期) 或 MaxDay(月, 年); 先年后月不报错而得错的月份",
      u"一个参数时不是日期; 两个参数时 月 或 年 不是数值"}},
};
// clang-format on

}  // namespace

Family dateFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
