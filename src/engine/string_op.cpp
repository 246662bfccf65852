// Character-level readers over one script line.
#include "engine/string_op.hpp"

#include "engine/messages.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex {

namespace {

constexpr bool isAsciiLetter(char16_t c) noexcept {
  return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}
constexpr bool isDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }
// Names may be written in Chinese (and in any other non-ASCII script).
constexpr bool isWide(char16_t c) noexcept { return c >= 0x80; }

// Positions are 16-bit and 1-based; the text is addressed 0-based. A
// position past the 16-bit range is the platform's overflow.
std::int16_t position(std::size_t index) {
  if (index >= 32767) vb::raise(vb::kOverflow);
  return static_cast<std::int16_t>(index + 1);
}
std::int16_t lastPosition(std::u16string_view text) {
  return text.empty() ? 0 : position(text.size() - 1);
}

}  // namespace

bool isIdentStart(char16_t c) noexcept { return isAsciiLetter(c) || c == u'_' || isWide(c); }

bool isIdentChar(char16_t c) noexcept {
  return isAsciiLetter(c) || isDigit(c) || c == u'_' || isWide(c);
}

std::u16string_view trimBlanks(std::u16string_view s) noexcept {
  return vb::trimBy(s, [](char16_t c) { return isBlank(c); });
}

std::u16string_view firstLine(std::u16string_view s) noexcept {
  const auto cr = s.find(u'\r');
  return cr == std::u16string_view::npos ? s : s.substr(0, cr);
}

std::u16string upperAscii(std::u16string_view s) {
  std::u16string out(s);
  for (auto& c : out) c = vb::asciiUpper(c);
  return out;
}

std::int32_t StringOp::fail(std::int32_t number, std::u16string msg) {
  errMsg_ = std::move(msg);
  errNum_ = number;
  return number;
}

std::int32_t StringOp::ReadStringQueto(std::u16string_view text, std::int16_t& pos,
                                       std::u16string& piece) {
  // pos is on the opening quote; the next quote closes, whatever precedes it.
  const std::size_t open = static_cast<std::size_t>(pos) - 1;
  const std::size_t close = text.find(u'"', open + 1);
  if (pos < 1 || open >= text.size() || close == std::u16string_view::npos) {
    pos = lastPosition(text);
    std::u16string m(msg::kBadExpression);
    m += u",期待引号。\r\n";
    m += text;
    return fail(2, std::move(m));
  }
  piece.append(text.substr(open, close - open + 1));
  pos = position(close);
  return 0;
}

std::int32_t StringOp::ReadStringParentheses(std::u16string_view text, std::int16_t& pos,
                                             std::u16string& piece) {
  int depth = 0;
  bool opened = false;
  std::size_t i = pos < 1 ? 0 : static_cast<std::size_t>(pos) - 1;
  for (; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'"') {
      std::int16_t qpos = position(i);
      if (ReadStringQueto(text, qpos, piece) != 0) {
        pos = qpos;
        return errNum_;
      }
      i = static_cast<std::size_t>(qpos) - 1;
    } else if (c == u'(') {
      opened = true;
      ++depth;
      piece += c;
    } else if (c == u')') {
      piece += c;
      if (depth == 1) {
        pos = position(i);
        return 0;
      }
      --depth;
    } else if (!opened && !isBlank(c)) {
      pos = position(i);
      return fail(26, std::u16string(msg::kMissingOpen));
    } else {
      piece += c;
    }
  }
  pos = lastPosition(text);
  if (depth != 0) return fail(25, std::u16string(msg::kUnbalanced));
  return 0;
}

std::int32_t StringOp::ReadStringUntilMeetCommaOrEnd(std::u16string_view text, std::int16_t& pos,
                                                     std::u16string& piece, bool& separatorFound) {
  separatorFound = false;
  const auto trimmed = trimBlanks(text);
  if (!trimmed.empty() && trimmed.back() == u',') {
    return fail(2, std::u16string(msg::kBadExpression));
  }
  std::size_t i = pos < 1 ? 0 : static_cast<std::size_t>(pos) - 1;
  for (; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'"' || c == u'(') {
      std::int16_t p = position(i);
      const std::int32_t r =
          c == u'"' ? ReadStringQueto(text, p, piece) : ReadStringParentheses(text, p, piece);
      if (r != 0) {
        pos = p;
        return r;
      }
      i = static_cast<std::size_t>(p) - 1;
    } else if (c == u'\'') {
      // The rest of the line is a comment: the list ends here.
      break;
    } else if (c == u',' || c == u'，') {
      separatorFound = true;
      pos = position(i);
      return 0;
    } else if (!isBlank(c)) {
      piece += c;
    }
  }
  pos = lastPosition(text);
  return 0;
}

}  // namespace korvex
