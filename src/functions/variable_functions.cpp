// Variable functions: SetVar, GetVar, IsVarExist.
#include <string>

#include "engine/context.hpp"
#include "engine/messages.hpp"
#include "engine/script_reader.hpp"
#include "functions/families.hpp"
#include "values/ops.hpp"
#include "values/text_scan.hpp"

namespace korvex::fn {
namespace {

constexpr ArgCheck A = ArgCheck::Any;
constexpr ArgCheck S = ArgCheck::String;

std::int32_t setVar(Call& call, Value& result) {
  call.context().setSymbol(call.arg(1).stringValue(), call.arg(2));
  result = Value::boolean(true);
  return 0;
}

std::int32_t getVar(Call& call, Value& result) {
  const std::u16string& name = call.arg(1).stringValue();
  if (!call.context().symbolDefined(name)) {
    return call.fail(msg::kUndefinedVariable,
                     msg::quoted(upperName(name)));  // as the table spells it
  }
  result = call.context().symbolValue(name);
  return 0;
}

std::int32_t isVarExist(Call& call, Value& result) {
  result = Value::boolean(call.context().symbolDefined(call.arg(1).stringValue()));
  return 0;
}

// clang-format off
constexpr FunctionEntry kTable[] = {
    {{u"SetVar"}, 2, 2, {S, A, A}, setVar,
     {u"变量名, 值", ResultKind::Boolean, u"把名为 变量名 的变量设为 值 (没有则建立); 得 True"}},
    {{u"GetVar"}, 1, 1, {S, A, A}, getVar,
     {u"变量名", ResultKind::Any, u"名为 变量名 的变量的值; 没有该变量是错误 5 变量未定义"}},
    {{u"IsVarExist"}, 1, 1, {S, A, A}, isVarExist,
     {u"变量名", ResultKind::Boolean, u"是否有名为 变量名 的变量"}},
};
// clang-format on

}  // namespace

Family variableFunctions() noexcept { return kTable; }

}  // namespace korvex::fn
