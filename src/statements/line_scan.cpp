#include "statements/line_scan.hpp"

#include "engine/checked.hpp"
#include "engine/engine_services.hpp"
#include "engine/messages.hpp"
#include "engine/string_op.hpp"
#include "korvex/engine.hpp"
#include "values/ops.hpp"

namespace korvex::stmt::detail {

std::int32_t fail(BasicEngine& engine, std::int32_t number, std::u16string_view message) {
  services::Report(engine, number, message);
  return number;
}

std::size_t skipBlanks(std::u16string_view s, std::size_t pos) noexcept {
  while (pos < s.size() && isBlank(s[pos])) ++pos;
  return pos;
}

std::optional<Word> readKeyword(BasicEngine& engine, std::u16string_view line, QuoteStyle style) {
  const std::size_t start = skipBlanks(line, 0);
  if (start == line.size() || line[start] == u'\'') return Word{{}, start};
  if (!isIdentStart(line[start])) {
    fail(engine, 3, msg::kBadSymbol);
    return std::nullopt;
  }
  std::size_t pos = start + 1;
  for (; pos < line.size() && !isBlank(line[pos]); ++pos) {
    if (isIdentChar(line[pos])) continue;
    std::u16string message(msg::kBadSymbol);
    message += style == QuoteStyle::Spaced ? u" '" : u"'";
    message += line[pos];
    message += u'\'';
    fail(engine, 3, message);
    return std::nullopt;
  }
  return Word{line.substr(start, pos - start), pos};
}

std::optional<Word> expectKeyword(BasicEngine& engine, std::u16string_view line,
                                  std::u16string_view keyword) {
  auto word = readKeyword(engine, line, QuoteStyle::Spaced);
  if (!word) return std::nullopt;
  if (!equalsNoCase(word->text, keyword)) {
    fail(engine, 1, msg::kSyntax);
    return std::nullopt;
  }
  return word;
}

Word readLooseWord(std::u16string_view line, std::size_t pos) noexcept {
  const std::size_t start = skipBlanks(line, pos);
  std::size_t end = start;
  while (end < line.size() && !isBlank(line[end])) ++end;
  return Word{line.substr(start, end - start), end};
}

Cut upToComment(std::u16string_view line, std::size_t from) noexcept {
  if (from >= line.size()) return Cut{};
  for (std::size_t pos = from; pos < line.size(); ++pos) {
    if (line[pos] == u'\'') return Cut{line.substr(from, pos - from), true};
    if (line[pos] == u'"') {
      // A literal runs to the next double quote; there is no escape.
      const std::size_t close = line.find(u'"', pos + 1);
      if (close == std::u16string_view::npos) return Cut{line.substr(from), false};
      pos = close;
    }
  }
  return Cut{line.substr(from), true};
}

std::int16_t nextLine(std::int16_t line) { return step16(line, 1); }

std::int16_t step16(std::int16_t value, int delta) {
  return toInt16Checked(std::int64_t{value} + delta);
}

Value flagEntry(std::u16string_view marker, std::int16_t line, Value detail) {
  Array entry({Array::Bound{1, 3}});
  entry.elements()[0] = Value::string(marker);
  entry.elements()[1] = Value::integer(line);
  entry.elements()[2] = std::move(detail);
  return Value::array(std::move(entry));
}

Value flagItem(const Value& entry, std::size_t index) {
  if (!entry.isArray()) return {};
  const auto& items = entry.arrayValue().elements();
  if (index < 1 || index > items.size()) return {};
  return items[index - 1];
}

std::u16string_view flagMarker(const Value& entry) {
  if (!entry.isArray() || entry.arrayValue().elements().empty()) return {};
  const Value& marker = entry.arrayValue().elements().front();
  return marker.isString() ? std::u16string_view(marker.stringValue()) : std::u16string_view();
}

bool isDoMarker(std::u16string_view marker) noexcept {
  return marker == kDoWhileMarker || marker == kDoUntilMarker;
}

bool conditionHolds(const Value& value, const Locale& locale) {
  return !value.isNull() && vb::toBoolean(value, locale);
}

}  // namespace korvex::stmt::detail
