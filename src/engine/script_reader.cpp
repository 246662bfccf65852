// Character-level readers over one script line.
#include "engine/script_reader.hpp"

#include "engine/messages.hpp"
#include "values/runtime_error.hpp"
#include "values/text_scan.hpp"

namespace korvex {

namespace {

// Positions are 16-bit and 1-based; the text is addressed 0-based. A
// position past the 16-bit range is the platform's overflow.
std::int16_t position(std::size_t index) {
  if (index >= 32767) vb::raise(vb::kOverflow);
  return static_cast<std::int16_t>(index + 1);
}
std::int16_t lastPosition(std::u16string_view text) {
  return text.empty() ? 0 : position(text.size() - 1);
}
// Where a reader starting at `pos` begins, 0-based.
std::size_t startIndex(std::int16_t pos) { return pos < 1 ? 0 : static_cast<std::size_t>(pos) - 1; }
// The text from position `from` through position `to` (both 1-based).
std::u16string_view between(std::u16string_view text, std::int16_t from, std::int16_t to) {
  const std::size_t begin = startIndex(from);
  const std::size_t end = static_cast<std::size_t>(to < 0 ? 0 : to);
  return begin < end ? text.substr(begin, end - begin) : std::u16string_view{};
}

}  // namespace

std::int32_t ScriptReader::fail(std::int32_t number, std::u16string msg) {
  error_.text = std::move(msg);
  error_.number = number;
  return number;
}

std::int32_t ScriptReader::quoteEnd(std::u16string_view text, std::int16_t& pos) {
  // pos is on the opening quote; the next quote closes, whatever precedes it.
  const std::size_t open = static_cast<std::size_t>(pos) - 1;
  const std::size_t close = text.find(u'"', open + 1);
  if (pos < 1 || open >= text.size() || close == std::u16string_view::npos) {
    pos = lastPosition(text);
    return fail(msg::kBadExpression, std::u16string(u",期待引号。\r\n") + std::u16string(text));
  }
  pos = position(close);
  return 0;
}

std::int32_t ScriptReader::groupEnd(std::u16string_view text, std::int16_t& pos) {
  int depth = 0;
  bool opened = false;
  std::size_t i = startIndex(pos);
  for (; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'"') {
      std::int16_t qpos = position(i);
      if (quoteEnd(text, qpos) != 0) {
        pos = qpos;
        return error_.number;
      }
      i = static_cast<std::size_t>(qpos) - 1;
    } else if (c == u'(') {
      opened = true;
      ++depth;
    } else if (c == u')') {
      if (depth == 1) {
        pos = position(i);
        return 0;
      }
      --depth;
    } else if (!opened && !isBlank(c)) {
      pos = position(i);
      return fail(msg::kMissingOpen);
    }
  }
  pos = lastPosition(text);
  if (depth != 0) return fail(msg::kUnbalanced);
  return 0;
}

std::int32_t ScriptReader::readQuoted(std::u16string_view text, std::int16_t& pos,
                                      std::u16string& piece) {
  const std::int16_t start = pos;
  if (quoteEnd(text, pos) != 0) return error_.number;
  piece.append(between(text, start, pos));
  return 0;
}

std::int32_t ScriptReader::readGroup(std::u16string_view text, std::int16_t& pos,
                                     std::u16string_view& piece) {
  const std::int16_t start = pos;
  if (groupEnd(text, pos) != 0) return error_.number;
  piece = between(text, start, pos);
  return 0;
}

std::int32_t ScriptReader::readGroup(std::u16string_view text, std::int16_t& pos,
                                     std::u16string& piece) {
  std::u16string_view view;
  if (readGroup(text, pos, view) != 0) return error_.number;
  piece.append(view);
  return 0;
}

std::int32_t ScriptReader::listItem(std::u16string_view text, std::int16_t& pos,
                                    std::u16string* out, std::u16string_view& span,
                                    bool& blanksDropped, bool& separatorFound) {
  separatorFound = false;
  blanksDropped = false;
  span = {};
  const auto trimmed = trimBlanks(text);
  if (!trimmed.empty() && trimmed.back() == u',') {
    return fail(msg::kBadExpression);
  }
  std::size_t first = std::u16string_view::npos;
  std::size_t last = 0;
  bool blankPending = false;
  // Characters from..to count: quoted strings and groups whole, anything
  // else but blanks one by one.
  const auto keep = [&](std::size_t from, std::size_t to) {
    if (first == std::u16string_view::npos) first = from;
    blanksDropped = blanksDropped || blankPending;
    blankPending = false;
    last = to;
    if (out != nullptr) out->append(text.substr(from, to - from + 1));
  };
  std::size_t i = startIndex(pos);
  for (; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'"' || c == u'(') {
      std::int16_t p = position(i);
      const std::int32_t r = c == u'"' ? quoteEnd(text, p) : groupEnd(text, p);
      if (r != 0) {
        pos = p;
        return r;
      }
      keep(i, static_cast<std::size_t>(p) - 1);
      i = static_cast<std::size_t>(p) - 1;
    } else if (c == u'\'') {
      // The rest of the line is a comment: the list ends here.
      break;
    } else if (c == u',' || c == u'，') {
      separatorFound = true;
      break;
    } else if (!isBlank(c)) {
      keep(i, i);
    } else if (first != std::u16string_view::npos) {
      blankPending = true;
    }
  }
  pos = separatorFound ? position(i) : lastPosition(text);
  if (first != std::u16string_view::npos) span = text.substr(first, last - first + 1);
  return 0;
}

std::int32_t ScriptReader::readListItem(std::u16string_view text, std::int16_t& pos,
                                        std::u16string& piece, bool& separatorFound) {
  std::u16string_view span;
  bool blanksDropped = false;
  return listItem(text, pos, &piece, span, blanksDropped, separatorFound);
}

std::int32_t ScriptReader::findListItem(std::u16string_view text, std::int16_t& pos,
                                        std::u16string_view& span, bool& blanksDropped,
                                        bool& separatorFound) {
  return listItem(text, pos, nullptr, span, blanksDropped, separatorFound);
}

}  // namespace korvex
