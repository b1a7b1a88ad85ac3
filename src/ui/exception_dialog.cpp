#include "ui/exception_dialog.h"

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "ui/text.h"

namespace quorvel::ui {

ExceptionDialog::ExceptionDialog(wxWindow* parent, Session& session)
    : wxDialog(parent, wxID_ANY, "Add Exception"), session_(session), first_tick_(*this, [this] { fill(); }) {
  lay_out();
  Bind(wxEVT_BUTTON, &ExceptionDialog::on_ok, this, wxID_OK);
}

void ExceptionDialog::lay_out() {
  auto* const names = new wxFlexGridSizer(2, FromDIP(wxSize(8, 8)));
  names->AddGrowableCol(1);
  const auto box = [&](const wxString& label, const char* name) {
    names->Add(new wxStaticText(this, wxID_ANY, label), wxSizerFlags().CenterVertical());
    auto* const text =
        new wxTextCtrl(this, wxID_ANY, "", wxDefaultPosition, FromDIP(wxSize(260, -1)), 0, wxDefaultValidator, name);
    names->Add(text, wxSizerFlags().Expand());
    return text;
  };
  detected_name_ = box("&Detected Show Name:", "detected_name");
  new_name_ = box("&New Show Name:", "new_name");
  auto* const ok = new wxButton(this, wxID_OK, "OK");
  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  buttons->AddStretchSpacer();
  buttons->Add(ok);
  buttons->Add(new wxButton(this, wxID_CANCEL, "Cancel"), wxSizerFlags().Border(wxLEFT));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(names, wxSizerFlags().Expand().Border(wxALL, FromDIP(12)));
  sizer->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(12)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
}

void ExceptionDialog::fill() {
  if (session_.queue.holds(index_)) {
    detected_name_->ChangeValue(to_wx(session_.queue.at(index_).search_name));
    detected_name_->SetEditable(false);
    new_name_->SetFocus();
  } else {
    detected_name_->ChangeValue(wxString());
    detected_name_->SetFocus();
  }
}

void ExceptionDialog::on_ok(wxCommandEvent&) {
  if (!is_given(detected_name_, "Detected Name Required", "Please enter a detected show name")) return;
  if (!is_given(new_name_, "New Name Required", "Please enter a new show name")) return;
  session_.exceptions.append({from_wx(detected_name_->GetValue()), from_wx(new_name_->GetValue())});
  if (!session_.exceptions.saveefilters()) {
    session_.exceptions.loadefilters();
    session_.ports.ui.show_message(0, "Unable to save exception", "The exception could not be saved. The log says why.",
                                   MessageIcon::Error);
    return;
  }
  session_.exceptions.refresh_lv3();
  if (IsModal()) EndModal(wxID_OK);
}

bool ExceptionDialog::is_given(wxTextCtrl* box, const char* title, const char* text) {
  if (!box->IsEmpty()) return true;
  session_.ports.ui.show_message(0, title, text, MessageIcon::Information);
  box->SetFocus();
  return false;
}

}  // namespace quorvel::ui
