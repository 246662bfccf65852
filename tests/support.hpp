// Helpers shared by the tests: a readable form of values, a fresh engine
// with a recording user interface, and one-line summaries of what a script
// run or an expression evaluation left behind, for tables to spell out.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/engine.hpp"
#include "korvex/user_interface.hpp"
#include "korvex/value.hpp"
#include "values/ops.hpp"
#include "values/runtime_error.hpp"

namespace korvex::testing {

/// Runs `f` and returns the run-time error number it raised, 0 if none.
inline int errorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const vb::RuntimeError& e) {
    return e.number();
  }
  return 0;
}

/// Readable form of a UTF-16 string in failure messages.
inline std::string u8(std::u16string_view s) { return toUtf8(s); }

/// The text with its ASCII letters in lower case.
inline std::u16string lowerAscii(std::u16string s) {
  for (auto& c : s) {
    if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
  }
  return s;
}

/// "Type:text" of a value, e.g. "Double:3", "String:abc", "Null:".
inline std::string describe(const Value& v) {
  std::string out(typeName(v.type()));
  out += ':';
  if (!v.isEmpty() && !v.isNull() && !v.isObject() && !v.isArray()) {
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

/// The bytes of a file, empty when it cannot be read.
inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

/// The object a host call returned; a failure fails the test.
inline ObjectRef objectOf(const DispatchResult& r) {
  EXPECT_TRUE(r.ok()) << toUtf8(r.description);
  return r.ok() && r.value.isObject() ? r.value.objectValue() : nullptr;
}

/// A fresh engine whose message boxes are recorded.
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

  /// "err N MSG" when an error number or message is left, then every
  /// variable as NAME=Type:text in table order, then every message box as
  /// "box TEXT"; the parts are joined by " | ".
  std::string outcome() const {
    std::vector<std::string> parts;
    if (engine.ErrNum() != 0 || !engine.ErrMsg().empty()) {
      parts.push_back("err " + std::to_string(engine.ErrNum()) + " " + errMsg());
    }
    for (const auto& [name, value] : engine.Variables()) {
      parts.push_back(toUtf8(name) + "=" + describe(value));
    }
    for (const auto& m : messages()) parts.push_back("box " + m);
    std::string out;
    for (const auto& p : parts) out += (out.empty() ? "" : " | ") + p;
    return out;
  }
};

/// A private directory under /tmp, removed with its contents at the end.
class ScratchDir {
 public:
  ScratchDir() {
    char name[] = "/tmp/korvex-test-XXXXXX";
    EXPECT_NE(::mkdtemp(name), nullptr);
    path_ = name;
  }
  ~ScratchDir() { std::filesystem::remove_all(path_); }
  std::string file(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

/// A script (lines joined by "\n") and Harness::outcome() after running it;
/// write the outcome as "..."sv where it holds a NUL.
struct ScriptCase {
  std::string_view script;
  std::string_view outcome;
};

/// Runs every case on a fresh engine and compares its outcome.
template <std::size_t N>
void expectOutcomes(const ScriptCase (&cases)[N]) {
  for (const ScriptCase& c : cases) {
    Harness h;
    h.run(c.script);
    EXPECT_EQ(h.outcome(), c.outcome) << c.script;
  }
}

struct Outcome {
  std::int32_t errNum = 0;
  std::string errMsg;
  std::string value;  // describe() of the result
};

/// Evaluates `expression` (UTF-8) on `engine`, reset to no error first.
inline Outcome EvaluateOn(BasicEngine& engine, std::string_view expression) {
  engine.SetErrNum(0);
  engine.SetErrMsg(u"");
  const Value v = engine.Evaluate(fromUtf8(expression));
  return {engine.ErrNum(), toUtf8(engine.ErrMsg()), describe(v)};
}

inline Outcome EvaluateFresh(std::string_view expression) {
  BasicEngine engine;
  return EvaluateOn(engine, expression);
}

}  // namespace korvex::testing
