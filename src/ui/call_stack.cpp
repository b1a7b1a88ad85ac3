#include "ui/call_stack.h"

namespace quorvel::ui {

int CallStack::show_modal(wxDialog& dialog) {
  if (ending_) return wxID_CANCEL;
  const Use use(*this);
  dialogs_.push_back(&dialog);
  const int result = dialog.ShowModal();
  dialogs_.pop_back();
  return result;
}

void CallStack::end_dialogs() {
  ending_ = true;
  for (auto dialog = dialogs_.rbegin(); dialog != dialogs_.rend(); ++dialog) {
    if ((*dialog)->IsModal()) (*dialog)->EndModal(wxID_CANCEL);
  }
}

}  // namespace quorvel::ui
