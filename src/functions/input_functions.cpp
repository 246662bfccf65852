// The input function: Input asks the user through the engine's user
// interface.
#include <optional>
#include <string>

#include "engine/context.hpp"
#include "functions/families.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck T = ArgCheck::Textual;

// Input(prompt[, title[, default]]): the text typed, "" when cancelled.
std::int32_t input(Call& call, Value& result) {
  std::u16string texts[3];
  for (std::size_t i = 1; i <= call.count(); ++i) {
    texts[i - 1] = vb::toString(call.arg(i), call.locale());
  }
  std::optional<std::u16string> answer = call.context().ui().inputBox(texts[0], texts[1], texts[2]);
  result = Value::string(answer ? std::move(*answer) : std::u16string());
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"Input"}, 1, 3, {T, T, T}, input,
     {u"提示[, 标题[, 默认值]]", ResultKind::String, u"输入框中输入的文本; 取消时为 \"\""}},
};
// clang-format on

}  // namespace

Family inputFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
