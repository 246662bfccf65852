// An engine keeps what each line's text decides between runs of the same
// script. When the host changes the state in between (another record set,
// other regional settings, a function registered, a new script), the next
// run must give what a new engine reading the text afresh gives then.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "korvex/host_function.hpp"
#include "korvex/memory_recordset.hpp"
#include "support.hpp"

namespace korvex::testing {
namespace {

std::string summary(BasicEngine& engine, const RunResult& r) {
  return std::to_string(r.errNum) + " " + toUtf8(r.errMsg) + " @" + std::to_string(r.line) +
         " X=" + describe(engine.GetVarValue(u"X"));
}

std::shared_ptr<MemoryRecordset> record(std::u16string field, Value value) {
  return MemoryRecordset::create({std::move(field)}, {{std::move(value)}});
}

// A name, the script, the state of the first run and the state of the second.
using Set = std::function<void(BasicEngine&)>;
const std::tuple<const char*, const char*, Set, Set> kChanges[] = {
    {"field_of_one_record_set_only", "DIM x\nx = 工号 & \"\"",
     [](BasicEngine& e) { e.SetRecordSet(record(u"工号", Value::string(u"001"))); },
     [](BasicEngine& e) { e.SetRecordSet(record(u"姓名", Value::string(u"张三"))); }},
    {"field_becomes_shadowed_by_variable", "DIM x\nx = 工号",
     [](BasicEngine& e) { e.SetRecordSet(record(u"工号", Value::string(u"001"))); },
     [](BasicEngine& e) { e.SetSysVar(u"工号", Value::dbl(7)); }},
    {"date_literal_read_with_the_current_locale", "DIM x\nx = #3/1/05#",
     [](BasicEngine& e) { e.SetLocale(Locale::zhCN()); },
     [](BasicEngine& e) { e.SetLocale(Locale::enUS()); }},
    {"name_becomes_a_host_function", "DIM bonus, x\nx = bonus(2)", [](BasicEngine&) {},
     [](BasicEngine& e) {
       e.RegisterFunction({.name = u"Bonus",
                           .minArgs = 1,
                           .maxArgs = 1,
                           .checks = {},
                           .operation = [](const HostFunctionCall& call, Value& result) {
                             result = Value::dbl(vb::toDouble(call.arg(1), Locale::zhCN()) * 2);
                             return 0;
                           }});
     }},
    // Same line count, same line lengths: only the text tells them apart.
    {"new_script_of_the_same_shape", "DIM x\nx = 1 + 1", [](BasicEngine&) {},
     [](BasicEngine& e) { e.SetCodeBlock(scriptText("DIM x\nx = 2 * 4")); }},
};

TEST(KeptForms, SecondRunAfterAStateChangeMatchesAFreshEngine) {
  for (const auto& [name, script, before, after] : kChanges) {
    SCOPED_TRACE(name);
    BasicEngine kept;
    kept.SetCodeBlock(scriptText(script));
    before(kept);
    const std::string first = summary(kept, kept.Run());
    after(kept);
    kept.SetSysVar(u"X", Value());
    const std::string second = summary(kept, kept.Run());

    BasicEngine fresh;
    fresh.SetCodeBlock(scriptText(script));
    after(fresh);
    EXPECT_EQ(second, summary(fresh, fresh.Run()));
    // The change matters: otherwise the case proves nothing.
    EXPECT_NE(first, second);
  }
}

TEST(KeptForms, LoopsLeftOpenByAnEarlierScriptReadTheirTextAfresh) {
  // The entry a DO left on the stack outlives its script; the LOOP of the
  // next script evaluates the entry's text, not the old script's form.
  Harness h;
  h.engine.SetCodeBlock(scriptText("DIM n\nn = 0\nDo While n < 3\nn = n + 1\nRaiseError \"stop\""));
  EXPECT_EQ(h.engine.Run().errNum, 2000);
  h.engine.SetCodeBlock(scriptText("n = n + 10\nLoop"));
  EXPECT_EQ(h.engine.Run().errNum, 0);
  EXPECT_EQ(h.var("N"), "Double:11");
}

}  // namespace
}  // namespace korvex::testing
