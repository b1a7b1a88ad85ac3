#pragma once

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/panel.h>
#include <wx/radiobut.h>
#include <wx/simplebook.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <functional>

#include "shell/session.h"

namespace quorvel::ui {

/// Makes a new filter rule or changes one, a question a step. It comes back with wxID_OK when the rule is stored.
class FilterWizard : public wxDialog {
 public:
  /// `show_modal` shows the folder picker and gives what its ShowModal gives.
  FilterWizard(wxWindow* parent, Session& session, std::function<int(wxDialog&)> show_modal);

  /// The rule to change; below 1, a new one is added.
  void setID(int index);

  /// Shows a step, 1 to 6, and does what leaving the one before it asks for. 6 closes the dialog.
  void showstep(int step);

 private:
  enum Step { Conditions = 1, Options, FilePath, FileName, Summary, End };

  void build();
  wxWindow* build_conditions();
  wxWindow* build_options();
  wxWindow* build_path();
  wxWindow* build_name();
  wxWindow* build_summary();
  wxPanel* page();
  void fill(const AFilter& filter);
  void set_texts();
  void set_buttons();
  void set_focus();

  int action() const;
  bool path_is_good();
  bool store();
  AFilter described(AFilter filter) const;
  void summarise(const AFilter& filter);
  void on_next();
  void on_back();
  void on_browse();

  Session& session_;
  const std::function<int(wxDialog&)> show_modal_;
  int index_ = 0;
  int step_ = Conditions;
  wxStaticText *heading_ = nullptr, *subheading_ = nullptr, *path_label_ = nullptr, *summary_label_ = nullptr;
  wxStaticText *summary_filter_ = nullptr, *summary_action_ = nullptr, *summary_mask_ = nullptr,
               *summary_path_ = nullptr, *summary_path_label_ = nullptr;
  wxSimplebook* book_ = nullptr;
  wxChoice *field_ = nullptr, *comparison_ = nullptr;
  wxTextCtrl *condition_ = nullptr, *path_ = nullptr, *mask_ = nullptr;
  wxRadioButton *rename_ = nullptr, *move_ = nullptr, *copy_ = nullptr;
  wxButton *back_ = nullptr, *next_ = nullptr, *cancel_ = nullptr;
};

}  // namespace quorvel::ui
