// The two user interfaces KORVEX ships: a recording one for tests, batch runs
// and JSON output, and a console one for interactive runs.
#include "korvex/user_interface.hpp"

#include <iostream>
#include <string>

#include "korvex/value.hpp"

namespace korvex {

// ---- recording ----------------------------------------------------------

RecordingUserInterface::RecordingUserInterface(std::vector<std::u16string> answers)
    : answers_(std::move(answers)) {}

UserInterface::Answer RecordingUserInterface::messageBox(std::u16string_view text, Buttons buttons,
                                                         std::u16string_view /*title*/) {
  messages_.emplace_back(text);
  return buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok;
}

std::optional<std::u16string> RecordingUserInterface::inputBox(
    std::u16string_view prompt, std::u16string_view /*title*/,
    std::u16string_view /*defaultText*/) {
  prompts_.emplace_back(prompt);
  if (nextAnswer_ >= answers_.size()) return std::nullopt;
  return answers_[nextAnswer_++];
}

// ---- console ------------------------------------------------------------

namespace {

// One line of input without its line break; nullopt at the end of input.
std::optional<std::string> readLine(std::istream& in) {
  std::string line;
  if (!std::getline(in, line)) return std::nullopt;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

std::string_view trimAscii(std::string_view s) {
  while (!s.empty() && static_cast<unsigned char>(s.front()) <= ' ') s.remove_prefix(1);
  while (!s.empty() && static_cast<unsigned char>(s.back()) <= ' ') s.remove_suffix(1);
  return s;
}

// "n", "no" (any case) and "否" decline; everything else, an empty line
// included, agrees: the safe default of the stop prompt is to stop.
bool isNo(std::string_view reply) {
  reply = trimAscii(reply);
  if (reply == "\xE5\x90\xA6") return true;  // 否
  if (reply.size() == 1) return reply[0] == 'n' || reply[0] == 'N';
  if (reply.size() == 2) {
    return (reply[0] == 'n' || reply[0] == 'N') && (reply[1] == 'o' || reply[1] == 'O');
  }
  return false;
}

}  // namespace

ConsoleUserInterface::ConsoleUserInterface() : ConsoleUserInterface(std::cin, std::cout) {}

ConsoleUserInterface::ConsoleUserInterface(std::istream& in, std::ostream& out)
    : in_(in), out_(out) {}

UserInterface::Answer ConsoleUserInterface::messageBox(std::u16string_view text, Buttons buttons,
                                                       std::u16string_view /*title*/) {
  out_ << toUtf8(text);
  if (buttons == Buttons::Ok) {
    out_ << '\n' << std::flush;
    return Answer::Ok;
  }
  out_ << " (\xE6\x98\xAF/\xE5\x90\xA6) " << std::flush;  // (是/否)
  std::optional<std::string> reply = readLine(in_);
  if (!reply) {
    out_ << '\n' << std::flush;
    return Answer::Yes;
  }
  return isNo(*reply) ? Answer::No : Answer::Yes;
}

std::optional<std::u16string> ConsoleUserInterface::inputBox(std::u16string_view prompt,
                                                             std::u16string_view title,
                                                             std::u16string_view defaultText) {
  if (!title.empty()) out_ << '[' << toUtf8(title) << "] ";
  out_ << toUtf8(prompt);
  if (!defaultText.empty()) out_ << " [" << toUtf8(defaultText) << ']';
  out_ << ": " << std::flush;
  std::optional<std::string> reply = readLine(in_);
  if (!reply) {
    out_ << '\n' << std::flush;
    return std::nullopt;
  }
  if (reply->empty()) return std::u16string(defaultText);
  return fromUtf8(*reply);
}

}  // namespace korvex
