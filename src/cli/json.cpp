#include "json.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "korvex/convert.hpp"

namespace korvex::cli {

namespace {

void appendEscape(std::string& out, char16_t unit) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "\\u%04x", static_cast<unsigned>(unit));
  out += buf;
}

bool isHighSurrogate(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }
bool isLowSurrogate(char16_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void appendValue(std::string& out, const Value& v);

// Writes the nested lists of one array, dimension `dim` onward, starting at
// flat element `offset`; `stride[d]` is the number of elements one step of
// index d skips.
void appendArrayLevel(std::string& out, const Array& a, const std::vector<std::size_t>& stride,
                      std::size_t dim, std::size_t offset) {
  out += '[';
  const auto count = static_cast<std::size_t>(std::max(a.bounds()[dim].count, 0));
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) out += ", ";
    const std::size_t at = offset + i * stride[dim];
    if (dim + 1 == a.dimensions()) {
      if (at < a.elements().size()) {
        appendValue(out, a.elements()[at]);
      } else {
        appendValue(out, Value{});
      }
    } else {
      appendArrayLevel(out, a, stride, dim + 1, at);
    }
  }
  out += ']';
}

void appendArray(std::string& out, const Array& a) {
  out += "{\"type\": \"Array\", \"lbound\": [";
  for (std::size_t d = 0; d < a.dimensions(); ++d) {
    if (d > 0) out += ", ";
    out += std::to_string(a.bounds()[d].lower);
  }
  out += "], \"value\": ";
  if (a.dimensions() == 0) {
    out += "[]}";
    return;
  }
  std::vector<std::size_t> stride(a.dimensions(), 1);
  for (std::size_t d = a.dimensions() - 1; d > 0; --d) {
    stride[d - 1] = stride[d] * static_cast<std::size_t>(std::max(a.bounds()[d].count, 0));
  }
  appendArrayLevel(out, a, stride, 0, 0);
  out += '}';
}

void appendValue(std::string& out, const Value& v) {
  if (v.type() == VarType::Array) {
    appendArray(out, v.arrayValue());
    return;
  }
  out += "{\"type\": \"";
  out += typeName(v.type());
  out += "\", \"value\": ";
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null:
    case VarType::Object:
    case VarType::Array:
      out += "null";
      break;
    case VarType::Integer:
      out += std::to_string(v.integerValue());
      break;
    case VarType::Long:
      out += std::to_string(v.longValue());
      break;
    case VarType::Double:
      out += jsonNumber(v.doubleValue());
      break;
    case VarType::Currency:
      out += jsonCurrency(v.currencyValue());
      break;
    case VarType::Date:
      out += '"';
      out += dateText(v.doubleValue());
      out += '"';
      break;
    case VarType::String:
      out += jsonString(v.stringValue());
      break;
    case VarType::Boolean:
      out += v.booleanValue() ? "true" : "false";
      break;
  }
  out += '}';
}

}  // namespace

std::string jsonString(std::u16string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  out += '"';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    switch (c) {
      case u'"':
        out += "\\\"";
        continue;
      case u'\\':
        out += "\\\\";
        continue;
      case u'\b':
        out += "\\b";
        continue;
      case u'\f':
        out += "\\f";
        continue;
      case u'\n':
        out += "\\n";
        continue;
      case u'\r':
        out += "\\r";
        continue;
      case u'\t':
        out += "\\t";
        continue;
      default:
        break;
    }
    if (c < 0x20) {
      appendEscape(out, c);
    } else if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (isHighSurrogate(c) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      out += toUtf8(text.substr(i, 2));
      ++i;
    } else if (isHighSurrogate(c) || isLowSurrogate(c)) {
      appendEscape(out, c);
    } else {
      out += toUtf8(text.substr(i, 1));
    }
  }
  out += '"';
  return out;
}

std::string jsonNumber(double x) {
  if (std::isnan(x)) return "\"NaN\"";
  if (std::isinf(x)) return x > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  if (x == 0) return "0";

  // Shortest round-trip digits in scientific form: "-d.ddde+XX".
  char buf[64];
  const auto res = std::to_chars(buf, buf + sizeof buf, x, std::chars_format::scientific);
  std::string_view sci(buf, static_cast<std::size_t>(res.ptr - buf));
  std::string out;
  if (sci.front() == '-') {
    out += '-';
    sci.remove_prefix(1);
  }
  const std::size_t e = sci.find('e');
  std::string digits;
  for (char ch : sci.substr(0, e)) {
    if (ch != '.') digits += ch;
  }
  int exponent = 0;
  std::string_view expText = sci.substr(e + 1);
  if (expText.front() == '+') expText.remove_prefix(1);
  std::from_chars(expText.data(), expText.data() + expText.size(), exponent);

  // ECMAScript's layout: value = digits x 10^(n - k).
  const int k = static_cast<int>(digits.size());
  const int n = exponent + 1;
  if (k <= n && n <= 21) {
    out += digits;
    out.append(static_cast<std::size_t>(n - k), '0');
  } else if (0 < n && n <= 21) {
    out += digits.substr(0, static_cast<std::size_t>(n));
    out += '.';
    out += digits.substr(static_cast<std::size_t>(n));
  } else if (-6 < n && n <= 0) {
    out += "0.";
    out.append(static_cast<std::size_t>(-n), '0');
    out += digits;
  } else {
    out += digits[0];
    if (k > 1) {
      out += '.';
      out += digits.substr(1);
    }
    out += 'e';
    out += (n - 1 >= 0) ? '+' : '-';
    out += std::to_string(std::abs(n - 1));
  }
  return out;
}

std::string jsonCurrency(Currency c) {
  const bool negative = c.scaled < 0;
  // Through unsigned arithmetic so that the most negative amount works too.
  const std::uint64_t magnitude =
      negative ? 0 - static_cast<std::uint64_t>(c.scaled) : static_cast<std::uint64_t>(c.scaled);
  const auto scale = static_cast<std::uint64_t>(Currency::kScale);
  std::string out = negative ? "-" : "";
  out += std::to_string(magnitude / scale);
  std::uint64_t fraction = magnitude % scale;
  if (fraction != 0) {
    std::string digits = std::to_string(fraction);
    digits.insert(0, 4 - digits.size(), '0');
    while (digits.back() == '0') digits.pop_back();
    out += '.';
    out += digits;
  }
  return out;
}

std::string dateText(double serial) {
  const Converted<DateTimeFields> fields = dateTimeFields(serial);
  // Dates come from script values, which never leave the valid range.
  if (!fields) throw std::out_of_range(toUtf8(fields.errMsg));
  const DateTimeFields& p = *fields.value;
  char buf[40];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", p.year, p.month, p.day, p.hour,
                p.minute, p.second);
  return buf;
}

std::string valueJson(const Value& v) {
  std::string out;
  appendValue(out, v);
  return out;
}

std::string outcomeJson(const RunOutcome& r) {
  std::string out = "{\"errNum\": ";
  out += std::to_string(r.errNum);
  out += ", \"errMsg\": ";
  out += jsonString(r.errMsg);
  const std::pair<const char*, std::int32_t> counters[] = {
      {"currentLine", r.currentLine}, {"lineCount", r.lineCount}, {"ifCount", r.ifCount},
      {"doCount", r.doCount},         {"flagCount", r.flagCount},
  };
  for (const auto& [key, number] : counters) {
    out += ", \"";
    out += key;
    out += "\": ";
    out += std::to_string(number);
  }
  const auto object = [&out](const std::vector<std::pair<std::u16string, Value>>& entries) {
    out += '{';
    bool first = true;
    for (const auto& [name, value] : entries) {
      if (!first) out += ", ";
      first = false;
      out += jsonString(name);
      out += ": ";
      appendValue(out, value);
    }
    out += '}';
  };
  out += ", \"variables\": ";
  object(r.variables);
  const auto list = [&out](const std::vector<std::u16string>& texts) {
    out += '[';
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (i > 0) out += ", ";
      out += jsonString(texts[i]);
    }
    out += ']';
  };
  out += ", \"messages\": ";
  list(r.messages);
  if (r.fields) {
    out += ", \"fields\": ";
    object(*r.fields);
  }
  if (r.sql) {
    out += ", \"sql\": ";
    list(*r.sql);
  }
  out += '}';
  return out;
}

}  // namespace korvex::cli
