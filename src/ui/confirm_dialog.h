#pragma once

#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <optional>

#include "platform/user_interface.h"
#include "queue/settings.h"
#include "shell/settings_store.h"
#include "ui/first_tick.h"

namespace quorvel::ui {

/// Asks for the user's word before a file operation.
class ConfirmDialog : public wxDialog {
 public:
  ConfirmDialog(wxWindow* parent, Settings& settings, SettingsStore& store, ConfirmationQuestion question);

  /// Empty when the dialog was closed by neither of its buttons.
  std::optional<bool> answer() const { return answer_; }

 private:
  void fill();
  void on_button(bool answer);
  void on_skip(wxCommandEvent& event);

  Settings& settings_;
  SettingsStore& store_;
  const ConfirmationQuestion question_;
  std::optional<bool> answer_;
  wxStaticText* text_;
  wxTextCtrl *source_, *destination_;
  wxCheckBox* skip_;
  FirstTick first_tick_;
};

}  // namespace quorvel::ui
