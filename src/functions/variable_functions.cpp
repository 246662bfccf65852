// Variable and input functions: SetVar, GetVar, IsVarExist, Input.
#include <optional>
#include <string>

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "engine/names.hpp"
#include "engine/string_op.hpp"
#include "functions/function_descriptors.hpp"
#include "values/ops.hpp"

namespace korvex::fn {
namespace {

constexpr Check A = Check::Any;
constexpr Check S = Check::String;
constexpr Check T = Check::Textual;

std::int32_t setVar(Call& call, Value& result) {
  call.context().setSymbol(call.arg(1).stringValue(), call.arg(2));
  result = Value::boolean(true);
  return 0;
}

std::int32_t getVar(Call& call, Value& result) {
  const std::u16string& name = call.arg(1).stringValue();
  if (!call.context().symbolDefined(name)) {
    std::u16string message(msg::kUndefinedVariable);
    message += u" '";
    message += upperName(name);  // as the table spells it
    message += u'\'';
    return call.fail(5, std::move(message));
  }
  result = call.context().symbolValue(name);
  return 0;
}

std::int32_t isVarExist(Call& call, Value& result) {
  result = Value::boolean(call.context().symbolDefined(call.arg(1).stringValue()));
  return 0;
}

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

}  // namespace

const FunctionDescriptor kSetVar{u"SetVar", 2, 2, {S, A, A}, setVar};
const FunctionDescriptor kGetVar{u"GetVar", 1, 1, {S, A, A}, getVar};
const FunctionDescriptor kIsVarExist{u"IsVarExist", 1, 1, {S, A, A}, isVarExist};
const FunctionDescriptor kInput{u"Input", 1, 3, {T, T, T}, input};

}  // namespace korvex::fn
