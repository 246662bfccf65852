#include "functions/chinese_amount.hpp"

#include <string_view>

#include "functions/families.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr std::u16string_view kDigits = u"零壹贰叁肆伍陆柒捌玖";
// Indexed by position from the right, in fen: 1 = 分 ... 14 = 仟 (亿 group).
constexpr std::u16string_view kUnits = u"分角元拾佰仟万拾佰仟亿拾佰仟";
constexpr std::size_t kYuanPos = 3, kWanPos = 7, kYiPos = 11;

std::int32_t num2Chinese(Call& call, Value& result) {
  result = Value::string(amountInCapitals(vb::toCurrency(call.arg(1), call.locale())));
  return 0;
}

}  // namespace

std::u16string amountInCapitals(Currency amount) {
  if (amount.scaled == 0) return u"零元整";
  const bool negative = amount.scaled < 0;
  const std::uint64_t magnitude = negative ? 0 - static_cast<std::uint64_t>(amount.scaled)
                                           : static_cast<std::uint64_t>(amount.scaled);
  // Half up at the third decimal: add 0.005, keep whole fen.
  const std::u16string fen = [&] {
    std::uint64_t n = (magnitude + 50) / 100;
    std::u16string digits;
    do {
      digits.insert(digits.begin(), static_cast<char16_t>(u'0' + n % 10));
      n /= 10;
    } while (n != 0);
    return digits;
  }();

  std::u16string out = negative ? u"负" : u"";
  bool pendingZero = false;
  bool yiWritten = false;
  const std::size_t n = fen.size();
  for (std::size_t i = 1; i <= n; ++i) {
    const std::size_t pos = n - i + 1;
    const int digit = fen[i - 1] - u'0';
    if (digit == 0) {
      if (pos == kYiPos) {
        out += u'亿';
        yiWritten = true;
      }
      if (pos == kWanPos && !yiWritten) out += u'万';
      if (pos == kYuanPos) out += u'元';
      if (i == n) out += u'整';
      pendingZero = true;
    } else {
      if (pendingZero) out += u'零';
      out += kDigits[static_cast<std::size_t>(digit)];
      if (pos <= kUnits.size()) out += kUnits[pos - 1];
      pendingZero = false;
    }
  }
  return out;
}

namespace {

// Evaluation errors are not looked at before the numeric test, and the
// type message carries no suffix.
// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"大写", u"Num2Chinese"}, 1, 1, {ArgCheck::Numeric, ArgCheck::Any, ArgCheck::Any},
     num2Chinese,
     {u"金额", ResultKind::String, u"金额的中文大写, 如 壹佰元整 (四舍五入到分)"},
     static_cast<std::uint8_t>(kEngineStatus | kPlainTypeMessage)},
};
// clang-format on

}  // namespace

Family chineseAmountFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
