// Scripts made of random pieces of the language: statements cut short,
// unbalanced parentheses and quotes, odd line breaks, function calls with
// the wrong arguments. Clerks type exactly this kind of text, and whatever
// it is, a run must end with an error value (never an escaped exception, a
// crash or a hang), say what went wrong, and come out the same every time.
// Under the sanitizer build this also sweeps the scanners and the function
// classes for out-of-range reads.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support.hpp"

namespace korvex::testing {
namespace {

// Pieces a script is glued from, separated by "|". DATE and TIME are left
// out: the clock would make two runs of one script differ.
constexpr std::u16string_view kPieceText =
    u"DIM|IF|THEN|ELSE|END|END IF|DO|WHILE|UNTIL|LOOP|EXIT DO|MSGBOX|RAISEERROR|x|y|中|"
    u"=|+|-|*|/|^|&|<|<=|<>|(|)|,|，|\"|\"a\"|'|#|#2005-1-1#|1|0|.5|1.2.3|NOT|AND|OR|"
    u"XOR|MOD|NULL|TRUE|EMPTY|LEFT(|MID(|FORMAT(|大写(|ROUND(|CDATE(|GETVAR(|SETVAR(|"
    u"INPUT(|LBOUND(|HEX(|CHR(|ASC(|EXP(|MAXDAY(|\"#,##0.00\"|\"yyyy-mm-dd\"|\t|"
    u"_员工属性(|EOF|MoveNext|REM|999999999999|vbCrLf";

std::vector<std::u16string_view> pieces() {
  std::vector<std::u16string_view> out;
  for (std::size_t at = 0, bar; at <= kPieceText.size(); at = bar + 1) {
    bar = std::min(kPieceText.find(u'|', at), kPieceText.size());
    out.push_back(kPieceText.substr(at, bar - at));
  }
  return out;
}

// Well-formed line shapes, so that runs also get past their first lines;
// "%" stands for an expression.
constexpr std::array<std::u16string_view, 12> kShapes = {
    u"x = %",      u"y = x & %", u"IF % THEN", u"ELSE",     u"END IF",          u"DO WHILE %",
    u"DO UNTIL %", u"LOOP",      u"EXIT DO",   u"MSGBOX %", u"IF % THEN y = %", u"x = MID(%, 2)"};
constexpr std::array<std::u16string_view, 14> kOperands = {
    u"1",          u"0",  u"\"a\"",     u"x",       u"y",          u"NULL",        u"TRUE",
    u"#2005-1-1#", u".5", u"FORMAT(x)", u"大写(x)", u"LEFT(y, x)", u"ROUND(x, 1)", u"CDATE(y)"};
constexpr std::array<std::u16string_view, 8> kOperators = {u" + ", u" - ", u" * ", u" / ",
                                                           u" & ", u" < ", u" = ", u" AND "};

constexpr std::array<std::u16string_view, 4> kBreaks = {u"\r\n", u"\n", u"\r", u"\n\r"};

std::u16string randomScript(std::mt19937& rng) {
  static const std::vector<std::u16string_view> kPieces = pieces();
  auto pick = [&rng](const auto& from) {
    return from[std::uniform_int_distribution<std::size_t>(0, std::size(from) - 1)(rng)];
  };
  auto below = [&rng](std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(rng);
  };
  std::u16string text = below(10) < 8 ? u"DIM x, y, 中\r\n" : u"";
  for (std::size_t lines = 1 + below(8); lines > 0; --lines) {
    if (below(6) != 0) {  // a well-formed shape, "%" filled with an expression
      for (const char16_t c : pick(kShapes)) {
        if (c != u'%') {
          text += c;
          continue;
        }
        text += pick(kOperands);
        for (std::size_t more = below(3); more > 0; --more) {
          text += pick(kOperators);
          text += pick(kOperands);
        }
      }
      text += u"\r\n";
    } else {  // up to nine pieces glued by blanks, then any kind of break
      for (std::size_t w = below(10); w > 0; --w) (text += pick(kPieces)) += u' ';
      text += pick(kBreaks);
    }
  }
  return text;
}

struct Outcome {
  std::int32_t errNum;
  std::u16string errMsg;
  std::int16_t currentLine, lineCount;
  bool stopped;
};

// Runs a script on a fresh engine; an endless loop is cut off after a
// generous number of lines through the host's per-line hook.
Outcome run(const std::u16string& script) {
  Harness h;
  int linesRun = 0;
  bool stopped = false;
  h.engine.SetLineHook([&](std::int16_t) { return ++linesRun <= 5000 || !(stopped = true); });
  h.engine.SetCodeBlock(script);
  h.engine.Execute();
  return {h.engine.ErrNum(), h.engine.ErrMsg(), h.engine.CurrentLineNum(), h.engine.LineCount(),
          stopped};
}

TEST(RandomScripts, EveryRunEndsWithAnExplainedAndRepeatableOutcome) {
  std::mt19937 rng(20261124);
  std::set<std::int32_t> errorNumbers;
  int succeeded = 0;
  for (int i = 0; i < 2000; ++i) {
    const std::u16string script = randomScript(rng);
    std::string shown = u8(script);
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c == '\r' || c == '\n'; }, '|');
    SCOPED_TRACE(shown);
    const Outcome first = run(script);
    if (first.errNum != 0) {
      errorNumbers.insert(first.errNum);
      EXPECT_FALSE(first.errMsg.empty()) << "error " << first.errNum << " without a message";
    } else {
      ++succeeded;
    }
    if (!first.stopped) {
      // A run stops on a line of the script or just past its end.
      EXPECT_GE(first.currentLine, 1);
      EXPECT_LE(first.currentLine, first.lineCount + 1);
    }
    const Outcome second = run(script);
    EXPECT_EQ(first.errNum, second.errNum);
    EXPECT_EQ(first.errMsg, second.errMsg);
    EXPECT_EQ(first.currentLine, second.currentLine);
  }
  // The generator must reach clean runs and many different failures, or it
  // sweeps next to nothing.
  EXPECT_GE(succeeded, 10);
  EXPECT_GE(errorNumbers.size(), 12u);
}

}  // namespace
}  // namespace korvex::testing
