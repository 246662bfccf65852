// Splitting CodeBlock into the line list. CR LF, a lone CR and a lone LF
// each end a line (so LF CR leaves an empty line between); positions are
// 16-bit, so a script past 32767 characters ends in the overflow error.
#include <string>

#include "engine/checked.hpp"
#include "engine/engine_state.hpp"

namespace korvex {

namespace {

// 1-based position of `ch` at or after `from`, 0 when there is none.
std::int64_t findFrom(const std::u16string& code, char16_t ch, std::int64_t from) {
  if (from < 1 || static_cast<std::size_t>(from) > code.size()) return 0;
  const std::size_t k = code.find(ch, static_cast<std::size_t>(from) - 1);
  return k == std::u16string::npos ? 0 : static_cast<std::int64_t>(k) + 1;
}

std::int64_t smallerNonZero(std::int64_t a, std::int64_t b) {
  if (a == 0) return b;
  if (b == 0) return a;
  return a < b ? a : b;
}

}  // namespace

void services::SplitCodeBlock(BasicEngine& engine) {
  EngineAccess::State& s = EngineAccess::state(engine);
  std::u16string& code = s.codeBlock;
  if (!code.ends_with(u"\r\n")) code += u"\r\n";
  if (s.splitValid && code == s.splitSource) return;

  s.splitValid = false;
  s.kept.reset();
  s.lines = std::make_unique<Stack>(&engine);
  s.lineCount = 0;

  // The next CR and LF are remembered between searches: a script with LF
  // breaks has its only CR at the very end, and searching for it afresh on
  // every line would be quadratic.
  std::int64_t nextCr = findFrom(code, u'\r', 1);
  std::int64_t nextLf = findFrom(code, u'\n', 1);
  std::int16_t pos = 1;
  std::int16_t brk = toInt16Checked(smallerNonZero(toInt16Checked(nextCr), toInt16Checked(nextLf)));
  while (brk != 0) {
    s.lines->Push(Value::string(std::u16string_view(code).substr(
        static_cast<std::size_t>(pos) - 1, static_cast<std::size_t>(brk - pos))));
    s.lineCount = s.lines->StackSize();
    const std::size_t at = static_cast<std::size_t>(brk) - 1;
    const bool crlf = code[at] == u'\r' && at + 1 < code.size() && code[at + 1] == u'\n';
    pos = toInt16Checked(std::int64_t{brk} + (crlf ? 2 : 1));
    if (nextCr != 0 && nextCr < pos) nextCr = findFrom(code, u'\r', pos);
    if (nextLf != 0 && nextLf < pos) nextLf = findFrom(code, u'\n', pos);
    brk = toInt16Checked(smallerNonZero(toInt16Checked(nextCr), toInt16Checked(nextLf)));
  }
  auto kept = std::make_shared<KeptScript>();
  kept->lines.reserve(static_cast<std::size_t>(s.lineCount));
  for (std::int16_t n = 1; n <= s.lineCount; ++n) {
    const Value* line = s.lines->LineRef(n);
    kept->lines.emplace_back(line != nullptr ? line->stringValue() : std::u16string());
  }
  s.kept = std::move(kept);
  s.splitSource = code;
  s.splitValid = true;
}

}  // namespace korvex
