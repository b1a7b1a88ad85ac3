#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <cstddef>

#include "platform/launcher.h"
#include "platform/user_interface.h"
#include "shell/show_choice.h"
#include "ui/dialogs.h"
#include "ui/lists.h"

namespace quorvel::ui {

/// Lets the user choose the show that a file's name means.
class ShowDialog : public wxDialog {
 public:
  ShowDialog(wxWindow* parent, ShowChoice& choice, Launcher& launcher, UserInterface& ui);

  // After "Choose".

  /// Of the show in `choice.found()`.
  std::size_t place() const { return static_cast<std::size_t>(shows_->selected()) - 1; }
  bool remembers() const { return remember_->IsChecked(); }

  /// Ends a search as well.
  void EndModal(int result) override;

 private:
  wxStaticText* line(const std::string& text, const char* name);
  wxSizer* search_row();
  wxSizer* earlier_row();
  wxSizer* buttons();
  void search();
  void tell(const std::string& text);
  void update();
  void choose();
  void show_page();
  void forget();

  ShowChoice& choice_;
  Launcher& launcher_;
  UserInterface& ui_;
  wxTextCtrl* name_ = nullptr;
  wxButton *search_ = nullptr, *forget_ = nullptr, *page_ = nullptr, *choose_ = nullptr;
  PlainList* shows_ = nullptr;
  wxStaticText *result_ = nullptr, *earlier_ = nullptr;
  wxCheckBox* remember_ = nullptr;
  FirstTick first_tick_;
};

}  // namespace quorvel::ui
