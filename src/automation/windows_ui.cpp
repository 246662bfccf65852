#include "automation/windows_ui.hpp"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "korvex/convert.hpp"

namespace korvex::automation {
namespace {

// The answers of the message-box convention hosts use: MB_OK / MB_YESNO as
// buttons, IDYES / IDNO as answers.
constexpr std::int32_t kButtonsOk = MB_OK;
constexpr std::int32_t kButtonsYesNo = MB_YESNO;

std::wstring wide(std::u16string_view s) { return std::wstring(s.begin(), s.end()); }

// ---- the input box: a dialog template built in memory ---------------------

constexpr WORD kPrompt = 100, kEdit = 101;

// Appends the parts of a dialog template, each aligned as the format wants.
class TemplateWriter {
 public:
  void align(std::size_t to) {
    while (bytes_.size() % to != 0) bytes_.push_back(0);
  }
  template <class T>
  void put(const T& v) {
    const auto* p = reinterpret_cast<const std::uint8_t*>(&v);
    bytes_.insert(bytes_.end(), p, p + sizeof v);
  }
  void text(std::u16string_view s) {
    for (char16_t c : s) put(static_cast<WORD>(c));
    put(WORD{0});
  }
  void item(DWORD style, short x, short y, short cx, short cy, WORD id, WORD cls,
            std::u16string_view caption) {
    align(4);
    DLGITEMTEMPLATE t{};
    t.style = style | WS_CHILD | WS_VISIBLE;
    t.x = x;
    t.y = y;
    t.cx = cx;
    t.cy = cy;
    t.id = id;
    put(t);
    put(WORD{0xFFFF});
    put(cls);
    text(caption);
    put(WORD{0});  // no creation data
  }
  const std::vector<std::uint8_t>& bytes() const noexcept { return bytes_; }

 private:
  std::vector<std::uint8_t> bytes_;
};

struct InputState {
  std::u16string prompt, defaultText, answer;
};

INT_PTR CALLBACK inputProc(HWND dlg, UINT msg, WPARAM wp, LPARAM lp) {
  auto* state = reinterpret_cast<InputState*>(GetWindowLongPtrW(dlg, DWLP_USER));
  switch (msg) {
    case WM_INITDIALOG:
      SetWindowLongPtrW(dlg, DWLP_USER, lp);
      state = reinterpret_cast<InputState*>(lp);
      SetDlgItemTextW(dlg, kPrompt, wide(state->prompt).c_str());
      SetDlgItemTextW(dlg, kEdit, wide(state->defaultText).c_str());
      return TRUE;
    case WM_COMMAND:
      if (LOWORD(wp) == IDOK) {
        HWND edit = GetDlgItem(dlg, kEdit);
        std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(edit)) + 1, L'\0');
        text.resize(static_cast<std::size_t>(
            GetWindowTextW(edit, text.data(), static_cast<int>(text.size()))));
        state->answer.assign(text.begin(), text.end());
        EndDialog(dlg, IDOK);
        return TRUE;
      }
      if (LOWORD(wp) == IDCANCEL) {
        EndDialog(dlg, IDCANCEL);
        return TRUE;
      }
      break;
    default:
      break;
  }
  return FALSE;
}

std::optional<std::u16string> inputDialog(std::u16string_view prompt, std::u16string_view title,
                                          std::u16string_view defaultText) {
  TemplateWriter w;
  DLGTEMPLATE t{};
  t.style = DS_MODALFRAME | DS_CENTER | DS_SETFONT | WS_POPUP | WS_CAPTION | WS_SYSMENU;
  t.cdit = 4;
  t.cx = 240;
  t.cy = 90;
  w.put(t);
  w.put(WORD{0});  // no menu
  w.put(WORD{0});  // the standard dialog class
  w.text(title);
  w.put(WORD{9});
  w.text(u"MS Shell Dlg");
  constexpr WORD kButton = 0x0080, kEditClass = 0x0081, kStatic = 0x0082;
  w.item(SS_LEFT, 7, 7, 170, 50, kPrompt, kStatic, u"");
  w.item(ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 7, 68, 226, 14, kEdit, kEditClass, u"");
  w.item(BS_DEFPUSHBUTTON | WS_TABSTOP, 183, 7, 50, 14, IDOK, kButton, u"确定");
  w.item(BS_PUSHBUTTON | WS_TABSTOP, 183, 25, 50, 14, IDCANCEL, kButton, u"取消");
  InputState state{std::u16string(prompt), std::u16string(defaultText), {}};
  const INT_PTR r = DialogBoxIndirectParamW(
      GetModuleHandleW(nullptr), reinterpret_cast<const DLGTEMPLATE*>(w.bytes().data()),
      GetActiveWindow(), inputProc, reinterpret_cast<LPARAM>(&state));
  if (r != IDOK) return std::nullopt;
  return state.answer;
}

}  // namespace

UserInterface::Answer WindowsUserInterface::messageBox(std::u16string_view text, Buttons buttons,
                                                       std::u16string_view title) {
  const bool yesNo = buttons == Buttons::YesNo;
  if (host_) {
    const Value args[] = {Value::string(text), Value::lng(yesNo ? kButtonsYesNo : kButtonsOk),
                          Value::string(title)};
    const DispatchResult r = host_->callMethod(u"MessageBox", args);
    const auto answer = toLong(r.value);
    if (!yesNo) return Answer::Ok;
    return r.ok() && answer && *answer.value == IDNO ? Answer::No : Answer::Yes;
  }
  if (unattended_) return yesNo ? Answer::Yes : Answer::Ok;
  const int r = MessageBoxW(GetActiveWindow(), wide(text).c_str(), wide(title).c_str(),
                            yesNo ? MB_YESNO | MB_ICONQUESTION : MB_OK);
  if (!yesNo) return Answer::Ok;
  return r == IDNO ? Answer::No : Answer::Yes;
}

std::optional<std::u16string> WindowsUserInterface::inputBox(std::u16string_view prompt,
                                                             std::u16string_view title,
                                                             std::u16string_view defaultText) {
  if (host_) {
    const Value args[] = {Value::string(prompt), Value::string(title), Value::string(defaultText)};
    const DispatchResult r = host_->callMethod(u"InputBox", args);
    if (!r.ok() || r.value.isEmpty() || r.value.isNull()) return std::nullopt;
    auto text = toText(r.value);
    if (!text) return std::nullopt;
    return *text.value;
  }
  if (unattended_) return std::nullopt;
  return inputDialog(prompt, title, defaultText);
}

}  // namespace korvex::automation
