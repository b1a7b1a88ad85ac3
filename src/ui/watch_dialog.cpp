#include "ui/watch_dialog.h"

#include <wx/dirdlg.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>

#include "shell/preferences.h"
#include "shell/watching.h"
#include "ui/desktop.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int list_width = 420, list_height = 130;
constexpr const char* explanation =
    "While Quorvel runs, each new file in these folders is taken as if you had dropped it here, once it is whole and "
    "has stayed as it is for a while. So are the files that are there now.";

}  // namespace

WatchDialog::WatchDialog(wxWindow* parent, Session& session, std::function<int(wxDialog&)> show_modal)
    : wxDialog(parent, wxID_ANY, "Watch Folders", wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      session_(session),
      show_modal_(std::move(show_modal)),
      folders_(watched_folders(session.settings)) {
  lay_out();
  watch_->SetValue(session.settings.watching);
  show_folders(0);
  list_->Bind(wxEVT_LISTBOX, [this](wxCommandEvent&) { update(); });
  list_->Bind(wxEVT_KEY_DOWN, [this](wxKeyEvent& event) {
    event.GetKeyCode() == WXK_DELETE && remove_->IsEnabled() ? remove() : event.Skip();
  });
  Bind(wxEVT_BUTTON, &WatchDialog::on_ok, this, wxID_OK);
  (folders_.empty() ? static_cast<wxWindow*>(add_) : list_)->SetFocus();
}

void WatchDialog::lay_out() {
  const int gap = scaled(*this, 12);
  const wxSize list_size = scaled(*this, wxSize(list_width, list_height));
  auto* const label = new wxStaticText(this, wxID_ANY, "&Folders:");
  list_ = new wxListBox(this, wxID_ANY, wxDefaultPosition, list_size, 0, nullptr, wxLB_SINGLE | wxLB_HSCROLL,
                        wxDefaultValidator, "folders");
  set_spoken_name(*list_, "Folders");
  auto* const beside = new wxBoxSizer(wxVERTICAL);
  beside->Add(add_ = button("&Add\u2026", "add", &WatchDialog::pick), wxSizerFlags().Expand());
  beside->Add(remove_ = button("&Remove", "remove", &WatchDialog::remove), wxSizerFlags().Expand().Border(wxTOP));
  watch_ = new wxCheckBox(this, wxID_ANY, "&Watch These Folders", wxDefaultPosition, wxDefaultSize, 0,
                          wxDefaultValidator, "watch");
  auto* const text = new wxStaticText(this, wxID_ANY, explanation);
  auto* const ok = new wxButton(this, wxID_OK, "OK");
  auto* const cancel = new wxButton(this, wxID_CANCEL, "Cancel");

  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(list_, wxSizerFlags(1).Expand());
  row->Add(beside, wxSizerFlags().Border(wxLEFT));
  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  buttons->AddStretchSpacer();
  buttons->Add(ok);
  buttons->Add(cancel, wxSizerFlags().Border(wxLEFT));
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(gap);
  sizer->Add(label, wxSizerFlags(part).Border(wxLEFT | wxRIGHT, gap));
  sizer->AddSpacer(gap / 3);
  sizer->Add(row, wxSizerFlags(part).Proportion(1));
  sizer->Add(watch_, part);
  text->Wrap(list_size.x + beside->CalcMin().x);
  sizer->Add(text, part);
  sizer->Add(buttons, part);
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
}

wxButton* WatchDialog::button(const char* label, const char* name, void (WatchDialog::*press)()) {
  auto* const made =
      new wxButton(this, wxID_ANY, to_wx(label), wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
  made->Bind(wxEVT_BUTTON, [this, press](wxCommandEvent&) { (this->*press)(); });
  return made;
}

void WatchDialog::pick() {
  wxDirDialog picker(this, "Select a folder to watch", wxString(), wxDD_DEFAULT_STYLE | wxDD_DIR_MUST_EXIST);
  if (show_modal_(picker) != wxID_OK) return;
  const std::string folder = path_from_wx(picker.GetPath());
  if (folder.empty()) return;
  const auto known = std::ranges::find(folders_, folder);
  const auto place = static_cast<int>(known - folders_.begin());
  if (known == folders_.end()) {
    if (folders_.empty()) watch_->SetValue(true);  // what else would it have been added for
    folders_.push_back(folder);
  }
  show_folders(place);
}

void WatchDialog::remove() {
  const int place = list_->GetSelection();
  folders_.erase(folders_.begin() + place);
  show_folders(std::min(place, static_cast<int>(folders_.size()) - 1));
  (folders_.empty() ? static_cast<wxWindow*>(add_) : list_)->SetFocus();
}

void WatchDialog::show_folders(int selected) {
  wxArrayString shown;
  for (const std::string& folder : folders_) shown.Add(to_wx(folder));
  list_->Set(shown);
  if (!folders_.empty()) list_->SetSelection(selected);
  update();
}

void WatchDialog::update() {
  remove_->Enable(list_->GetSelection() != wxNOT_FOUND);
  watch_->Enable(!folders_.empty());
  if (folders_.empty()) watch_->SetValue(false);
}

void WatchDialog::on_ok(wxCommandEvent&) {
  set_watched(session_, folders_, watch_->IsChecked());
  if (IsModal()) EndModal(wxID_OK);
}

}  // namespace quorvel::ui
