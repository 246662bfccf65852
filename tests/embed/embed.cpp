// A payroll host in miniature: pre-sets a variable, adds a wage rule of its
// own, runs a script and reads the results. Exits 1 on any surprise.
#include <cstdio>
#include <memory>

#include "korvex/convert.hpp"
#include "korvex/engine.hpp"
#include "korvex/host_function.hpp"
#include "korvex/user_interface.hpp"

namespace {
int failures = 0;
void expect(bool ok, const char* what) {
  if (!ok) {
    std::fprintf(stderr, "embed: %s\n", what);
    ++failures;
  }
}
}  // namespace

int main() {
  korvex::BasicEngine engine;
  auto ui = std::make_shared<korvex::RecordingUserInterface>();
  engine.SetUserInterface(ui);
  engine.SetSysVar(u"基本工资", korvex::Value::dbl(3000));

  korvex::HostFunction allowance;
  allowance.name = u"_津贴";
  allowance.minArgs = allowance.maxArgs = 1;
  allowance.checks = {korvex::ArgCheck::Numeric};
  allowance.operation = [](const korvex::HostFunctionCall& call, korvex::Value& result) {
    const auto days = korvex::toDouble(call.arg(1), call.locale());
    if (!days) return call.fail(days.errNum, days.errMsg);
    result = korvex::Value::dbl(*days.value * 20);
    return 0;
  };
  expect(engine.RegisterFunction(allowance), "register");

  engine.SetCodeBlock(u"DIM 实发\r\n实发 = 基本工资 * 1.5 + _津贴(\"3\")\r\nMSGBOX 实发\r\n");
  const korvex::RunResult run = engine.Run();
  expect(run.ok(), "run");
  const auto pay = korvex::toDouble(engine.GetVarValue(u"实发"));
  expect(pay && *pay.value == 4560, "result");
  expect(ui->messages().size() == 1 && ui->messages()[0] == u"4560", "message");

  engine.SetCodeBlock(u"实发 = _津贴(\"x\")\r\n");
  const korvex::RunResult bad = engine.Run();
  expect(bad.errNum == 4 && bad.line == 1, "type check");
  return failures == 0 ? 0 : 1;
}
