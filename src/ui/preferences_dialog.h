#pragma once

#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/textctrl.h>

#include "shell/session.h"

namespace quorvel::ui {

class PreferencesDialog : public wxDialog {
 public:
  /// `keep_temp` is what a hidden key of the dialog turns on and off.
  PreferencesDialog(wxWindow* parent, Session& session, bool& keep_temp);

 private:
  void lay_out();
  void fill();
  void on_ok(wxCommandEvent& event);
  void on_key(wxKeyEvent& event);
  bool types_are_given();
  void save_types_and_context();
  void save_rest();

  Session& session_;
  bool& keep_temp_;
  wxCheckBox *autoclose_, *verbose_, *confirm_, *nocache_, *noutf8_, *context_;
  wxTextCtrl* types_;
};

}  // namespace quorvel::ui
