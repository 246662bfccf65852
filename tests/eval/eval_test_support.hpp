// Helpers for the evaluator tests: a fresh engine with a recording user
// interface, and a readable "Type:value" form of a result.
#pragma once

#include <memory>
#include <string>

#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"
#include "values/ops.hpp"

namespace korvex::testing {

struct EvalFixture {
  EvalFixture() : ui(std::make_shared<RecordingUserInterface>()) { engine.SetUserInterface(ui); }
  std::shared_ptr<RecordingUserInterface> ui;
  BasicEngine engine;
};

/// "Double:64", "String:ab", "Boolean:True", "Null", "Empty".
inline std::string describe(const Value& v) {
  std::string out(typeName(v.type()));
  if (v.isEmpty() || v.isNull() || v.isObject() || v.isArray()) return out;
  if (v.type() == VarType::Boolean) return out + (v.booleanValue() ? ":True" : ":False");
  if (v.type() == VarType::Date) return out + ":" + std::to_string(v.doubleValue());
  return out + ":" + toUtf8(vb::toString(v, Locale::enUS()));
}

}  // namespace korvex::testing
