// Message and input boxes for a script run inside a Windows host: real
// dialogs owned by the host's active window, or, for hosts that run
// unattended, the host's own object (MessageBox / InputBox members) or no
// window at all.
#pragma once

#include "korvex/host_object.hpp"
#include "korvex/user_interface.hpp"

namespace korvex::automation {

class WindowsUserInterface final : public UserInterface {
 public:
  /// The host's object that answers instead of dialogs (Nothing: dialogs).
  void route(ObjectRef host) noexcept { host_ = std::move(host); }
  const ObjectRef& routedTo() const noexcept { return host_; }
  /// Without a window: message boxes answered OK / Yes, input boxes
  /// cancelled. A routed object takes precedence.
  void setUnattended(bool on) noexcept { unattended_ = on; }
  bool unattended() const noexcept { return unattended_; }

  Answer messageBox(std::u16string_view text, Buttons buttons, std::u16string_view title) override;
  std::optional<std::u16string> inputBox(std::u16string_view prompt, std::u16string_view title,
                                         std::u16string_view defaultText) override;

 private:
  ObjectRef host_;
  bool unattended_ = false;
};

}  // namespace korvex::automation
