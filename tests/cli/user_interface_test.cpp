#include "korvex/user_interface.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace korvex {
namespace {

using Answer = UserInterface::Answer;
using Buttons = UserInterface::Buttons;

TEST(RecordingUserInterface, RecordsMessagesAndAgrees) {
  RecordingUserInterface ui;
  EXPECT_EQ(ui.messageBox(u"first", Buttons::Ok, u""), Answer::Ok);
  EXPECT_EQ(ui.messageBox(u"确信终止程序吗?", Buttons::YesNo, u"t"), Answer::Yes);
  EXPECT_EQ(ui.messages(), (std::vector<std::u16string>{u"first", u"确信终止程序吗?"}));
}

TEST(RecordingUserInterface, AnswersPromptsInOrderThenCancels) {
  RecordingUserInterface ui({u"10", u""});
  EXPECT_EQ(ui.inputBox(u"p1", u"", u"d"), std::optional<std::u16string>(u"10"));
  EXPECT_EQ(ui.inputBox(u"p2", u"", u"d"), std::optional<std::u16string>(u""));
  EXPECT_EQ(ui.inputBox(u"p3", u"", u"d"), std::nullopt);
  EXPECT_EQ(ui.prompts(), (std::vector<std::u16string>{u"p1", u"p2", u"p3"}));
  EXPECT_TRUE(ui.messages().empty());
}

TEST(ConsoleUserInterface, MessageBoxPrintsTheText) {
  std::istringstream in;
  std::ostringstream out;
  ConsoleUserInterface ui(in, out);
  EXPECT_EQ(ui.messageBox(u"工资 12", Buttons::Ok, u""), Answer::Ok);
  EXPECT_EQ(out.str(), "\xE5\xB7\xA5\xE8\xB5\x84 12\n");
}

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

TEST(ConsoleUserInterface, InputBoxReadsALine) {
  struct Case {
    const char* input;
    std::optional<std::u16string> expected;
  };
  const Case cases[] = {
      {"abc\n", u"abc"},
      {"\xE4\xB8\xAD\r\n", u"中"},
      {"\n", u"dflt"},  // an empty reply takes the default
      {"", std::nullopt},
  };
  for (const auto& c : cases) {
    std::istringstream in(c.input);
    std::ostringstream out;
    ConsoleUserInterface ui(in, out);
    EXPECT_EQ(ui.inputBox(u"Amount", u"", u"dflt"), c.expected) << c.input;
    EXPECT_NE(out.str().find("Amount"), std::string::npos);
  }
}

TEST(ConsoleUserInterface, SecondPromptReadsTheNextLine) {
  std::istringstream in("1\n2\n");
  std::ostringstream out;
  ConsoleUserInterface ui(in, out);
  EXPECT_EQ(ui.inputBox(u"a", u"", u""), std::optional<std::u16string>(u"1"));
  EXPECT_EQ(ui.inputBox(u"b", u"", u""), std::optional<std::u16string>(u"2"));
  EXPECT_EQ(ui.inputBox(u"c", u"", u""), std::nullopt);
}

}  // namespace
}  // namespace korvex
