#pragma once

#include <wx/dialog.h>
#include <wx/textctrl.h>

#include "shell/session.h"
#include "ui/first_tick.h"

namespace quorvel::ui {

/// Adds an exception: what to search for in place of a show name that file names give.
class ExceptionDialog : public wxDialog {
 public:
  ExceptionDialog(wxWindow* parent, Session& session);

  /// The queue's item whose name is to be replaced; 0 when the user types that too.
  void setQID(int index) { index_ = index; }

 private:
  void lay_out();
  void fill();
  void on_ok(wxCommandEvent& event);
  bool is_given(wxTextCtrl* box, const char* title, const char* text);

  Session& session_;
  int index_ = 0;
  wxTextCtrl *detected_name_, *new_name_;
  FirstTick first_tick_;
};

}  // namespace quorvel::ui
