// The character-level readers and the argument-list splitter.
#include "engine/script_reader.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/paras.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

enum class Reader { Quote, Group, ListItem };

struct ReadCase {
  Reader reader;
  const char16_t* text;
  std::int16_t start;
  std::int32_t errNum;
  const char16_t* piece;  // on success
  std::int16_t end;       // position left on the last character consumed
  bool separator = false;
};

class Reads : public ::testing::TestWithParam<ReadCase> {};

TEST_P(Reads, PieceAndPosition) {
  const ReadCase& c = GetParam();
  ScriptReader op;
  std::int16_t pos = c.start;
  std::u16string piece;
  bool separator = false;
  std::int32_t r = 0;
  switch (c.reader) {
    case Reader::Quote:
      r = op.readQuoted(c.text, pos, piece);
      break;
    case Reader::Group:
      r = op.readGroup(c.text, pos, piece);
      break;
    case Reader::ListItem:
      r = op.readListItem(c.text, pos, piece, separator);
      break;
  }
  const std::string text = toUtf8(c.text);
  EXPECT_EQ(r, c.errNum) << text;
  EXPECT_EQ(op.error().number, c.errNum) << text;
  if (c.errNum == 0) {
    EXPECT_EQ(piece, c.piece) << text;
    EXPECT_EQ(pos, c.end) << text;
    EXPECT_EQ(separator, c.separator) << text;
  }
}

// clang-format off
const ReadCase kReads[] = {
    {Reader::Quote, u"\"a,b\"", 1, 0, u"\"a,b\"", 5},
    {Reader::Quote, u"x = \"a\"\"b\"", 5, 0, u"\"a\"", 7},  // no escapes
    {Reader::Quote, u"\"abc", 1, 2, nullptr, 0},
    {Reader::Group, u"  (1+(2*3)) rest", 1, 0, u"  (1+(2*3))", 11},
    {Reader::Group, u"(\")\" & x)", 1, 0, u"(\")\" & x)", 9},
    {Reader::Group, u"abs(1)", 1, 26, nullptr, 0}, {Reader::Group, u"(1+(2", 1, 25, nullptr, 0},
    {Reader::Group, u"LEN", 4, 0, u"", 3},      // nothing after a name
    {Reader::Group, u" )", 1, 25, nullptr, 0},  // a ")" before any "("
    {Reader::ListItem, u"a b, c", 1, 0, u"ab", 4, true},
    {Reader::ListItem, u"a，b", 1, 0, u"a", 2, true},
    {Reader::ListItem, u"f(1,2), \"x,y\"", 1, 0, u"f(1,2)", 7, true},
    {Reader::ListItem, u"f(1,2), \"x,y\"", 8, 0, u"\"x,y\"", 13},
    {Reader::ListItem, u"\" a \" ' c, d", 1, 0, u"\" a \"", 12},
    {Reader::ListItem, u"a, ", 1, 2, nullptr, 0}, {Reader::ListItem, u"(a", 1, 25, nullptr, 0},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(All, Reads, ::testing::ValuesIn(kReads));

// The message of an unterminated quote is pinned through the evaluator.
TEST(TextHelpers, ClassifyTrimAndCompare) {
  for (char16_t c : {u'a', u'_', u'工'}) EXPECT_TRUE(isIdentStart(c)) << int(c);
  EXPECT_FALSE(isIdentStart(u'1'));
  EXPECT_TRUE(isIdentChar(u'1'));
  EXPECT_FALSE(isIdentChar(u'.'));
  EXPECT_EQ(trimBlanks(u"\t a b \r\n"), u"a b");
  EXPECT_EQ(trimBlanks(u"   "), u"");
  EXPECT_EQ(firstLine(u"one\r\ntwo"), u"one");
  EXPECT_EQ(firstLine(u"one"), u"one");
  EXPECT_EQ(upperName(u"abc中Z"), u"ABC中Z");
  EXPECT_TRUE(equalsNoCase(u"Loop", u"LOOP"));
  EXPECT_FALSE(equalsNoCase(u"Loop", u"LOOPS"));
}

struct ParseCase {
  const char16_t* text;
  std::int32_t errNum;
  std::vector<std::u16string> args;
};

class ParasParse : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ParasParse, SplitsArguments) {
  const ParseCase& c = GetParam();
  Paras p;
  EXPECT_EQ(p.Parse(c.text), c.errNum) << toUtf8(c.text);
  EXPECT_EQ(p.error().number, c.errNum);
  if (c.errNum != 0) return;
  ASSERT_EQ(p.Count(), c.args.size()) << toUtf8(c.text);
  for (std::size_t i = 1; i <= p.Count(); ++i) {
    EXPECT_EQ(p.Item(i).Expression, c.args[i - 1]) << toUtf8(c.text);
    EXPECT_EQ(p.Item(i).ParaIndex, static_cast<std::int16_t>(i - 1));
  }
}

// clang-format off
const ParseCase kParses[] = {
    {u"(a, b)", 0, {u"a", u"b"}}, {u"(a，b)", 0, {u"a", u"b"}}, {u"()", 0, {}}, {u"  ", 0, {}},
    {u"(a,,b)", 0, {u"a", u"b"}},  // empty arguments are dropped
    {u"(f(1,2), \"x, y\")", 0, {u"f(1,2)", u"\"x, y\""}}, {u" ( 1 + 2 ) ", 0, {u"1+2"}},
    {u"a, b", 0, {u"a", u"b"}},  // the outer pair is optional
    {u"(a", 0, {u"a"}}, {u"((a), (b))", 0, {u"(a)", u"(b)"}},
    {u"(1, 2 ' note, 3)", 0, {u"1", u"2"}}, {u"(a,)", 2, {}},
    {u"(a)+(b)", 25, {}},  // only one "(" and one ")" are dropped
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(All, ParasParse, ::testing::ValuesIn(kParses));

TEST(Paras, ParaTextIsTheListWithoutItsOuterPair) {
  Paras p;
  p.Parse(u"  (x, y)  ");
  EXPECT_EQ(p.ParaText(), u"x, y");
}

}  // namespace
}  // namespace korvex::testing
