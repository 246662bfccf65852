// Money amounts written in Chinese capital numerals, as on wage slips and
// cheques: 1234.5 -> 壹仟贰佰叁拾肆元伍角整.
#pragma once

#include <string>

#include "korvex/value.hpp"

namespace korvex::fn {

/// The amount in capitals, rounded half up to the fen. The rules keep their
/// long-standing corners: "整" only after a zero fen digit, "万" after a
/// non-zero 亿 digit even when the whole 万 group is zero, no unit character
/// for digits above the 仟亿 position.
std::u16string amountInCapitals(Currency amount);

}  // namespace korvex::fn
