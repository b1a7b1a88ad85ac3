#include "ui/preview_panel.h"

#include <tuple>

#include "ui/desktop.h"
#include "ui/icons.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int lines_of_note = 2;

}  // namespace

wxStaticText* note(wxWindow* parent, const char* name) {
  auto* const label =
      new wxStaticText(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, name);
  label->SetMinSize(wxSize(-1, lines_of_note * label->GetCharHeight()));
  return label;
}

void show_note(wxStaticText& note, const std::string& text, int width) {
  note.SetLabelText(to_wx(text));
  note.Wrap(width);
  note.SetToolTip(note.GetLabel().Freq('\n') < lines_of_note ? wxString() : to_wx(text));
}

wxFlexGridSizer* line_grid(const wxWindow& window) {
  auto* const grid = new wxFlexGridSizer(2, scaled(window, wxSize(12, 6)));
  grid->AddGrowableCol(1);
  return grid;
}

std::pair<wxStaticText*, wxStaticText*> add_line(wxFlexGridSizer& grid, wxWindow* parent, const char* label,
                                                 const char* name) {
  auto* const title = new wxStaticText(parent, wxID_ANY, label);
  auto* const value = new wxStaticText(parent, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                       wxST_ELLIPSIZE_MIDDLE | wxST_NO_AUTORESIZE, name);
  grid.Add(title);
  grid.Add(value, wxSizerFlags().Expand());
  return {title, value};
}

void show_value(wxStaticText& value, const std::string& text) {
  value.SetLabelText(to_wx(text));
  const bool is_cut = value.GetTextExtent(to_wx(text)).x > value.GetClientSize().x;
  value.SetToolTip(is_cut ? to_wx(text) : wxString());
}

PreviewPanel::PreviewPanel(wxWindow* parent) : wxPanel(parent) {
  auto* const grid = line_grid(*this);
  const auto line = [&](const char* label, const char* name) { return add_line(*grid, this, label, name); };
  std::tie(file_label_, file_) = line("Selected File:", "preview_file");
  name_ = line("New Name:", "preview_name").second;
  std::tie(folder_label_, folder_) = line("Folder:", "preview_folder");
  sign_ = new wxStaticBitmap(this, wxID_ANY, icons::rows(*this)[RowUpdate::LookIcon - 1]);
  remark_ = note(this, "preview_remark");
  auto* const remark = new wxBoxSizer(wxHORIZONTAL);
  remark->Add(sign_, wxSizerFlags().Border(wxRIGHT, scaled(*this, 6)));
  remark->Add(remark_, wxSizerFlags(1));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(grid, wxSizerFlags().Expand());
  sizer->Add(remark, wxSizerFlags().Expand().Border(wxTOP, scaled(*this, 8)));
  SetSizer(sizer);
}

void PreviewPanel::show(const RulePreview& preview, bool has_folder) {
  file_label_->SetLabelText(preview.is_example ? "Example:" : "Selected File:");
  folder_label_->Show(has_folder);
  folder_->Show(has_folder);
  const std::string remark = preview.remarks.empty() ? "" : preview.remarks.front();
  sign_->Show(!remark.empty());
  Layout();  // what the texts have to fit into
  show_value(*file_, preview.old_name);
  show_value(*name_, preview.new_name);
  show_value(*folder_, preview.folder);
  show_note(*remark_, remark, remark_->GetClientSize().x);
  if (std::exchange(said_, remark) != remark) announce(*this, remark);
}

}  // namespace quorvel::ui
