#include "support.hpp"
#include "values/ops.hpp"

namespace korvex {
namespace {

using testing::errorOf;
using testing::u8;

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
  EXPECT_EQ(vb::decodeGbk("\xD6\xD0\xCE\xC4"
                          "ab"),
            u"中文ab");
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
