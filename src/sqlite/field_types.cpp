#include "sqlite/field_types.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::ds {

namespace {

// 2^53: every whole number below it in magnitude is exact as a Double.
constexpr double kExactLimit = 9007199254740992.0;

bool contains(const std::string& upper, std::string_view word) {
  return upper.find(word) != std::string::npos;
}

// Reads 1 to `maxDigits` digits at pos; -1 when there is none.
int digits(std::u16string_view s, std::size_t& pos, std::size_t maxDigits) {
  int n = 0;
  std::size_t count = 0;
  while (pos < s.size() && count < maxDigits && s[pos] >= u'0' && s[pos] <= u'9') {
    n = n * 10 + (s[pos] - u'0');
    ++pos;
    ++count;
  }
  return count == 0 ? -1 : n;
}

bool validParts(const vb::DateTimeParts& p) {
  return p.year >= 100 && p.year <= 9999 && p.month >= 1 && p.month <= 12 && p.day >= 1 &&
         p.day <= vb::daysInMonth(p.year, p.month) && p.hour >= 0 && p.hour < 24 && p.minute >= 0 &&
         p.minute < 60 && p.second >= 0 && p.second < 60;
}

// Exactly `count` ASCII digits at pos; -1 when any of them is not one.
int fixedDigits(std::string_view s, std::size_t pos, std::size_t count) {
  int n = 0;
  for (std::size_t i = pos; i < pos + count; ++i) {
    if (s[i] < '0' || s[i] > '9') return -1;
    n = n * 10 + (s[i] - '0');
  }
  return n;
}

void appendNumber(std::u16string& out, int n, int width) {
  std::string s = std::to_string(n);
  while (static_cast<int>(s.size()) < width) s.insert(s.begin(), '0');
  out.append(s.begin(), s.end());
}

}  // namespace

std::int32_t typeOfDeclared(std::string_view declared) {
  if (declared.empty()) return 0;
  std::string upper;
  for (char c : declared) upper += static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
  if (contains(upper, "DATE") || contains(upper, "TIME")) return kTypeDate;
  if (contains(upper, "BIT") || contains(upper, "BOOL")) return kTypeBoolean;
  if (contains(upper, "BIGINT")) return kTypeBigInt;
  if (contains(upper, "INT")) return kTypeLong;
  if (contains(upper, "REAL") || contains(upper, "FLOA") || contains(upper, "DOUB")) {
    return kTypeDouble;
  }
  if (contains(upper, "MONEY") || contains(upper, "DEC") || contains(upper, "NUMERIC")) {
    return kTypeCurrency;
  }
  if (contains(upper, "BLOB") || contains(upper, "BINARY") || contains(upper, "IMAGE")) {
    return kTypeBinary;
  }
  return kTypeText;
}

std::int32_t typeOfStored(const Value& stored) {
  switch (stored.type()) {
    case VarType::Long:
      return kTypeLong;
    case VarType::Double:
      return kTypeDouble;
    case VarType::String:
      return kTypeText;
    default:
      return 0;
  }
}

Value fieldValue(std::int32_t type, Value stored) {
  if (stored.isNull()) return stored;
  const bool number = stored.type() == VarType::Long || stored.type() == VarType::Double;
  const double d = stored.type() == VarType::Long ? stored.longValue() : stored.doubleValue();
  switch (type) {
    case kTypeDate:
      if (stored.isString()) {
        if (const auto parts = parseDateText(stored.stringValue())) {
          return Value::date(vb::serialFromParts(*parts));
        }
      }
      return stored;
    case kTypeBoolean:
      if (number) return Value::boolean(d != 0);
      return stored;
    case kTypeDouble:
      if (number) return Value::dbl(d);
      return stored;
    case kTypeCurrency:
      if (number && std::fabs(d) < 9e14) {
        return Value::currency(Currency{static_cast<std::int64_t>(std::llround(d * 10000))});
      }
      return stored;
    default:
      return stored;
  }
}

Value storedValue(std::int32_t type, const Value& v, const Locale& loc) {
  if (v.isNull() || v.isEmpty()) return Value::null();
  if (type == 0) {
    // No declared type: the value decides.
    switch (v.type()) {
      case VarType::Integer:
        return Value::lng(v.integerValue());
      case VarType::Boolean:
        type = kTypeBoolean;
        break;
      case VarType::Date:
        type = kTypeDate;
        break;
      case VarType::Currency:
        type = kTypeCurrency;
        break;
      case VarType::String:
        return v;
      default:
        if (v.isArray() || v.isObject()) vb::raise(vb::kTypeMismatch);
        return v;
    }
  }
  switch (type) {
    case kTypeDate:
      return Value::string(isoDateText(vb::toDate(v, loc)));
    case kTypeBoolean:
      return Value::lng(vb::toBoolean(v, loc) ? 1 : 0);
    case kTypeLong:
      return Value::lng(vb::toLong(v, loc));
    case kTypeBigInt: {
      const double d = std::round(vb::toDouble(v, loc));
      if (std::fabs(d) < 2147483648.0) return Value::lng(static_cast<std::int32_t>(d));
      return Value::dbl(d);
    }
    case kTypeDouble:
      return Value::dbl(vb::toDouble(v, loc));
    case kTypeCurrency:
      return Value::dbl(static_cast<double>(vb::toCurrency(v, loc).scaled) / 10000.0);
    default:
      return Value::string(vb::toString(v, loc));
  }
}

Value storedCell(SqlCell cell) {
  if (const auto* n = std::get_if<long long>(&cell)) {
    if (*n >= std::numeric_limits<std::int32_t>::min() &&
        *n <= std::numeric_limits<std::int32_t>::max()) {
      return Value::lng(static_cast<std::int32_t>(*n));
    }
    return Value::dbl(static_cast<double>(*n));
  }
  if (const auto* d = std::get_if<double>(&cell)) return Value::dbl(*d);
  if (const auto* s = std::get_if<std::string>(&cell)) return Value::string(fromUtf8(*s));
  if (const auto* b = std::get_if<SqlBlob>(&cell)) {
    // Binary data: one character per byte.
    std::u16string bytes;
    bytes.reserve(b->bytes.size());
    for (char c : b->bytes) bytes += static_cast<char16_t>(static_cast<unsigned char>(c));
    return Value::string(std::move(bytes));
  }
  return Value::null();
}

void settleColumnTypes(ResultSet& result, const std::vector<std::optional<bool>>& binary) {
  for (std::size_t i = 0; i < result.columns.size(); ++i) {
    Column& c = result.columns[i];
    if (c.type == 0 && i < binary.size() && binary[i].value_or(false)) c.type = kTypeBinary;
    if (c.type == 0) {
      for (const auto& row : result.rows) {
        if ((c.type = typeOfStored(row[i])) != 0) break;
      }
      if (c.type == 0) c.type = kTypeText;
      continue;
    }
    for (auto& row : result.rows) row[i] = fieldValue(c.type, std::move(row[i]));
  }
}

bool exactIn(std::int32_t type, const Value& v) {
  return type != kTypeBigInt || v.type() != VarType::Double ||
         std::fabs(v.doubleValue()) < kExactLimit;
}

SqlParameter parameterOf(const Value& v) {
  switch (v.type()) {
    case VarType::Integer:
      return static_cast<long long>(v.integerValue());
    case VarType::Long:
      return static_cast<long long>(v.longValue());
    case VarType::Double: {
      const double d = v.doubleValue();
      // Whole numbers bind as integers, so that they compare with integer
      // columns and stay exact.
      if (d == static_cast<double>(static_cast<long long>(d)) && d > -9e15 && d < 9e15) {
        return static_cast<long long>(d);
      }
      return d;
    }
    case VarType::String:
      return toUtf8(v.stringValue());
    default:
      return nullptr;
  }
}

SqlParameter writtenParameter(std::int32_t type, const Value& stored) {
  if (type == kTypeBinary && stored.isString()) {
    // Binary data is read one character per byte; anything else a script
    // put there is kept as its text's bytes.
    const std::u16string& chars = stored.stringValue();
    if (std::all_of(chars.begin(), chars.end(), [](char16_t c) { return c <= 0xFF; })) {
      return SqlBlob{std::string(chars.begin(), chars.end())};
    }
    return SqlBlob{toUtf8(chars)};
  }
  const bool integer = type == kTypeLong || type == kTypeBigInt || type == kTypeBoolean;
  if (integer && stored.type() == VarType::Double) {
    // Every whole number an integer column can hold stays an integer.
    const double d = stored.doubleValue();
    if (d == std::trunc(d) && std::fabs(d) < 9.2e18) return static_cast<long long>(d);
  }
  return parameterOf(stored);
}

std::optional<vb::DateTimeParts> parseDateText(std::u16string_view s) {
  vb::DateTimeParts p;
  std::size_t pos = 0;
  const int first = digits(s, pos, 4);
  if (first < 0 || pos >= s.size()) return std::nullopt;
  const char16_t sep = s[pos];
  if (sep != u'-' && sep != u'/') return std::nullopt;
  const bool yearFirst = pos == 4;
  ++pos;
  const int second = digits(s, pos, 2);
  if (second < 0 || pos >= s.size() || s[pos] != sep) return std::nullopt;
  ++pos;
  const std::size_t thirdStart = pos;
  const int third = digits(s, pos, yearFirst ? 2 : 4);
  if (third < 0) return std::nullopt;
  if (yearFirst) {
    p.year = first, p.month = second, p.day = third;
  } else {
    // Month first, as the payroll texts write dates: mm/dd/yyyy.
    if (sep != u'/' || pos - thirdStart != 4) return std::nullopt;
    p.month = first, p.day = second, p.year = third;
  }
  p.hour = p.minute = p.second = 0;
  if (pos < s.size()) {
    if (s[pos] != u' ' && s[pos] != u'T') return std::nullopt;
    ++pos;
    p.hour = digits(s, pos, 2);
    if (p.hour < 0 || pos >= s.size() || s[pos] != u':') return std::nullopt;
    ++pos;
    p.minute = digits(s, pos, 2);
    if (p.minute < 0) return std::nullopt;
    if (pos < s.size() && s[pos] == u':') {
      ++pos;
      p.second = digits(s, pos, 2);
      if (p.second < 0) return std::nullopt;
      // Fractions of a second are stored by some writers; they are dropped.
      if (pos < s.size() && s[pos] == u'.') {
        ++pos;
        while (pos < s.size() && s[pos] >= u'0' && s[pos] <= u'9') ++pos;
      }
    }
    if (pos != s.size()) return std::nullopt;
  }
  if (!validParts(p)) return std::nullopt;
  return p;
}

std::optional<vb::DateTimeParts> parseDateUtf8(std::string_view s) {
  const bool withTime = s.size() == 19;
  if ((s.size() == 10 || withTime) && s[4] == '-' && s[7] == '-' &&
      (!withTime || (s[10] == ' ' && s[13] == ':' && s[16] == ':'))) {
    vb::DateTimeParts p;
    p.year = fixedDigits(s, 0, 4);
    p.month = fixedDigits(s, 5, 2);
    p.day = fixedDigits(s, 8, 2);
    p.hour = withTime ? fixedDigits(s, 11, 2) : 0;
    p.minute = withTime ? fixedDigits(s, 14, 2) : 0;
    p.second = withTime ? fixedDigits(s, 17, 2) : 0;
    // A part that is not digits is -1, which validParts refuses. Refused
    // texts are rare: the general reader decides on them, so that they read
    // (or fail) exactly as they always did.
    if (validParts(p)) return p;
  }
  return parseDateText(fromUtf8(s));
}

std::u16string isoDateText(const vb::DateTimeParts& p) {
  std::u16string out;
  appendNumber(out, p.year, 4);
  out += u'-';
  appendNumber(out, p.month, 2);
  out += u'-';
  appendNumber(out, p.day, 2);
  if (p.hour != 0 || p.minute != 0 || p.second != 0) {
    out += u' ';
    appendNumber(out, p.hour, 2);
    out += u':';
    appendNumber(out, p.minute, 2);
    out += u':';
    appendNumber(out, p.second, 2);
  }
  return out;
}

std::u16string isoDateText(double serial) { return isoDateText(vb::splitSerial(serial)); }

}  // namespace korvex::ds
