// Runs a script on a fresh engine with a recording user interface and
// captures what the statement tests look at.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"
#include "korvex/value.hpp"
#include "values/ops.hpp"

namespace korvex::testing {

/// "Type:text" for a value, e.g. "Double:3", "String:it's", "Empty:".
inline std::string describe(const Value& v) {
  std::string out(typeName(v.type()));
  out += ':';
  if (!v.isNull() && !v.isObject() && !v.isArray()) {
    out += toUtf8(vb::toString(v, Locale::zhCN()));
  }
  return out;
}

/// Script lines are written with "\n"; the engine gets them with CR LF.
inline std::u16string scriptText(std::string_view utf8) {
  std::u16string text;
  for (char16_t c : fromUtf8(utf8)) {
    if (c == u'\n') text += u'\r';
    text += c;
  }
  return text;
}

struct Harness {
  std::shared_ptr<RecordingUserInterface> ui = std::make_shared<RecordingUserInterface>();
  BasicEngine engine;

  Harness() { engine.SetUserInterface(ui); }

  void run(std::string_view script) {
    engine.SetCodeBlock(scriptText(script));
    engine.Execute();
  }

  std::string errMsg() const { return toUtf8(engine.ErrMsg()); }
  std::string var(std::string_view name) { return describe(engine.GetVarValue(fromUtf8(name))); }
  std::vector<std::string> messages() const {
    std::vector<std::string> out;
    for (const auto& m : ui->messages()) out.push_back(toUtf8(m));
    return out;
  }
};

}  // namespace korvex::testing
