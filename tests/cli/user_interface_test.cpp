// The console user interface of `korvex run`. The recording one is used by
// the engine and function tests (prompts, answers, the stop prompt).
#include "korvex/user_interface.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace korvex {
namespace {

using Answer = UserInterface::Answer;
using Buttons = UserInterface::Buttons;

TEST(ConsoleUserInterface, YesNoReadsOneReply) {
  struct Case {
    const char* input;
    Answer expected;
  };
  const Case cases[] = {
      {"n\n", Answer::No},     {"No\r\n", Answer::No}, {"  \xE5\x90\xA6 \n", Answer::No},
      {"y\n", Answer::Yes},    {"\n", Answer::Yes},    {"", Answer::Yes},  // end of input
      {"nope\n", Answer::Yes},
  };
  for (const auto& c : cases) {
    std::istringstream in(c.input);
    std::ostringstream out;
    ConsoleUserInterface ui(in, out);
    EXPECT_EQ(ui.messageBox(u"stop?", Buttons::YesNo, u""), c.expected) << c.input;
    EXPECT_EQ(out.str().rfind("stop?", 0), 0u);
  }
}

// Each prompt reads the next line; an empty reply takes the default and the
// end of input cancels.
TEST(ConsoleUserInterface, InputBoxReadsALine) {
  struct Case {
    const char* input;
    std::vector<std::optional<std::u16string>> answers;
  };
  const Case cases[] = {
      {"abc\n", {u"abc"}},  {"\xE4\xB8\xAD\r\n", {u"中"}},          {"\n", {u"dflt"}},
      {"", {std::nullopt}}, {"1\n2\n", {u"1", u"2", std::nullopt}},
  };
  for (const auto& c : cases) {
    std::istringstream in(c.input);
    std::ostringstream out;
    ConsoleUserInterface ui(in, out);
    for (const auto& expected : c.answers) {
      EXPECT_EQ(ui.inputBox(u"Amount", u"", u"dflt"), expected) << c.input;
    }
    EXPECT_NE(out.str().find("Amount"), std::string::npos);
  }
}

}  // namespace
}  // namespace korvex
