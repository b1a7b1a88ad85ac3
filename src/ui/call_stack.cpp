#include "ui/call_stack.h"

#include "ui/desktop.h"

namespace quorvel::ui {
namespace {

constexpr int retry_ms = 50;

}  // namespace

CallStack::CallStack() {
  retry_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { end_top_dialog(); });
}

int CallStack::show_modal(wxDialog& dialog) {
  if (ending_) return wxID_CANCEL;
  const Use use(*this);
  // Menus and their keys do not work from inside a dialog.
  dialog.Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
    event.Skip();
    if (event.GetKeyCode() == WXK_F1 && !event.HasAnyModifiers()) on_help();
  });
  dialogs_.push_back(&dialog);
  const int result = dialog.ShowModal();
  dialogs_.pop_back();
  if (ending_) end_top_dialog();
  return result;
}

void CallStack::end_dialogs() {
  ending_ = true;
  end_top_dialog();
}

/// Only the innermost dialog's event loop can be ended; the others follow, each when the one above it has come back.
void CallStack::end_top_dialog() {
  if (has_dialog() && top_dialog()->IsModal()) {
    top_dialog()->EndModal(wxID_CANCEL);
  } else if (!empty()) {
    cancel_system_dialogs();
    retry_.StartOnce(retry_ms);  // it may still be about to come up
  }
}

}  // namespace quorvel::ui
