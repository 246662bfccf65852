#include <array>

#include "support.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
using testing::u8;

TEST(Array, BoundsAndRowMajorIndexing) {
  // 1 To 2, -1 To 1: six elements, last index fastest.
  Array a({{1, 2}, {-1, 3}});
  ASSERT_EQ(a.elements().size(), 6u);
  const std::array<std::int32_t, 4> bounds{a.lbound(0), a.ubound(0), a.lbound(1), a.ubound(1)};
  EXPECT_EQ(bounds, (std::array<std::int32_t, 4>{1, 2, -1, 1}));
  for (std::size_t i = 0; i < a.elements().size(); ++i) {
    a.elements()[i] = Value::lng(static_cast<std::int32_t>(i));
  }
  const std::pair<std::array<std::int32_t, 2>, std::int32_t> cells[] = {
      {{1, -1}, 0}, {{1, 1}, 2}, {{2, -1}, 3}, {{2, 1}, 5}};
  for (const auto& [index, n] : cells) EXPECT_EQ(a.at(index)->longValue(), n) << index[0];
}

TEST(Array, OutOfRangeOrWrongArityIsNull) {
  Array a({{0, 3}});
  const std::array<std::int32_t, 1> below{-1}, above{3}, ok{2};
  const std::array<std::int32_t, 2> tooMany{0, 0};
  EXPECT_EQ(a.at(below), nullptr);
  EXPECT_EQ(a.at(above), nullptr);
  EXPECT_EQ(a.at(tooMany), nullptr);
  EXPECT_NE(a.at(ok), nullptr);
  Array none;
  EXPECT_EQ(none.at(std::span<const std::int32_t>{}), nullptr);
}

TEST(Array, ValueHoldsArrayByValue) {
  Array a({{0, 2}});
  a.elements()[1] = Value::string(u"x");
  const Value v = Value::array(a);
  a.elements()[1] = Value::string(u"changed");
  EXPECT_EQ(v.arrayValue().elements()[1].stringValue(), u"x");
  EXPECT_EQ(v.arrayValue().dimensions(), 1u);
}

TEST(Utf8, RoundTripsBmpAndSupplementary) {
  const std::u16string texts[] = {u"", u"abc", u"工资表2005年03月", u"¥-1,234.50", u"\U0001F600x"};
  for (const auto& t : texts) EXPECT_EQ(fromUtf8(toUtf8(t)), t);
  EXPECT_EQ(toUtf8(u"中"), "\xE4\xB8\xAD");
  EXPECT_EQ(fromUtf8("\xF0\x9F\x98\x80").size(), 2u);
}

TEST(Utf8, InvalidInputBecomesReplacementCharacter) {
  const std::pair<std::string, std::u16string> cases[] = {
      {"a\xFF\x62", u"a\uFFFDb"},   // "\x62" is "b", kept apart from the escape
      {"\xE4\xB8", u"\uFFFD"},      // truncated sequence
      {"\xC0\xAF", u"\uFFFD"},      // overlong encoding of '/'
      {"\xED\xA0\x80", u"\uFFFD"},  // encoded surrogate
      {"\xE4\x78", u"\uFFFDx"},     // lead byte followed by ASCII "x"
  };
  for (const auto& [in, out] : cases) EXPECT_EQ(fromUtf8(in), out) << in;
  EXPECT_EQ(toUtf8(std::u16string(1, u'\xD800')), "\xEF\xBF\xBD");  // lone surrogate
}

TEST(RuntimeError, NumbersCarryThePlatformTexts) {
  // clang-format off
  const std::pair<int, std::u16string_view> cases[] = {
      {5, u"无效的过程调用或参数"}, {6, u"溢出"}, {9, u"下标越界"}, {11, u"除数为零"},
      {13, u"类型不匹配"}, {91, u"对象变量或 With 块变量未设置"}, {94, u"无效使用 Null"},
      {424, u"要求对象"}, {438, u"对象不支持该属性或方法"},
  };
  // clang-format on
  for (const auto& [n, text] : cases) {
    EXPECT_EQ(vb::runtimeErrorText(n), text) << n;
    EXPECT_EQ(vb::RuntimeError(n).description(), text) << n;
  }
  EXPECT_EQ(vb::runtimeErrorText(12345), u"");
  EXPECT_EQ(vb::RuntimeError(438, u"no member x").description(), u"no member x");
  EXPECT_EQ(errorOf([] { vb::raise(11); }), 11);
}

TEST(AnsiCode, SignedGbkCodes) {
  const std::pair<std::u16string_view, int> cases[] = {
      {u"中", -10544},                                                   // D6 D0
      {u"中文", -10544}, {u"A", 65},      {u"a1", 97}, {u"工", -18012},  // B9 A4
      {u"€", 128},       {u"\u0E01", 63},  // outside the code page: "?"
  };
  for (const auto& [s, code] : cases) EXPECT_EQ(vb::ansiCode(s), code) << u8(s);
  EXPECT_EQ(errorOf([] { vb::ansiCode(u""); }), 5);
}

TEST(CharFromAnsi, InverseOfAnsiCode) {
  EXPECT_EQ(vb::charFromAnsi(-10544), u"中");
  EXPECT_EQ(vb::charFromAnsi(0xD6D0), u"中");  // unsigned spelling of the same code
  EXPECT_EQ(vb::charFromAnsi(65), u"A");
  EXPECT_EQ(vb::charFromAnsi(0), std::u16string(1, u'\0'));
  for (std::u16string_view s : {u"资", u"表", u"年", u"月", u"￥", u"，"}) {
    EXPECT_EQ(vb::charFromAnsi(vb::ansiCode(s)), s) << u8(s);
  }
  const std::int32_t invalid[] = {65536, -32769, 0xFF, 0x8100};
  for (auto code : invalid) EXPECT_EQ(errorOf([&] { vb::charFromAnsi(code); }), 5) << code;
}

TEST(IsDoubleByte, ChineseYesAsciiAndForeignNo) {
  for (char16_t c : {u'中', u'，'}) EXPECT_TRUE(vb::isDoubleByte(c)) << u8(std::u16string(1, c));
  // '¥' is not in the code page at all.
  for (char16_t c : {u'A', u'€', u'¥', u'\u0E01'}) {
    EXPECT_FALSE(vb::isDoubleByte(c)) << u8(std::u16string(1, c));
  }
}

TEST(DecodeGbk, BytesToText) {
  EXPECT_EQ(vb::decodeGbk("\xD6\xD0\xCE\xC4\x61\x62"), u"中文ab");
  EXPECT_EQ(vb::decodeGbk("\x80"), u"€");
  EXPECT_EQ(vb::decodeGbk("a\xD6"), u"a\uFFFD");  // truncated pair
  EXPECT_EQ(vb::decodeGbk(""), u"");
}

TEST(LetterCase, UpperAndLower) {
  // clang-format off
  const std::pair<std::u16string_view, std::u16string_view> cases[] = {
      {u"abcxyz09", u"ABCXYZ09"}, {u"dim 工资", u"DIM 工资"}, {u"àéîõüÿ", u"ÀÉÎÕÜŸ"},
      {u"ąčł", u"ĄČŁ"}, {u"αβγ", u"ΑΒΓ"}, {u"привет", u"ПРИВЕТ"}, {u"ａｂｃ", u"ＡＢＣ"},
      // Letters of the Chinese code page that names may use.
      {u"ǎǐǒǔǖǘǚǜ", u"ǍǏǑǓǕǗǙǛ"}, {u"ⅰⅹⅿ", u"ⅠⅩⅯ"}, {u"ⓐⓩ", u"ⒶⓏ"},
  };
  // clang-format on
  for (const auto& [lower, upper] : cases) {
    EXPECT_EQ(u8(vb::upperCase(lower)), u8(upper));
    EXPECT_EQ(u8(vb::lowerCase(upper)), u8(lower));
  }
  EXPECT_EQ(vb::upperCase(u"Mixed 工资 Ab"), u"MIXED 工资 AB");
  EXPECT_EQ(vb::lowerCase(u"Mixed 工资 Ab"), u"mixed 工资 ab");
  EXPECT_EQ(vb::upperCase(u"ß÷"), u"ß÷");  // no single-character upper case; not a letter
}

}  // namespace
}  // namespace korvex
