#include "ui/filter_wizard.h"

#include <wx/dirdlg.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/statline.h>

#include <tuple>
#include <utility>

#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

wxStaticText* hint(wxWindow* parent, const wxString& text) {
  auto* const label = new wxStaticText(parent, wxID_ANY, text);
  label->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
  return label;
}

template <std::size_t Count>
wxChoice* choice(wxWindow* parent, const char* name, const char* const (&entries)[Count]) {
  auto* const made =
      new wxChoice(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxArrayString(), 0, wxDefaultValidator, name);
  for (const char* const entry : entries) made->Append(entry);
  fit_letters(*made);
  return made;
}

wxTextCtrl* text_box(wxWindow* parent, const char* name) {
  auto* const box = new wxTextCtrl(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
  fit_letters(*box);
  return box;
}

/// Long texts end in "..." rather than widen the dialog.
wxStaticText* value(wxWindow* parent, const char* name) {
  return new wxStaticText(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                          wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE, name);
}

/// Room for two lines.
wxStaticText* note(wxWindow* parent, const char* name) {
  auto* const label =
      new wxStaticText(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, name);
  label->SetMinSize(wxSize(-1, 2 * label->GetCharHeight()));
  return label;
}

void show_note(wxStaticText* label, const std::string& text, int width) {
  label->SetLabelText(to_wx(text));
  label->Wrap(width);
  label->SetToolTip(to_wx(text));
}

}  // namespace

FilterWizard::FilterWizard(wxWindow* parent, Session& session, std::function<int(wxDialog&)> show_modal)
    : wxDialog(parent, wxID_ANY, ""), wizard_(session.filters, session.ports.ui), show_modal_(std::move(show_modal)) {
  build();
  setID(0);
  next_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { go(&RuleWizard::next); });
  back_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { go(&RuleWizard::back); });
}

void FilterWizard::build() {
  heading_ = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, "heading");
  heading_->SetFont(heading_->GetFont().Bold().Larger());
  subheading_ =
      new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, "subheading");
  book_ = new wxSimplebook(this);
  for (wxWindow* const step : {build_conditions(), build_options(), build_path(), build_name(), build_summary()}) {
    book_->AddPage(step, wxString());
  }
  back_ = new wxButton(this, wxID_ANY, "&Back");
  next_ = new wxButton(this, wxID_ANY, "&Next ");
  cancel_ = new wxButton(this, wxID_CANCEL, "Cancel");

  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  buttons->AddStretchSpacer();
  buttons->Add(back_);
  buttons->Add(next_, wxSizerFlags().Border(wxLEFT));
  buttons->Add(cancel_, wxSizerFlags().Border(wxLEFT, scaled(*this, 16)));
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 12));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(heading_, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, scaled(*this, 12)));
  sizer->Add(subheading_, part);
  sizer->Add(new wxStaticLine(this), wxSizerFlags().Expand());
  sizer->AddSpacer(scaled(*this, 12));
  sizer->Add(book_, wxSizerFlags(part).Proportion(1));
  sizer->Add(new wxStaticLine(this), wxSizerFlags().Expand().Border(wxBOTTOM, scaled(*this, 12)));
  sizer->Add(buttons, part);
  sizer->SetMinSize(scaled(*this, wxSize(480, -1)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  next_->SetDefault();
}

wxPanel* FilterWizard::page() {
  auto* const panel = new wxPanel(book_);
  panel->SetSizer(new wxBoxSizer(wxVERTICAL));
  return panel;
}

wxWindow* FilterWizard::build_conditions() {
  wxPanel* const panel = page();
  field_ = choice(panel, "field", field_names);
  comparison_ = choice(panel, "comparison", comparison_names);
  condition_ = text_box(panel, "condition");
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(field_, wxSizerFlags().CenterVertical());
  row->Add(comparison_, wxSizerFlags().CenterVertical().Border(wxLEFT));
  row->Add(condition_, wxSizerFlags(1).CenterVertical().Border(wxLEFT));
  panel->GetSizer()->Add(row, wxSizerFlags().Expand().Border(wxBOTTOM));
  panel->GetSizer()->Add(hint(panel, "Conditions are not case sensitive."));
  panel->GetSizer()->Add(hint(panel, "Wildcards are supported. Leave blank for anything."));
  return panel;
}

wxWindow* FilterWizard::build_options() {
  wxPanel* const panel = page();
  options_[0] = new wxRadioButton(panel, wxID_ANY, "&Rename", wxDefaultPosition, wxDefaultSize, wxRB_GROUP);
  options_[1] = new wxRadioButton(panel, wxID_ANY, "&Move && Rename");
  options_[2] = new wxRadioButton(panel, wxID_ANY, "C&opy && Rename");
  for (wxRadioButton* const option : options_) panel->GetSizer()->Add(option, wxSizerFlags().Border(wxBOTTOM));
  return panel;
}

wxWindow* FilterWizard::build_path() {
  wxPanel* const panel = page();
  path_label_ = new wxStaticText(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "path_label");
  path_ = text_box(panel, "path");
  auto* const browse = new wxButton(panel, wxID_ANY, "B&rowse");
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(path_, wxSizerFlags(1).CenterVertical());
  row->Add(browse, wxSizerFlags().CenterVertical().Border(wxLEFT));
  panel->GetSizer()->Add(path_label_, wxSizerFlags().Border(wxBOTTOM));
  panel->GetSizer()->Add(row, wxSizerFlags().Expand());
  browse->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { on_browse(); });
  return panel;
}

wxWindow* FilterWizard::build_name() {
  wxPanel* const panel = page();
  mask_ = text_box(panel, "mask");
  panel->GetSizer()->Add(mask_, wxSizerFlags().Expand().Border(wxBOTTOM));
  panel->GetSizer()->Add(hint(panel, "[show], [title]: names of the show and the episode"));
  panel->GetSizer()->Add(hint(panel, "[s], [e]: numbers of the season and the episode; [ss], [ee]: with two digits"));
  return panel;
}

wxWindow* FilterWizard::build_summary() {
  wxPanel* const panel = page();
  summary_label_ = new wxStaticText(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "summary");
  auto* const grid = new wxFlexGridSizer(2, scaled(*this, wxSize(12, 6)));
  grid->AddGrowableCol(1);
  const auto line = [&](const wxString& label, const char* name) {
    auto* const title = new wxStaticText(panel, wxID_ANY, label);
    grid->Add(title);
    auto* const text = value(panel, name);
    grid->Add(text, wxSizerFlags().Expand());
    return std::pair(title, text);
  };
  summary_filter_ = line("Filter:", "summary_filter").second;
  summary_action_ = line("Action:", "summary_action").second;
  summary_mask_ = line("File Mask:", "summary_mask").second;
  std::tie(summary_path_label_, summary_path_) = line("Path:", "summary_path");
  panel->GetSizer()->Add(summary_label_, wxSizerFlags().Border(wxBOTTOM, scaled(*this, 10)));
  summary_place_ = note(panel, "summary_place");
  panel->GetSizer()->Add(grid, wxSizerFlags().Expand());
  panel->GetSizer()->Add(summary_place_, wxSizerFlags().Expand().Border(wxTOP, scaled(*this, 10)));
  return panel;
}

void FilterWizard::setID(int index) {
  wizard_.setID(index);
  SetTitle(wizard_.title());
  show_form();
  show_step();
}

void FilterWizard::go(bool (RuleWizard::*where)()) {
  read_form();
  if (!(wizard_.*where)()) {
    if (wizard_.step() == RuleWizard::FilePath) path_->SetFocus();
  } else if (wizard_.step() == RuleWizard::End) {
    if (IsModal()) EndModal(wxID_OK);
  } else {
    show_form();
    show_step();
  }
}

void FilterWizard::read_form() {
  RuleForm& form = wizard_.form;
  form.field = field_->GetSelection();
  form.equals = comparison_->GetSelection() == 0;
  form.condition = from_wx(condition_->GetValue());
  form.action = options_[1]->GetValue() ? MoveAndRename : options_[2]->GetValue() ? CopyAndRename : Rename;
  form.path = from_wx(path_->GetValue());
  form.mask = from_wx(mask_->GetValue());
}

void FilterWizard::show_form() {
  const RuleForm& form = wizard_.form;
  field_->SetSelection(form.field);
  comparison_->SetSelection(form.equals ? 0 : 1);
  condition_->ChangeValue(to_wx(form.condition));
  options_[form.action - Rename]->SetValue(true);
  path_->ChangeValue(to_wx(form.path));
  mask_->ChangeValue(to_wx(form.mask));
}

void FilterWizard::show_step() {
  const auto [heading, subheading, label] = wizard_.texts();
  heading_->SetLabelText(heading);
  subheading_->SetLabelText(subheading);
  (wizard_.is_stored() ? summary_label_ : path_label_)->SetLabelText(label);
  if (wizard_.is_stored()) show_summary();
  book_->SetSelection(static_cast<std::size_t>(wizard_.step()) - 1);
  back_->Enable(wizard_.can_go_back());
  cancel_->Enable(!wizard_.is_stored());
  next_->SetLabel(wizard_.is_stored() ? "&Finish" : "&Next ");
  // What is stored cannot be cancelled any more: Escape and the closing button finish as well.
  SetEscapeId(wizard_.is_stored() ? next_->GetId() : static_cast<int>(wxID_CANCEL));
  Layout();
  set_focus();
}

void FilterWizard::set_focus() {
  wxWindow* const first[] = {condition_, options_[wizard_.form.action - Rename], path_, mask_, next_};
  first[wizard_.step() - 1]->SetFocus();
  if (wizard_.step() == RuleWizard::FileName) mask_->SetInsertionPointEnd();  // rather than all of it selected
}

void FilterWizard::show_summary() {
  const AFilter& rule = wizard_.rule();
  const auto show = [](wxStaticText* label, const std::string& text) {
    label->SetLabelText(to_wx(text));
    label->SetToolTip(to_wx(text));
  };
  show(summary_filter_, rule.description);
  show(summary_action_, std::string(action_name(rule.action)));
  show(summary_mask_, rule.mask);
  show(summary_path_, rule.path);
  show_note(summary_place_, wizard_.place_text(), book_->GetClientSize().x);
  summary_path_->Show(!rule.path.empty());
  summary_path_label_->Show(!rule.path.empty());
}

void FilterWizard::on_browse() {
  wxDirDialog picker(this, "Select path to move new files to", path_->GetValue(), wxDD_DEFAULT_STYLE);
  if (show_modal_(picker) == wxID_OK) path_->ChangeValue(to_wx(path_from_wx(picker.GetPath())));
}

}  // namespace quorvel::ui
