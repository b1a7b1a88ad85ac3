#pragma once

#include <wx/button.h>
#include <wx/dialog.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <functional>
#include <string>

#include "platform/launcher.h"
#include "shell/past_sheet.h"
#include "ui/dialogs.h"
#include "ui/lists.h"

namespace quorvel::ui {

/// Shows what was done to files, also in earlier runs, and undoes it.
class HistoryDialog : public wxDialog {
 public:
  /// What the dialog stands on.
  struct Window {
    Session& session;
    Launcher& launcher;
    PastUndoing& undoing;
    /// Why nothing can be undone now, as a sentence; empty when it can.
    std::function<std::string()> hindrance;
    /// Does something that moves files. Whether it is to go on is asked of `goes_on`, which lets events run.
    std::function<void(const std::function<void()>&)> run;
    std::function<bool()> goes_on;
    std::function<void()> stop;
  };

  HistoryDialog(wxWindow* parent, Window window);

  /// Ends an undoing as well.
  void EndModal(int result) override;

 private:
  wxSizer* buttons();
  wxButton* button(const char* label, void (HistoryDialog::*press)());
  void show_passes();
  void show_files();
  void choose_later();
  void choose();
  void update();
  void tell(const std::string& text);
  void undo(const std::function<PastUndoing::Result(const PastSheet::GoesOn&)>& action);
  void undo_selected();
  void undo_pass();
  void open_folder();
  void close();

  const Window window_;
  PastSheet sheet_;
  PlainList *passes_ = nullptr, *files_ = nullptr;
  wxTextCtrl* details_ = nullptr;
  wxStaticText* result_ = nullptr;
  wxButton *undo_selected_ = nullptr, *undo_pass_ = nullptr, *folder_ = nullptr, *close_ = nullptr;
  bool choice_waits_ = false, is_undoing_ = false;
  FirstTick first_tick_;
};

}  // namespace quorvel::ui
