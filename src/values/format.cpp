#include "values/format.hpp"

#include <algorithm>

#include "values/format_detail.hpp"
#include "values/ops.hpp"

namespace korvex::vb {

namespace detail {

namespace {

// A quoted text or a backslash escape: where its text lies and where the
// format goes on after it.
struct LiteralSpan {
  std::size_t textBegin, textEnd, next;
};

std::optional<LiteralSpan> literalAt(std::u16string_view fmt, std::size_t i) {
  if (fmt[i] == u'\\') {
    const std::size_t end = std::min(i + 2, fmt.size());
    return LiteralSpan{i + 1, end, i + 2};
  }
  if (fmt[i] == u'"') {
    const std::size_t close = fmt.find(u'"', i + 1);
    const std::size_t end = close == std::u16string_view::npos ? fmt.size() : close;
    return LiteralSpan{i + 1, end, end + 1};
  }
  return std::nullopt;
}

bool skipLiteral(std::u16string_view fmt, std::size_t& i) {
  const std::optional<LiteralSpan> span = literalAt(fmt, i);
  if (span) i = span->next;
  return span.has_value();
}

}  // namespace

bool takeQuotedOrEscaped(std::u16string_view fmt, std::size_t& i, std::u16string& out) {
  const std::optional<LiteralSpan> span = literalAt(fmt, i);
  if (!span) return false;
  out.append(fmt.substr(span->textBegin, span->textEnd - span->textBegin));
  i = span->next;
  return true;
}

bool matchesNoCase(std::u16string_view s, std::size_t at, std::u16string_view word) noexcept {
  if (at > s.size() || s.size() - at < word.size()) return false;
  for (std::size_t k = 0; k < word.size(); ++k) {
    if (asciiLower(s[at + k]) != asciiLower(word[k])) return false;
  }
  return true;
}

std::size_t ampmTokenLength(std::u16string_view s, std::size_t at) noexcept {
  if (matchesNoCase(s, at, u"am/pm")) return 5;
  if (matchesNoCase(s, at, u"ampm")) return 4;
  if (matchesNoCase(s, at, u"a/p")) return 3;
  return 0;
}

std::vector<std::u16string_view> splitSections(std::u16string_view fmt) {
  std::vector<std::u16string_view> sections;
  std::size_t start = 0;
  std::size_t i = 0;
  while (i < fmt.size()) {
    if (skipLiteral(fmt, i)) continue;
    if (fmt[i] == u';') {
      sections.push_back(fmt.substr(start, i - start));
      start = i + 1;
    }
    ++i;
  }
  sections.push_back(fmt.substr(std::min(start, fmt.size())));
  return sections;
}

std::optional<FormatKind> classifyFormat(std::u16string_view fmt) {
  bool digits = false, date = false, text = false, caseMarks = false;
  std::size_t i = 0;
  while (i < fmt.size()) {
    if (skipLiteral(fmt, i)) continue;
    switch (asciiLower(fmt[i])) {
      case u'0':
      case u'#':
        digits = true;
        break;
      case u'd':
      case u'w':
      case u'm':
      case u'q':
      case u'y':
      case u'h':
      case u'n':
      case u's':
      case u'c':
        date = true;
        break;
      case u't':
        date = date || matchesNoCase(fmt, i, u"ttttt");
        break;
      case u'a':
        date = date || ampmTokenLength(fmt, i) > 0;
        break;
      case u'@':
      case u'&':
        text = true;
        break;
      case u'<':
      case u'>':
      case u'!':
        caseMarks = true;
        break;
      default:
        break;
    }
    ++i;
  }
  // @ and & mean nothing in a date format, so with them the letters around
  // ("@ days", "&& is") are literal text.
  if (digits) return FormatKind::Number;
  if (text) return FormatKind::String;
  if (date) return FormatKind::Date;
  if (caseMarks) return FormatKind::String;
  return std::nullopt;
}

std::optional<double> numericValue(const Value& v, const Locale& loc) {
  switch (v.type()) {
    case VarType::String:
      // Text that reads as no number is none, not a failure.
      return parseNumber(v.stringValue(), loc);
    case VarType::Null:
    case VarType::Object:
    case VarType::Array:
      return std::nullopt;
    default:
      // The other kinds all convert, as arithmetic converts them.
      return toDouble(v, loc);
  }
}

std::optional<SignedDigits> numberDigits(const Value& v, const Locale& loc) {
  if (v.type() == VarType::Currency) return signedDigits(v.currencyValue());
  const std::optional<double> d = numericValue(v, loc);
  if (!d) return std::nullopt;
  return signedDigits(*d);
}

std::optional<double> dateValue(const Value& v, const Locale& loc) {
  if (v.isString()) {
    if (auto d = parseDate(v.stringValue(), loc)) return d;
  }
  return numericValue(v, loc);
}

}  // namespace detail

std::u16string format(const Value& v, std::u16string_view fmt, const Locale& loc) {
  using detail::FormatKind;
  if (fmt.empty()) return v.isNull() || v.isEmpty() ? std::u16string() : toString(v, loc);
  if (v.isObject() || v.isArray()) raise(kTypeMismatch);
  if (auto named = detail::formatNamed(v, fmt, loc)) return std::move(*named);

  const std::optional<FormatKind> kind = detail::classifyFormat(fmt);
  if (kind == FormatKind::String || (!kind && v.isString())) {
    if (v.isNull()) {
      // Null only shows through a section of its own.
      return detail::splitSections(fmt).size() >= 2 ? detail::formatString(u"", true, fmt)
                                                    : std::u16string();
    }
    return detail::formatString(v.isString() ? v.stringValue() : toString(v, loc), false, fmt);
  }
  if (v.isNull()) {
    return kind == FormatKind::Date ? std::u16string() : detail::formatNumber(0, true, fmt, loc);
  }
  if (kind == FormatKind::Date) {
    const std::optional<double> serial = detail::dateValue(v, loc);
    if (!serial) return toString(v, loc);  // text that is no date stays as it is
    return detail::formatDate(*serial, detail::splitSections(fmt).front(), loc);
  }
  const std::optional<detail::SignedDigits> number = detail::numberDigits(v, loc);
  if (!number) return toString(v, loc);  // text that is no number stays as it is
  return detail::formatNumber(*number, false, fmt, loc);
}

}  // namespace korvex::vb
