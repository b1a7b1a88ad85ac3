#include "ui/message_box.h"

#include <wx/artprov.h>
#include <wx/button.h>
#include <wx/dcclient.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "text/cut.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

wxArtID art(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Error:
      return wxART_ERROR;
    case MessageIcon::Question:
      return wxART_QUESTION;
    case MessageIcon::Warning:
      return wxART_WARNING;
    case MessageIcon::Information:
      break;
  }
  return wxART_INFORMATION;
}

std::string skip_name(int id) {
  return "msgskip$" + std::to_string(id);
}

/// Text that can be read, scrolled and copied, but looks like the dialog's own.
wxTextCtrl* text_area(wxWindow* parent, const std::string& text) {
  std::string lines = text;
  replace_all(lines, "#", "\n");
  const wxString shown = to_wx(lines);
  auto* const area = new wxTextCtrl(parent, wxID_ANY, shown, wxDefaultPosition, wxDefaultSize,
                                    wxTE_MULTILINE | wxTE_READONLY | wxTE_NO_VSCROLL | wxBORDER_NONE);
  area->SetBackgroundColour(parent->GetBackgroundColour());
  const int width = parent->FromDIP(360);
  const int line_height = area->GetCharHeight() + parent->FromDIP(3);
  int count = 0;
  for (const std::string_view line : split(lines, "\n")) count += 1 + area->GetTextExtent(to_wx(line)).x / width;
  area->SetMinSize(wxSize(width, line_height * std::clamp(count + 1, 2, 15)));
  return area;
}

}  // namespace

MessageDialog::MessageDialog(wxWindow* parent, SettingsStore& store, int id, const std::string& title,
                             const std::string& text, MessageIcon icon)
    : wxDialog(parent, wxID_ANY, to_wx(title)), store_(store), id_(id) {
  auto* const picture =
      new wxStaticBitmap(this, wxID_ANY, wxArtProvider::GetBitmapBundle(art(icon), wxART_MESSAGE_BOX));
  auto* const area = text_area(this, text);
  skip_ = new wxCheckBox(this, wxID_ANY, "&Don't show this again");
  skip_->Show(id_ >= 1);
  auto* const ok = new wxButton(this, wxID_OK, "OK");

  auto* const message = new wxBoxSizer(wxHORIZONTAL);
  message->Add(picture, wxSizerFlags().Border(wxRIGHT, FromDIP(12)));
  message->Add(area, wxSizerFlags(1).Expand());
  auto* const bottom = new wxBoxSizer(wxHORIZONTAL);
  bottom->Add(skip_, wxSizerFlags().CenterVertical());
  bottom->AddStretchSpacer();
  bottom->Add(ok);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(message, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(12)));
  sizer->Add(bottom, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(12)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
  ok->SetFocus();
  SetEscapeId(wxID_OK);
  ok->Bind(wxEVT_BUTTON, &MessageDialog::on_ok, this);
}

bool MessageDialog::is_skipped(const SettingsStore& store, int id) {
  return id >= 1 && store.read_number(skip_name(id)) != 0;
}

void MessageDialog::on_ok(wxCommandEvent&) {
  if (IsModal()) EndModal(wxID_OK);
  if (skip_->IsShown() && skip_->IsChecked()) store_.write_number(skip_name(id_), 1);
}

}  // namespace quorvel::ui
