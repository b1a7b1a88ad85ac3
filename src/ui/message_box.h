#pragma once

#include <wx/checkbox.h>
#include <wx/dialog.h>

#include <string>

#include "platform/user_interface.h"
#include "shell/settings_store.h"

namespace quorvel::ui {

/// The program's own message, which may carry a box to switch it off for good.
class MessageDialog : public wxDialog {
 public:
  /// `id` below 1: no box. "#" in `text` is a line break.
  MessageDialog(wxWindow* parent, SettingsStore& store, int id, const std::string& title, const std::string& text,
                MessageIcon icon);

  /// Whether the user has switched the message off.
  static bool is_skipped(const SettingsStore& store, int id);

 private:
  void on_ok(wxCommandEvent& event);

  SettingsStore& store_;
  const int id_;
  wxCheckBox* skip_;
};

}  // namespace quorvel::ui
