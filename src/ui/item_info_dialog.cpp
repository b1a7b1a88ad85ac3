#include "ui/item_info_dialog.h"

#include <wx/button.h>
#include <wx/sizer.h>

#include "text/cut.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int line_width = 313;

}  // namespace

wxString fitted(wxString text, int width, const std::function<int(const wxString&)>& measure) {
  bool cut = false;
  while (measure(text) >= width && text != "...") {
    if (cut) text.RemoveLast(4);
    text += "...";
    cut = true;
  }
  return text;
}

ItemInfoDialog::ItemInfoDialog(wxWindow* parent, const WorkQueue& queue, Launcher& launcher, UserInterface& ui)
    : wxDialog(parent, wxID_ANY, "Item Info"), queue_(queue), launcher_(launcher), ui_(ui), first_tick_(*this, [this] {
        fill();
      }) {
  lay_out();
  show_link_->Bind(wxEVT_HYPERLINK, [this](wxHyperlinkEvent&) { open(queue_.at(index_).show_url); });
  episode_link_->Bind(wxEVT_HYPERLINK, [this](wxHyperlinkEvent&) { open(queue_.at(index_).episode_url); });
}

wxHyperlinkCtrl* ItemInfoDialog::link(const wxString& label, const char* name) {
  auto* const link = new wxHyperlinkCtrl(links_, wxID_ANY, label, label, wxDefaultPosition, wxDefaultSize,
                                         wxHL_DEFAULT_STYLE & ~wxHL_CONTEXTMENU, name);
  link->SetCursor(wxCursor(wxCURSOR_HAND));
  return link;
}

void ItemInfoDialog::lay_out() {
  filename_ = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, "filename");
  status_ = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, "status");
  new_name_ = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, "new_name");
  description_ = new wxTextCtrl(this, wxID_ANY, "", wxDefaultPosition, FromDIP(wxSize(-1, 80)),
                                wxTE_MULTILINE | wxTE_READONLY, wxDefaultValidator, "description");
  links_ = new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "links");
  show_link_ = link("Show page on tvmaze.com", "show_link");
  episode_link_ = link("Episode page on tvmaze.com", "episode_link");
  auto* const ok = new wxButton(this, wxID_OK, "OK");

  auto* const links = new wxBoxSizer(wxVERTICAL);
  links->Add(show_link_);
  links->Add(episode_link_);
  links_->SetSizer(links);
  links_->Hide();
  const wxSizerFlags line = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(8));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(FromDIP(12));
  for (wxStaticText* const text : {filename_, status_, new_name_}) {
    text->SetMinSize(wxSize(FromDIP(line_width + 7), text->GetCharHeight() + FromDIP(2)));
    sizer->Add(text, line);
  }
  sizer->Add(description_, wxSizerFlags(line).Proportion(1));
  sizer->Add(links_, wxSizerFlags(line).Proportion(1));
  sizer->Add(ok, wxSizerFlags().Right().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(8)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
  ok->SetFocus();
  SetEscapeId(wxID_OK);
}

void ItemInfoDialog::fill() {
  if (!queue_.holds(index_)) return;
  const QueueItem& item = queue_.at(index_);
  if (item.state == QueueState::Done || item.state < QueueState::Inactive) fill_outcome(item);
}

void ItemInfoDialog::fill_outcome(const QueueItem& item) {
  const auto show_fitted = [this](wxStaticText* label, const std::string& text) {
    const wxString whole = to_wx(text);
    const auto measure = [label](const wxString& part) { return label->GetTextExtent(part).x; };
    label->SetLabelText(fitted(whole, FromDIP(line_width), measure));
    label->SetToolTip(whole);
  };
  show_fitted(filename_, "Filename: " + item.filename);
  std::string error = item.error_text;
  replace_all(error, "\r\n", "\n");
  if (item.state == QueueState::Cancelled) {
    status_->SetLabelText("Status: Cancelled");
    description_->ChangeValue(to_wx("Desc: " + error));
  } else if (item.state == QueueState::Failed) {
    status_->SetLabelText("Status: Failed");
    description_->ChangeValue(to_wx("Error: " + error));
  } else {
    status_->SetLabelText("Status: Done");
    show_fitted(new_name_, "New Name: " + item.new_name);
    description_->Hide();
    links_->Show();
  }
  new_name_->Show(item.state == QueueState::Done);
  Layout();
}

/// Addresses go to the launcher as the service gave them, in double quotes.
void ItemInfoDialog::open(const std::string& address) {
  if (launcher_.open(address)) return;
  ui_.show_message(0, "Unable to open page", "There is no program to open " + address + " with", MessageIcon::Warning);
}

}  // namespace quorvel::ui
