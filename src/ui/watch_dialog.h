#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/listbox.h>

#include <functional>
#include <string>
#include <vector>

#include "shell/session.h"

namespace quorvel::ui {

/// The folders whose new files the window takes by itself.
class WatchDialog : public wxDialog {
 public:
  /// `show_modal` shows the dialog in which a folder is picked.
  WatchDialog(wxWindow* parent, Session& session, std::function<int(wxDialog&)> show_modal);

 private:
  void lay_out();
  wxButton* button(const char* label, const char* name, void (WatchDialog::*press)());
  void pick();
  void remove();
  void show_folders(int selected);
  void update();
  void on_ok(wxCommandEvent& event);

  Session& session_;
  const std::function<int(wxDialog&)> show_modal_;
  std::vector<std::string> folders_;
  wxListBox* list_ = nullptr;
  wxButton *add_ = nullptr, *remove_ = nullptr;
  wxCheckBox* watch_ = nullptr;
};

}  // namespace quorvel::ui
