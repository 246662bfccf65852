// Splitting CodeBlock into the line list. CR LF, a lone CR and a lone LF
// each end a line (so LF CR leaves an empty line between); positions are
// 16-bit, so a script past 32767 characters ends in the overflow error.
#include <string>

#include "engine/checked.hpp"
#include "engine/context.hpp"

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

void Context::splitScript() {
  Frame& f = *frame_;
  std::u16string& code = f.codeBlock;
  if (!code.ends_with(u"\r\n")) code += u"\r\n";
  if (f.kept && code == f.splitSource) return;

  f.kept.reset();
  f.lineCount = 0;
  auto kept = std::make_shared<KeptScript>();

  // The next CR and LF are remembered between searches: a script with LF
  // breaks has its only CR at the very end, and searching for it afresh on
  // every line would be quadratic.
  std::int64_t nextCr = findFrom(code, u'\r', 1);
  std::int64_t nextLf = findFrom(code, u'\n', 1);
  std::int16_t pos = 1;
  std::int16_t brk = toInt16Checked(smallerNonZero(toInt16Checked(nextCr), toInt16Checked(nextLf)));
  while (brk != 0) {
    kept->lines.emplace_back(std::u16string_view(code).substr(static_cast<std::size_t>(pos) - 1,
                                                              static_cast<std::size_t>(brk - pos)));
    f.lineCount = toInt16Checked(static_cast<std::int64_t>(kept->lines.size()));
    const std::size_t at = static_cast<std::size_t>(brk) - 1;
    const bool crlf = code[at] == u'\r' && at + 1 < code.size() && code[at + 1] == u'\n';
    pos = toInt16Checked(std::int64_t{brk} + (crlf ? 2 : 1));
    if (nextCr != 0 && nextCr < pos) nextCr = findFrom(code, u'\r', pos);
    if (nextLf != 0 && nextLf < pos) nextLf = findFrom(code, u'\n', pos);
    brk = toInt16Checked(smallerNonZero(toInt16Checked(nextCr), toInt16Checked(nextLf)));
  }
  f.kept = std::move(kept);
  f.splitSource = code;
}

}  // namespace korvex
