// The user interface the engine talks to: message boxes, input boxes and the
// stop prompt. Hosts supply their own; KORVEX ships a console one and a
// recording one (for tests, batch runs and JSON output).
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex {

class UserInterface {
 public:
  enum class Buttons { Ok, YesNo };
  enum class Answer { Ok, Yes, No };

  virtual ~UserInterface() = default;

  /// A modal message box; returns when the user has answered.
  virtual Answer messageBox(std::u16string_view text, Buttons buttons,
                            std::u16string_view title) = 0;
  /// An input box; std::nullopt when the user cancelled.
  virtual std::optional<std::u16string> inputBox(std::u16string_view prompt,
                                                 std::u16string_view title,
                                                 std::u16string_view defaultText) = 0;
};

/// Shows nothing, records every message box text in order, answers Yes/OK,
/// and replies to input boxes from a queue of prepared answers (cancelled
/// once the queue is empty).
class RecordingUserInterface : public UserInterface {
 public:
  explicit RecordingUserInterface(std::vector<std::u16string> answers = {});

  Answer messageBox(std::u16string_view text, Buttons buttons, std::u16string_view title) override;
  std::optional<std::u16string> inputBox(std::u16string_view prompt, std::u16string_view title,
                                         std::u16string_view defaultText) override;

  const std::vector<std::u16string>& messages() const noexcept { return messages_; }
  const std::vector<std::u16string>& prompts() const noexcept { return prompts_; }

 private:
  std::vector<std::u16string> answers_;
  std::size_t nextAnswer_ = 0;
  std::vector<std::u16string> messages_;
  std::vector<std::u16string> prompts_;
};

/// Console implementation: message boxes print their text on standard
/// output; Yes/No questions and input boxes read a line from standard input
/// (end of input answers Yes / cancels).
class ConsoleUserInterface : public UserInterface {
 public:
  /// Talks to standard input and output.
  ConsoleUserInterface();
  /// Talks to the given streams (UTF-8 text).
  ConsoleUserInterface(std::istream& in, std::ostream& out);

  Answer messageBox(std::u16string_view text, Buttons buttons, std::u16string_view title) override;
  std::optional<std::u16string> inputBox(std::u16string_view prompt, std::u16string_view title,
                                         std::u16string_view defaultText) override;

 private:
  std::istream& in_;
  std::ostream& out_;
};

}  // namespace korvex
