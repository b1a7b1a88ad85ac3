#include "ui/filter_wizard.h"

#include <wx/dirdlg.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/statline.h>

#include <tuple>
#include <utility>

#include "naming/file_names.h"
#include "text/case.h"
#include "text/characters.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

enum Field { ShowName, FileType };

constexpr std::size_t longest_incomplete_path = 2;  // "D:"

wxStaticText* hint(wxWindow* parent, const wxString& text) {
  auto* const label = new wxStaticText(parent, wxID_ANY, text);
  label->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
  return label;
}

wxChoice* choice(wxWindow* parent, const char* name) {
  return new wxChoice(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxArrayString(), 0, wxDefaultValidator, name);
}

/// Long texts end in "..." rather than widen the dialog.
wxStaticText* value(wxWindow* parent, const char* name) {
  return new wxStaticText(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                          wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE, name);
}

}  // namespace

FilterWizard::FilterWizard(wxWindow* parent, Session& session, std::function<int(wxDialog&)> show_modal)
    : wxDialog(parent, wxID_ANY, "Add Filter Wizard"), session_(session), show_modal_(std::move(show_modal)) {
  build();
  setID(0);
  next_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { on_next(); });
  back_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { on_back(); });
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
  buttons->Add(cancel_, wxSizerFlags().Border(wxLEFT, FromDIP(16)));
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(12));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(heading_, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxTOP, FromDIP(12)));
  sizer->Add(subheading_, part);
  sizer->Add(new wxStaticLine(this), wxSizerFlags().Expand());
  sizer->AddSpacer(FromDIP(12));
  sizer->Add(book_, wxSizerFlags(part).Proportion(1));
  sizer->Add(new wxStaticLine(this), wxSizerFlags().Expand().Border(wxBOTTOM, FromDIP(12)));
  sizer->Add(buttons, part);
  sizer->SetMinSize(FromDIP(wxSize(480, -1)));
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
  field_ = choice(panel, "field");
  field_->Append(wxString("Show Name"));
  field_->Append(wxString("File Type"));
  comparison_ = choice(panel, "comparison");
  comparison_->Append(wxString("Equals"));
  comparison_->Append(wxString("Doesn't Equal"));
  condition_ =
      new wxTextCtrl(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, "condition");
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
  rename_ = new wxRadioButton(panel, wxID_ANY, "&Rename", wxDefaultPosition, wxDefaultSize, wxRB_GROUP);
  move_ = new wxRadioButton(panel, wxID_ANY, "&Move && Rename");
  copy_ = new wxRadioButton(panel, wxID_ANY, "C&opy && Rename");
  for (wxRadioButton* const option : {rename_, move_, copy_}) {
    panel->GetSizer()->Add(option, wxSizerFlags().Border(wxBOTTOM));
  }
  return panel;
}

wxWindow* FilterWizard::build_path() {
  wxPanel* const panel = page();
  path_label_ = new wxStaticText(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "path_label");
  path_ = new wxTextCtrl(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, "path");
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
  mask_ = new wxTextCtrl(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, "mask");
  panel->GetSizer()->Add(mask_, wxSizerFlags().Expand().Border(wxBOTTOM));
  panel->GetSizer()->Add(hint(panel, "[show], [title]: names of the show and the episode"));
  panel->GetSizer()->Add(hint(panel, "[s], [e]: numbers of the season and the episode; [ss], [ee]: with two digits"));
  return panel;
}

wxWindow* FilterWizard::build_summary() {
  wxPanel* const panel = page();
  summary_label_ = new wxStaticText(panel, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, 0, "summary");
  auto* const grid = new wxFlexGridSizer(2, FromDIP(wxSize(12, 6)));
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
  panel->GetSizer()->Add(summary_label_, wxSizerFlags().Border(wxBOTTOM, FromDIP(10)));
  panel->GetSizer()->Add(grid, wxSizerFlags().Expand());
  return panel;
}

void FilterWizard::setID(int index) {
  index_ = session_.filters.holds(index) ? index : 0;
  SetTitle(index_ > 0 ? "Edit Filter Wizard" : "Add Filter Wizard");
  AFilter filter;
  filter.action = Rename;
  fill(index_ > 0 ? session_.filters.at(index_) : filter);
  step_ = Conditions;
  showstep(Conditions);
}

void FilterWizard::fill(const AFilter& filter) {
  // A rule changed from one kind to the other has two conditions; its description tells which is the newer.
  const bool by_type =
      !filter.fileType.empty() && (filter.showName.empty() || filter.description.starts_with("File Type"));
  const std::string& pattern = by_type ? filter.fileType : filter.showName;
  const int comparison = by_type ? filter.fileTypeCondition : filter.showNameCondition;
  field_->SetSelection(by_type ? FileType : ShowName);
  comparison_->SetSelection(pattern.empty() || comparison == Equals ? 0 : 1);
  condition_->ChangeValue(to_wx(pattern));
  rename_->SetValue(filter.action != MoveAndRename && filter.action != CopyAndRename);
  move_->SetValue(filter.action == MoveAndRename);
  copy_->SetValue(filter.action == CopyAndRename);
  path_->ChangeValue(to_wx(filter.path));
  mask_->ChangeValue(to_wx(filter.mask));
}

int FilterWizard::action() const {
  return move_->GetValue() ? MoveAndRename : copy_->GetValue() ? CopyAndRename : Rename;
}

void FilterWizard::showstep(int step) {
  if (step_ == FilePath && step > FilePath && !path_is_good()) return;
  if (step == FileName && mask_->IsEmpty()) mask_->ChangeValue(to_wx(default_mask));
  if (step == Summary && !store()) return;
  if (step == End) {
    if (IsModal()) EndModal(wxID_OK);
    return;
  }
  step_ = step;
  book_->SetSelection(static_cast<std::size_t>(step) - 1);
  set_texts();
  set_buttons();
  Layout();
  set_focus();
}

void FilterWizard::set_texts() {
  const auto texts = [this](const wxString& heading, const wxString& subheading) {
    heading_->SetLabelText(heading);
    subheading_->SetLabelText(subheading);
  };
  const wxString done = index_ > 0 ? "edited" : "added";
  switch (step_) {
    case Conditions:
      return texts("Step 1 - Filter Conditions", "Specify the critera of this filter");
    case Options:
      return texts("Step 2 - Filter Options", "Select what this filter will do");
    case FilePath:
      path_label_->SetLabelText(action() == MoveAndRename ? "Directory to move new files to:"
                                                          : "Directory to copy new files to:");
      return texts("Step 3 - File Path", action() == MoveAndRename ? "Select where files will me moved to"
                                                                   : "Select where files will me copied to");
    case FileName:
      return texts(action() == Rename ? "Step 3 - File Name" : "Step 4 - File Name",
                   "Specify the new file name format");
    default:
      summary_label_->SetLabelText("The following filter has been successfully " + done + ":");
      return texts(index_ > 0 ? "Filter Edited" : "Filter Added", "You have successfully " + done + " a filter");
  }
}

void FilterWizard::set_buttons() {
  const bool is_stored = step_ == Summary;
  back_->Enable(step_ > Conditions && !is_stored);
  cancel_->Enable(!is_stored);
  next_->SetLabel(is_stored ? "&Finish" : "&Next ");
  // What is stored cannot be cancelled any more: Escape and the closing button finish as well.
  SetEscapeId(is_stored ? next_->GetId() : static_cast<int>(wxID_CANCEL));
}

void FilterWizard::set_focus() {
  wxWindow* const first[] = {condition_,
                             action() == Rename          ? rename_
                             : action() == MoveAndRename ? move_
                                                         : copy_,
                             path_, mask_, next_};
  first[step_ - 1]->SetFocus();
  if (step_ == FileName) mask_->SetInsertionPointEnd();  // rather than all of it selected
}

void FilterWizard::on_next() {
  showstep(step_ == Options && action() == Rename ? static_cast<int>(FileName) : step_ + 1);
}

void FilterWizard::on_back() {
  showstep(step_ == FileName && action() == Rename ? static_cast<int>(Options) : step_ - 1);
}

bool FilterWizard::path_is_good() {
  if (action() == Rename || length(from_wx(path_->GetValue())) > longest_incomplete_path) return true;
  session_.ports.ui.show_message(0, "Path not valid", "You must enter a complete path", MessageIcon::Warning);
  path_->SetFocus();
  return false;
}

/// False, and nothing changed, when the rule cannot be saved; the user has been told.
bool FilterWizard::store() {
  FilterList& filters = session_.filters;
  const AFilter filter = described(index_ > 0 ? filters.at(index_) : AFilter{});
  if (index_ > 0) {
    filters.at(index_) = filter;
  } else {
    filters.append(filter);
  }
  if (!filters.savefilters()) {
    filters.loadfilters();
    session_.ports.ui.show_message(0, "Unable to save filter", "The filter could not be saved. The log says why.",
                                   MessageIcon::Error);
    return false;
  }
  filters.refresh_lv2();
  summarise(filter);
  return true;
}

AFilter FilterWizard::described(AFilter filter) const {
  const std::string typed = from_wx(condition_->GetValue());
  const std::string pattern = typed.empty() ? "*" : lower_case(typed);
  const int comparison = comparison_->GetSelection() == 0 ? Equals : DoesNotEqual;
  if (field_->GetSelection() == ShowName) {
    filter.showName = pattern;
    filter.showNameCondition = comparison;
  } else {
    filter.fileType = pattern;
    filter.fileTypeCondition = comparison;
  }
  filter.action = action();
  filter.enabled = true;
  filter.path = filter.action == Rename ? "" : with_separator(from_wx(path_->GetValue()));
  filter.mask = from_wx(mask_->GetValue());
  filter.description = from_wx(field_->GetStringSelection()) + " " + from_wx(comparison_->GetStringSelection()) + " " +
                       (pattern == "*" ? "Anything" : typed);
  return filter;
}

void FilterWizard::summarise(const AFilter& filter) {
  const auto show = [](wxStaticText* label, const std::string& text) {
    label->SetLabelText(to_wx(text));
    label->SetToolTip(to_wx(text));
  };
  show(summary_filter_, filter.description);
  show(summary_action_, std::string(action_name(filter.action)));
  show(summary_mask_, filter.mask);
  show(summary_path_, filter.path);
  summary_path_->Show(!filter.path.empty());
  summary_path_label_->Show(!filter.path.empty());
}

void FilterWizard::on_browse() {
  wxDirDialog picker(this, "Select path to move new files to", path_->GetValue(), wxDD_DEFAULT_STYLE);
  if (show_modal_(picker) == wxID_OK) path_->ChangeValue(to_wx(path_from_wx(picker.GetPath())));
}

}  // namespace quorvel::ui
