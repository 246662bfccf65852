// Helpers for the function tests: evaluate one expression on a fresh engine
// and describe the outcome as text that a table can spell out.
#pragma once

#include <string>
#include <string_view>

#include "korvex/engine.hpp"
#include "korvex/value.hpp"
#include "values/ops.hpp"

namespace korvex::testing {

/// "Type:text" of a value, e.g. "Double:3", "String:abc", "Null:".
inline std::string Describe(const Value& v) {
  std::string out(typeName(v.type()));
  out += ':';
  if (!v.isEmpty() && !v.isNull() && !v.isObject() && !v.isArray()) {
    out += toUtf8(vb::toString(v, Locale::zhCN()));
  }
  return out;
}

struct Outcome {
  std::int32_t errNum = 0;
  std::string errMsg;
  std::string value;  // Describe() of the result
};

/// Evaluates `expression` (UTF-8) on `engine`, reset to no error first.
inline Outcome EvaluateOn(BasicEngine& engine, std::string_view expression) {
  engine.SetErrNum(0);
  engine.SetErrMsg(u"");
  const Value v = engine.Evaluate(fromUtf8(expression));
  return {engine.ErrNum(), toUtf8(engine.ErrMsg()), Describe(v)};
}

inline Outcome EvaluateFresh(std::string_view expression) {
  BasicEngine engine;
  return EvaluateOn(engine, expression);
}

}  // namespace korvex::testing
