#pragma once

#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/spinctrl.h>
#include <wx/textctrl.h>

#include <string>
#include <string_view>
#include <vector>

#include "shell/session.h"

namespace quorvel::ui {

class PreferencesDialog : public wxDialog {
 public:
  /// `keep_temp` is what a hidden key of the dialog turns on and off.
  PreferencesDialog(wxWindow* parent, Session& session, bool& keep_temp);

 private:
  void lay_out();
  wxCheckBox* box_of(std::string_view setting) const;
  void on_fields(wxCommandEvent& event);
  void show_fields();
  void on_ok(wxCommandEvent& event);
  void on_key(wxKeyEvent& event);

  Session& session_;
  bool& keep_temp_;
  std::vector<wxCheckBox*> boxes_;
  wxSpinCtrl* history_ = nullptr;
  wxCheckBox* along_ = nullptr;
  wxTextCtrl *types_ = nullptr, *companions_ = nullptr, *leftovers_ = nullptr;
};

}  // namespace quorvel::ui
