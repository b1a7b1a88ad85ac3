#include "ui/filter_wizard.h"

#include <wx/dirdlg.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/statline.h>

#include <array>
#include <span>
#include <tuple>

#include "ui/mask_tools.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

/// Of the actions, in their order.
constexpr std::array option_labels = {"&Rename", "&Move && Rename", "C&opy && Rename", "&Hard Link && Rename",
                                      "&Symbolic Link && Rename"};
static_assert(option_labels.size() == actions.size());

wxStaticText* hint(wxWindow* parent, const wxString& text) {
  auto* const label = new wxStaticText(parent, wxID_ANY, text);
  label->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
  return label;
}

wxChoice* choice(wxWindow* parent, const char* name, std::span<const char* const> entries) {
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

}  // namespace

FilterWizard::FilterWizard(wxWindow* parent, Session& session, CallStack& stack, int item)
    : wxDialog(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      session_(session),
      stack_(stack),
      item_(item),
      wizard_(session.filters, session.ports.ui) {
  build();
  setID(0);
  for (wxTextCtrl* const box : {path_, mask_}) box->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { show_preview(); });
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
  sizer->SetMinSize(scaled(*this, wxSize(560, -1)));
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
  for (const char* const label : option_labels) {
    auto* const option =
        new wxRadioButton(panel, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, options_.empty() ? wxRB_GROUP : 0);
    panel->GetSizer()->Add(option, wxSizerFlags().Border(wxBOTTOM));
    options_.push_back(option);
  }
  panel->GetSizer()->Add(new wxStaticText(panel, wxID_ANY, "&If another file has the new name:"),
                         wxSizerFlags().Border(wxTOP | wxBOTTOM));
  existing_ = choice(panel, "existing", {});
  for (const ExistingWords& words : existing_words) existing_->Append(to_wx(words.caption));
  panel->GetSizer()->Add(existing_);
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
  path_preview_ = add_tools(*path_, true);
  browse->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { on_browse(); });
  return panel;
}

wxWindow* FilterWizard::build_name() {
  wxPanel* const panel = page();
  mask_ = text_box(panel, "mask");
  panel->GetSizer()->Add(mask_, wxSizerFlags().Expand());
  name_preview_ = add_tools(*mask_, false);
  return panel;
}

PreviewPanel* FilterWizard::add_tools(wxTextCtrl& box, bool in_folder) {
  auto* const tools =
      new MaskTools(box, in_folder, stack_, [this, &box](const Preset& preset) { use_preset(preset, box); });
  auto* const preview = new PreviewPanel(box.GetParent());
  box.GetParent()->GetSizer()->Add(tools, wxSizerFlags().Border(wxTOP | wxBOTTOM));
  box.GetParent()->GetSizer()->Add(preview, wxSizerFlags().Expand().Border(wxTOP));
  return preview;
}

wxWindow* FilterWizard::build_summary() {
  wxPanel* const panel = page();
  summary_label_ = new wxStaticText(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "summary");
  auto* const grid = line_grid(*this);
  const auto line = [&](const char* label, const char* name) { return add_line(*grid, panel, label, name); };
  summary_filter_ = line("Filter:", "summary_filter").second;
  summary_action_ = line("Action:", "summary_action").second;
  summary_mask_ = line("File Mask:", "summary_mask").second;
  std::tie(summary_path_label_, summary_path_) = line("Path:", "summary_path");
  std::tie(summary_existing_label_, summary_existing_) = line("Same Name:", "summary_existing");
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
  for (std::size_t i = 0; i < options_.size(); ++i) {
    if (options_[i]->GetValue()) form.action = actions[i].action;
  }
  form.existing = existing_words[static_cast<std::size_t>(existing_->GetSelection())].existing;
  form.path = from_wx(path_->GetValue());
  form.mask = from_wx(mask_->GetValue());
}

wxRadioButton* FilterWizard::option(int action) const {
  return options_[static_cast<std::size_t>(words_of(action) - actions.begin())];
}

void FilterWizard::show_form() {
  const RuleForm& form = wizard_.form;
  field_->SetSelection(form.field);
  comparison_->SetSelection(form.equals ? 0 : 1);
  condition_->ChangeValue(to_wx(form.condition));
  option(form.action)->SetValue(true);
  existing_->SetSelection(static_cast<int>(form.existing));
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
  show_preview();
  set_focus();
}

void FilterWizard::show_preview() {
  PreviewPanel* const preview_panel = wizard_.step() == RuleWizard::FilePath   ? path_preview_
                                      : wizard_.step() == RuleWizard::FileName ? name_preview_
                                                                               : nullptr;
  if (preview_panel == nullptr) return;
  read_form();
  const bool needs_folder = has_folder(wizard_.form.action);
  RulePreview preview = preview_of(wizard_.draft(), session_.queue.holds(item_) ? &session_.queue.at(item_) : nullptr,
                                   session_.settings.exact);
  if (needs_folder && wizard_.form.path.empty()) {
    preview.remarks.clear();  // nothing has been typed yet
  } else if (preview.remarks.empty() && !wizard_.has_complete_path()) {
    preview.remarks.emplace_back("You must enter a complete path.");
  }
  preview_panel->show(preview, needs_folder);
}

/// Without a folder that it could lie below, the user is asked for one first.
void FilterWizard::use_preset(const Preset& preset, wxTextCtrl& box) {
  read_form();
  if (has_folder(wizard_.form.action) && chosen_folder(wizard_.form.path).empty()) {
    on_browse();
    read_form();
    if (wizard_.form.path.empty()) return;
  }
  wizard_.use(preset);
  show_form();
  show_preview();
  box.SetFocus();
  box.SetInsertionPointEnd();
}

void FilterWizard::set_focus() {
  wxWindow* const first[] = {condition_, option(wizard_.form.action), path_, mask_, next_};
  first[wizard_.step() - 1]->SetFocus();
  if (wizard_.step() == RuleWizard::FileName) mask_->SetInsertionPointEnd();  // rather than all of it selected
}

void FilterWizard::show_summary() {
  const AFilter& rule = wizard_.rule();
  show_value(*summary_filter_, rule.description);
  show_value(*summary_action_, std::string(action_name(rule.action)));
  show_value(*summary_mask_, rule.mask);
  show_value(*summary_path_, rule.path);
  show_note(*summary_place_, wizard_.place_text(), book_->GetClientSize().x);
  show_value(*summary_existing_, std::string(existing_words[static_cast<std::size_t>(rule.existing)].caption));
  for (wxWindow* const part : {summary_path_, summary_path_label_}) part->Show(!rule.path.empty());
  for (wxWindow* const part : {summary_existing_, summary_existing_label_}) {
    part->Show(rule.existing != Existing::Ask);
  }
}

void FilterWizard::on_browse() {
  wxDirDialog picker(this, "Select path to move new files to", path_->GetValue(), wxDD_DEFAULT_STYLE);
  if (stack_.show_modal(picker) == wxID_OK) path_->SetValue(to_wx(path_from_wx(picker.GetPath())));
}

}  // namespace quorvel::ui
