#include "ui/about_box.h"

#include <wx/button.h>
#include <wx/hyperlink.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>

#include "shell/version.h"
#include "ui/icons.h"
#include "ui/text.h"

namespace quorvel::ui {

AboutBox::AboutBox(wxWindow* parent, Log& log, const std::string& address, std::function<void()> open_website,
                   std::string socket_version)
    : wxDialog(parent, wxID_ANY, std::string("About ") + application_title),
      log_(log),
      open_website_(std::move(open_website)),
      socket_version_(std::move(socket_version)) {
  auto* const title = new wxStaticText(this, wxID_ANY, application_title);
  title->SetFont(title->GetFont().Bold().Scaled(1.4F));
  const std::string version = std::string("Version ") + short_version + "  Build " + std::to_string(revision);
  auto* const link = new wxHyperlinkCtrl(this, wxID_ANY, to_wx(address), to_wx(address), wxDefaultPosition,
                                         wxDefaultSize, wxHL_DEFAULT_STYLE & ~wxHL_CONTEXTMENU);
  auto* const ok = new wxButton(this, wxID_OK, "OK");

  auto* const texts = new wxBoxSizer(wxVERTICAL);
  texts->Add(title, wxSizerFlags().Border(wxBOTTOM));
  texts->Add(new wxStaticText(this, wxID_ANY, version), wxSizerFlags().Border(wxBOTTOM));
  texts->Add(new wxStaticText(this, wxID_ANY, to_wx(copyright)), wxSizerFlags().Border(wxBOTTOM));
  texts->Add(link);
  auto* const top = new wxBoxSizer(wxHORIZONTAL);
  top->Add(new wxStaticBitmap(this, wxID_ANY, icons::about()), wxSizerFlags().Border(wxRIGHT, FromDIP(16)));
  top->Add(texts, wxSizerFlags(1));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(top, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(16)));
  sizer->Add(ok, wxSizerFlags().Right().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(12)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
  ok->SetFocus();
  SetEscapeId(wxID_OK);

  link->Bind(wxEVT_HYPERLINK, [this](wxHyperlinkEvent&) { open_website_(); });
  Bind(wxEVT_CHAR_HOOK, &AboutBox::on_key, this);
}

void AboutBox::on_key(wxKeyEvent& event) {
  event.Skip();
  log_.debug_log("Using SocketWrench " + socket_version_, LogLevel::Normal);
}

}  // namespace quorvel::ui
