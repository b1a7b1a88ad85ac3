#include "ui/confirm_dialog.h"

#include <wx/button.h>
#include <wx/sizer.h>

#include "ui/text.h"

namespace quorvel::ui {
namespace {

wxTextCtrl* path_box(wxWindow* parent, const char* name) {
  return new wxTextCtrl(parent, wxID_ANY, wxString(), wxDefaultPosition, parent->FromDIP(wxSize(460, -1)),
                        wxTE_READONLY, wxDefaultValidator, name);
}

/// The end of a path, where the file's name stands, is what the user wants to see.
void show_end(wxTextCtrl* box, const std::string& path) {
  box->ChangeValue(to_wx(path));
  box->SetInsertionPointEnd();
  box->ShowPosition(box->GetLastPosition());
  box->SetToolTip(to_wx(path));
}

}  // namespace

ConfirmDialog::ConfirmDialog(wxWindow* parent, Settings& settings, SettingsStore& store, ConfirmationQuestion question)
    : wxDialog(parent, wxID_ANY, to_wx(question.title)),
      settings_(settings),
      store_(store),
      question_(std::move(question)),
      text_(new wxStaticText(this, wxID_ANY, to_wx(question_.question))),
      source_(path_box(this, "source")),
      destination_(path_box(this, "destination")),
      skip_(new wxCheckBox(this, wxID_ANY, "&Don't show this again")),
      first_tick_(*this, [this] { fill(); }) {
  auto* const ok = new wxButton(this, wxID_OK, "OK");
  auto* const cancel = new wxButton(this, wxID_CANCEL, "Cancel");

  const wxSizerFlags row = wxSizerFlags().CenterVertical();
  auto* const paths = new wxFlexGridSizer(2, FromDIP(wxSize(8, 8)));
  paths->AddGrowableCol(1);
  paths->Add(new wxStaticText(this, wxID_ANY, "From:"), row);
  paths->Add(source_, wxSizerFlags().Expand());
  paths->Add(new wxStaticText(this, wxID_ANY, "To:"), row);
  paths->Add(destination_, wxSizerFlags().Expand());
  auto* const bottom = new wxBoxSizer(wxHORIZONTAL);
  bottom->Add(skip_, row);
  bottom->AddStretchSpacer();
  bottom->Add(ok);
  bottom->Add(cancel, wxSizerFlags().Border(wxLEFT));
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(12));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(FromDIP(12));
  sizer->Add(text_, part);
  sizer->Add(paths, part);
  sizer->Add(bottom, part);
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
  ok->SetFocus();

  ok->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { on_button(true); });
  cancel->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { on_button(false); });
  skip_->Bind(wxEVT_CHECKBOX, &ConfirmDialog::on_skip, this);
  Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) {
    if (IsModal()) EndModal(wxID_NONE);
  });
}

void ConfirmDialog::fill() {
  show_end(source_, question_.source);
  show_end(destination_, question_.destination);
}

void ConfirmDialog::on_button(bool answer) {
  answer_ = answer;
  if (IsModal()) EndModal(answer ? wxID_OK : wxID_CANCEL);
}

void ConfirmDialog::on_skip(wxCommandEvent& event) {
  settings_.confirm = !event.IsChecked();
  store_.write_number("confirm", settings_.confirm ? 1 : 0);
}

}  // namespace quorvel::ui
