#include "korvex/locale.hpp"

namespace korvex {

namespace {

Locale makeZhCN() {
  Locale l;
  l.name = u"zh-CN";
  l.currencyPositive = u"¥n";
  l.currencyNegative = u"¥-n";
  l.shortDate = u"yyyy/M/d";
  l.longDate = u"yyyy年M月d日";
  l.longTime = u"H:mm:ss";
  l.amDesignator = u"上午";
  l.pmDesignator = u"下午";
  l.monthNames = {u"一月", u"二月", u"三月", u"四月", u"五月",   u"六月",
                  u"七月", u"八月", u"九月", u"十月", u"十一月", u"十二月"};
  l.monthAbbrevs = {u"1月", u"2月", u"3月", u"4月",  u"5月",  u"6月",
                    u"7月", u"8月", u"9月", u"10月", u"11月", u"12月"};
  l.dayNames = {u"星期日", u"星期一", u"星期二", u"星期三", u"星期四", u"星期五", u"星期六"};
  l.dayAbbrevs = {u"周日", u"周一", u"周二", u"周三", u"周四", u"周五", u"周六"};
  return l;
}

Locale makeEnUS() {
  Locale l;
  l.name = u"en-US";
  l.currencyPositive = u"$n";
  l.currencyNegative = u"($n)";
  l.shortDate = u"M/d/yyyy";
  l.longDate = u"dddd, MMMM d, yyyy";
  l.longTime = u"h:mm:ss tt";
  l.amDesignator = u"AM";
  l.pmDesignator = u"PM";
  l.monthNames = {u"January", u"February", u"March",     u"April",   u"May",      u"June",
                  u"July",    u"August",   u"September", u"October", u"November", u"December"};
  l.monthAbbrevs = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                    u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
  l.dayNames = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                u"Thursday", u"Friday", u"Saturday"};
  l.dayAbbrevs = {u"Sun", u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat"};
  return l;
}

// ASCII-only folding: std::tolower would consult the C library's global
// locale, which a host may have changed.
char asciiLowerChar(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool sameName(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (asciiLowerChar(a[i]) != asciiLowerChar(b[i])) return false;
  }
  return true;
}

}  // namespace

const Locale& Locale::zhCN() {
  static const Locale l = makeZhCN();
  return l;
}

const Locale& Locale::enUS() {
  static const Locale l = makeEnUS();
  return l;
}

const Locale* Locale::byName(std::string_view name) {
  if (sameName(name, "zh-CN")) return &zhCN();
  if (sameName(name, "en-US")) return &enUS();
  return nullptr;
}

}  // namespace korvex
