// User-defined number formats: 0 # . , % E+ E- e+ e-, literals, quoted text
// and escapes, in up to four sections.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "values/format_detail.hpp"

namespace korvex::vb::detail {

namespace {

struct NumberPattern {
  enum class Kind : std::uint8_t { Text, IntDigit, FracDigit, Point, Exponent };
  struct Item {
    Kind kind;
    char16_t ch = 0;      // '0' or '#' for digits, 'E' or 'e' for the exponent
    std::u16string text;  // Text only
  };
  std::vector<Item> items;
  int intDigits = 0;
  int fracDigits = 0;
  // A "0" makes every integer placeholder after it show a digit, and every
  // fraction placeholder before it: "#0#" shows at least two digits,
  // ".#0#" at least two decimals.
  int firstIntZero = -1;
  int lastFracZero = -1;
  bool grouping = false;
  int thousandsScale = 0;  // commas left of the point: divide by 1000 each
  int percents = 0;
  bool exponent = false;
  bool exponentPlus = false;
  int exponentMinDigits = 0;

  void addText(std::u16string_view t) {
    if (items.empty() || items.back().kind != Kind::Text) items.push_back({Kind::Text, 0, {}});
    items.back().text.append(t);
  }
};

NumberPattern parsePattern(std::u16string_view fmt) {
  NumberPattern p;
  using Kind = NumberPattern::Kind;
  bool seenPoint = false;
  int pendingCommas = 0;  // commas after the last integer placeholder
  std::size_t i = 0;
  std::u16string literal;
  while (i < fmt.size()) {
    literal.clear();
    if (takeQuotedOrEscaped(fmt, i, literal)) {
      p.addText(literal);
      continue;
    }
    const char16_t c = fmt[i];
    if (c == u'0' || c == u'#') {
      if (seenPoint) {
        if (c == u'0') p.lastFracZero = p.fracDigits;
        ++p.fracDigits;
        p.items.push_back({Kind::FracDigit, c, {}});
      } else {
        // A comma between two digit placeholders asks for grouping.
        if (pendingCommas > 0 && p.intDigits > 0) p.grouping = true;
        pendingCommas = 0;
        if (c == u'0' && p.firstIntZero < 0) p.firstIntZero = p.intDigits;
        ++p.intDigits;
        p.items.push_back({Kind::IntDigit, c, {}});
      }
    } else if (c == u'.' && !seenPoint && !p.exponent) {
      seenPoint = true;
      p.thousandsScale += pendingCommas;
      pendingCommas = 0;
      p.items.push_back({Kind::Point, c, {}});
    } else if (c == u',') {
      if (!seenPoint && p.intDigits > 0) ++pendingCommas;
    } else if ((c == u'E' || c == u'e') && i + 1 < fmt.size() &&
               (fmt[i + 1] == u'+' || fmt[i + 1] == u'-') && !p.exponent &&
               p.intDigits + p.fracDigits > 0) {
      p.exponent = true;
      p.exponentPlus = fmt[i + 1] == u'+';
      p.thousandsScale += pendingCommas;
      pendingCommas = 0;
      seenPoint = true;  // no more integer placeholders for the mantissa
      p.items.push_back({Kind::Exponent, c, {}});
      i += 2;
      while (i < fmt.size() && (fmt[i] == u'0' || fmt[i] == u'#')) {
        if (fmt[i] == u'0') ++p.exponentMinDigits;
        ++i;
      }
      continue;
    } else {
      if (c == u'%') ++p.percents;
      p.addText(std::u16string_view(&fmt[i], 1));
    }
    ++i;
  }
  p.thousandsScale += pendingCommas;
  return p;
}

std::u16string render(const NumberPattern& p, DecimalDigits d, bool fromDouble, bool minus,
                      const Locale& loc) {
  using Kind = NumberPattern::Kind;
  // % and scaling commas shift the decimal point; exact on digits.
  if (!d.isZero()) d.pointPos += 2 * p.percents - 3 * p.thousandsScale;
  int exponent = 0;
  if (p.exponent && !d.isZero()) {
    exponent = d.pointPos - p.intDigits;
    d.pointPos = p.intDigits;
  }
  // A Double is first taken to the 15 significant digits of its string form
  // and rounded from there, so 0.075 (stored as 0.0749999...) is .08 with
  // "#.##" and 1.005 is 1.01 with "0.00", as the text a user sees suggests.
  if (fromDouble) roundHalfUp(d, kDoubleDigits - d.pointPos);
  roundHalfUp(d, p.fracDigits);
  if (p.exponent && d.pointPos > p.intDigits) {  // 9.99 rounded up to 10.0
    d.pointPos = p.intDigits;
    ++exponent;
  }

  // The integer digits of the rounded number, without leading zeros.
  std::u16string intText;
  for (int k = 0; k < d.pointPos; ++k) intText.push_back(static_cast<char16_t>(d.digitAt(k)));
  const int intLen = static_cast<int>(intText.size());
  const int extra = intLen > p.intDigits ? intLen - p.intDigits : 0;
  // Last fraction place shown: the last non-zero digit or the last "0".
  int lastFrac = p.lastFracZero;
  for (int j = 0; j < p.fracDigits; ++j) {
    if (d.digitAt(d.pointPos + j) != '0') lastFrac = std::max(lastFrac, j);
  }
  // Integer placeholders from this one on show a digit, "0" where the number
  // has none.
  const int zerosFrom = p.firstIntZero < 0 ? p.intDigits : p.firstIntZero;

  // How many integer digits will show, so that group separators land right.
  int shownInt = extra;
  {
    for (int k = 0; k < p.intDigits; ++k) {
      if (intLen - p.intDigits + k >= 0 || k >= zerosFrom) ++shownInt;
    }
  }

  std::u16string out;
  out.reserve(static_cast<std::size_t>(p.intDigits + p.fracDigits + 8));
  if (minus) out.push_back(u'-');
  int emitted = 0;
  const auto emitInt = [&](char16_t ch) {
    out.push_back(ch);
    ++emitted;
    const int left = shownInt - emitted;
    if (p.grouping && loc.groupSize > 0 && left > 0 && left % loc.groupSize == 0) {
      out.push_back(loc.thousandsSeparator);
    }
  };
  bool extraDone = false;
  const auto emitExtra = [&] {
    if (extraDone) return;
    extraDone = true;
    for (int k = 0; k < extra; ++k) emitInt(intText[static_cast<std::size_t>(k)]);
  };

  int intIndex = 0, fracIndex = 0;
  for (const auto& item : p.items) {
    switch (item.kind) {
      case Kind::Text:
        out += item.text;
        break;
      case Kind::IntDigit: {
        emitExtra();
        const int k = intIndex++;
        const int at = intLen - p.intDigits + k;
        if (at >= 0) {
          emitInt(intText[static_cast<std::size_t>(at)]);
        } else if (k >= zerosFrom) {
          emitInt(u'0');
        }
        break;
      }
      case Kind::Point:
        emitExtra();
        out.push_back(loc.decimalSeparator);
        break;
      case Kind::FracDigit: {
        emitExtra();
        const int j = fracIndex++;
        if (j <= lastFrac) {
          out.push_back(static_cast<char16_t>(d.digitAt(d.pointPos + j)));
        }
        break;
      }
      case Kind::Exponent:
        emitExtra();
        out.push_back(item.ch);
        if (exponent < 0) {
          out.push_back(u'-');
        } else if (p.exponentPlus) {
          out.push_back(u'+');
        }
        // "#" placeholders drop leading zeros but still show one digit.
        appendInt(out, std::abs(exponent), p.exponentMinDigits > 0 ? p.exponentMinDigits : 1);
        break;
    }
  }
  return out;
}

}  // namespace

std::u16string formatNumber(const SignedDigits& n, bool isNull, std::u16string_view fmt,
                            const Locale& loc) {
  const std::vector<std::u16string_view> sections = splitSections(fmt);
  const auto use = [&](std::u16string_view section, const DecimalDigits& d, bool minus) {
    return render(parsePattern(section), d, n.fromDouble, minus, loc);
  };
  if (isNull) return sections.size() >= 4 ? use(sections[3], DecimalDigits{}, false) : u"";
  if (n.magnitude.isZero()) {
    if (sections.size() >= 3 && !sections[2].empty()) return use(sections[2], n.magnitude, false);
    return use(sections[0], n.magnitude, false);
  }
  if (n.negative) {
    // A negative section carries its own sign; the positive one gets "-".
    if (sections.size() >= 2 && !sections[1].empty()) return use(sections[1], n.magnitude, false);
    return use(sections[0], n.magnitude, true);
  }
  return use(sections[0], n.magnitude, false);
}

}  // namespace korvex::vb::detail
