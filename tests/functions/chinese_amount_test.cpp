// Amounts in Chinese capitals, including the corners the rules keep.
#include "functions/chinese_amount.hpp"

#include <gtest/gtest.h>

namespace korvex::fn {
namespace {

struct AmountCase {
  std::int64_t scaled;  // amount * 10000
  const char* text;
};

// clang-format off
const AmountCase kAmounts[] = {
    {0, "零元整"},
    {-40, "负整"},  // -0.004: rounds to 0 fen but is not zero
    {500, "伍分"}, {5000, "伍角整"}, {10500, "壹元零伍分"}, {100000, "壹拾元整"},
    {12345000, "壹仟贰佰叁拾肆元伍角整"}, {1000000000, "壹拾万元整"}, {10200000000, "壹佰零贰万元整"},
    {1000000000000, "壹亿万元整"},   // non-zero 亿 digit: 万 still written
    {10000000000000, "壹拾亿元整"},  // zero 亿 digit writes 亿, drops 万
    {-12345600, "负壹仟贰佰叁拾肆元伍角陆分"},
    {12349, "壹元贰角叁分"},  // 1.2349 -> 123 fen
    {12350, "壹元贰角肆分"},  // 1.235 -> 124 fen (half up)
    {1000100, "壹佰元零壹分"}, {10001000000, "壹佰万零壹佰元整"}, {100010000000, "壹仟万零壹仟元整"},
    {1234567890123000, "壹仟贰佰叁拾肆亿伍仟陆佰柒拾捌万玖仟零壹拾贰元叁角整"},
    // From 10^12 on the extra digits have no unit character.
    {10000000000000000, "壹亿元整"}, {23000000000000000, "贰叁仟亿元整"},
};
// clang-format on

TEST(AmountInCapitals, FollowsTheRulesWithTheirCorners) {
  for (const AmountCase& c : kAmounts) {
    EXPECT_EQ(toUtf8(amountInCapitals(Currency{c.scaled})), c.text) << c.scaled;
  }
}

}  // namespace
}  // namespace korvex::fn
