#include "statements/line_scan.hpp"

#include "engine/checked.hpp"
#include "engine/classify.hpp"
#include "engine/context.hpp"
#include "engine/kept_script.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "values/ops.hpp"

namespace korvex::stmt::detail {

std::int32_t fail(Context& ctx, std::int32_t number, std::u16string_view message) {
  ctx.report(number, message);
  return number;
}

std::size_t skipBlanks(std::u16string_view s, std::size_t pos) noexcept {
  while (pos < s.size() && isBlank(s[pos])) ++pos;
  return pos;
}

std::int32_t Verdict::replay(Context& ctx) const {
  switch (kind) {
    case Kind::Fail:
      return detail::fail(ctx, number, message);
    case Kind::MessageOnly:
      ctx.setErrMsg(message);
      return ctx.errNum();
    case Kind::Go:
    case Kind::Status:
      break;
  }
  return ctx.errNum();
}

bool Verdict::fail(std::int32_t n, std::u16string_view text) {
  kind = Kind::Fail;
  number = n;
  message.assign(text);
  return false;
}

bool Verdict::fail(const Message& m, std::u16string_view detail) {
  std::u16string text(m.text);
  text += detail;
  return fail(m.number, text);
}

std::int32_t fail(Context& ctx, const Message& m, std::u16string_view detail) {
  return ctx.report(m, detail);
}

std::optional<Word> readKeyword(Verdict& verdict, std::u16string_view line, QuoteStyle style) {
  const std::size_t start = skipBlanks(line, 0);
  if (start == line.size() || line[start] == u'\'') return Word{{}, start};
  if (!isIdentStart(line[start])) {
    verdict.fail(msg::kBadSymbol);
    return std::nullopt;
  }
  std::size_t pos = start + 1;
  for (; pos < line.size() && !isBlank(line[pos]); ++pos) {
    if (isIdentChar(line[pos])) continue;
    verdict.fail(msg::kBadSymbol,
                 msg::quoted({&line[pos], 1}, style == QuoteStyle::Spaced ? u" '" : u"'"));
    return std::nullopt;
  }
  return Word{line.substr(start, pos - start), pos};
}

std::optional<Word> expectKeyword(Verdict& verdict, std::u16string_view line,
                                  std::u16string_view keyword) {
  auto word = readKeyword(verdict, line, QuoteStyle::Spaced);
  if (!word) return std::nullopt;
  if (!equalsNoCase(word->text, keyword)) {
    verdict.fail(msg::kSyntax);
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

std::int16_t kindAt(Context& ctx, std::int16_t line) {
  if (KeptLine* kept = ctx.keptLine(line)) return ctx.kindOf(*kept);
  Error error;
  const std::int16_t kind = classifyLine(ctx.lineCode(line), error);
  if (error.failed()) ctx.frame().error = std::move(error);
  return kind;
}

std::int16_t nextLine(std::int16_t line) { return step16(line, 1); }

std::int16_t step16(std::int16_t value, int delta) {
  return toInt16Checked(std::int64_t{value} + delta);
}

bool conditionHolds(const Value& value, const Locale& locale) {
  return !value.isNull() && vb::toBoolean(value, locale);
}

}  // namespace korvex::stmt::detail
