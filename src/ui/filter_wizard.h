#pragma once

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/dialog.h>
#include <wx/panel.h>
#include <wx/radiobut.h>
#include <wx/simplebook.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <vector>

#include "rules/rule_wizard.h"
#include "shell/session.h"
#include "ui/call_stack.h"
#include "ui/preview_panel.h"

namespace quorvel::ui {

/// Shows the steps of a RuleWizard. It comes back with wxID_OK when the rule is stored.
class FilterWizard : public wxDialog {
 public:
  /// `item` is the queue's whose new name is shown; 0 for none.
  FilterWizard(wxWindow* parent, Session& session, CallStack& stack, int item);

  /// The rule to change; below 1, a new one is added.
  void setID(int index);

  /// Of the rule that is stored.
  int place() const { return wizard_.place(); }

 private:
  void build();
  wxWindow* build_conditions();
  wxWindow* build_options();
  wxWindow* build_path();
  wxWindow* build_name();
  wxWindow* build_summary();
  wxPanel* page();
  PreviewPanel* add_tools(wxTextCtrl& box, bool in_folder);

  void go(bool (RuleWizard::*where)());
  void read_form();
  void show_form();
  void show_step();
  void show_summary();
  void show_preview();
  void use_preset(const Preset& preset, wxTextCtrl& box);
  wxRadioButton* option(int action) const;
  void set_focus();
  void on_browse();

  Session& session_;
  CallStack& stack_;
  const int item_;
  RuleWizard wizard_;
  wxStaticText *heading_ = nullptr, *subheading_ = nullptr, *path_label_ = nullptr, *summary_label_ = nullptr;
  wxStaticText *summary_filter_ = nullptr, *summary_action_ = nullptr, *summary_mask_ = nullptr,
               *summary_path_ = nullptr, *summary_path_label_ = nullptr, *summary_existing_ = nullptr,
               *summary_existing_label_ = nullptr, *summary_place_ = nullptr;
  wxSimplebook* book_ = nullptr;
  wxChoice *field_ = nullptr, *comparison_ = nullptr, *existing_ = nullptr;
  wxTextCtrl *condition_ = nullptr, *path_ = nullptr, *mask_ = nullptr;
  std::vector<wxRadioButton*> options_;  // in the order of actions
  PreviewPanel *path_preview_ = nullptr, *name_preview_ = nullptr;
  wxButton *back_ = nullptr, *next_ = nullptr, *cancel_ = nullptr;
};

}  // namespace quorvel::ui
