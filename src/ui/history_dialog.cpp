#include "ui/history_dialog.h"

#include <wx/sizer.h>

#include <utility>

#include "shell/dialogs.h"
#include "text/restored.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int width = 640, passes_height = 130, files_height = 170;
constexpr int details_lines = 5;

}  // namespace

HistoryDialog::HistoryDialog(wxWindow* parent, Window window)
    : wxDialog(parent, wxID_ANY, "History", wxDefaultPosition, wxDefaultSize, wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      window_(std::move(window)),
      sheet_(window_.session, window_.undoing),
      first_tick_(*this, [this] {
        passes_->select(1);
        passes_->SetFocus();
        choose();
      }) {
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 8));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  const auto add_list = [&](const char* label, PlainList::Looks looks, std::vector<int> shares, int height) {
    looks.several = true;
    sizer->Add(new wxStaticText(this, wxID_ANY, label),
               wxSizerFlags().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 4)).Border(wxLEFT, scaled(*this, 8)));
    auto* const list = new PlainList(this, looks, std::move(shares));
    list->SetMinSize(scaled(*this, wxSize(width, height)));
    sizer->Add(list, wxSizerFlags(part).Proportion(height));
    return list;
  };
  sizer->AddSpacer(scaled(*this, 12));
  passes_ = add_list("Passes:", {"passes", "Passes", {"Time", "What Was Done"}}, {26, 74}, passes_height);
  files_ = add_list("Files:", {"files", "Files", {"Action", "Old Name", "New Name", "Outcome"}}, {12, 30, 30, 28},
                    files_height);
  for (PlainList* const list : {passes_, files_}) list->on_select = [this] { choose_later(); };
  files_->on_activate = [this](int) { open_folder(); };
  details_ = new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize,
                            wxTE_MULTILINE | wxTE_READONLY, wxDefaultValidator, "details");
  details_->SetMinSize(wxSize(-1, details_lines * (details_->GetCharHeight() + scaled(*this, 4))));
  sizer->Add(details_, part);
  result_ = new wxStaticText(this, wxID_ANY, wxString(), wxDefaultPosition, scaled(*this, wxSize(width, -1)),
                             wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END, "result");
  sizer->Add(result_, part);
  sizer->Add(buttons(), part);
  show_passes();
  update();
  tell(sheet_.passes().empty() ? "Nothing has been done yet" : window_.hindrance());
  SetSizerAndFit(sizer);
  CentreOnParent();
}

wxButton* HistoryDialog::button(const char* label, void (HistoryDialog::*press)()) {
  auto* const made = new wxButton(this, wxID_ANY, label);
  made->Bind(wxEVT_BUTTON, [this, press](wxCommandEvent&) { (this->*press)(); });
  return made;
}

wxSizer* HistoryDialog::buttons() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(folder_ = button("Open &Folder", &HistoryDialog::open_folder));
  row->AddStretchSpacer();
  row->Add(undo_selected_ = button("Undo &Selected", &HistoryDialog::undo_selected));
  row->Add(undo_pass_ = button("&Undo Pass", &HistoryDialog::undo_pass), wxSizerFlags().Border(wxLEFT));
  close_ = new wxButton(this, wxID_CANCEL, "Close");
  close_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { close(); });
  row->Add(close_, wxSizerFlags().Border(wxLEFT));
  return row;
}

void HistoryDialog::show_passes() {
  passes_->show(sheet_.passes());
  passes_->select_all(sheet_.chosen());
}

void HistoryDialog::show_files() {
  const std::vector<int> selection = files_->selection();
  files_->show(sheet_.files());
  files_->select_all(selection);
}

/// Some systems tell each row of a selection by itself.
void HistoryDialog::choose_later() {
  if (!std::exchange(choice_waits_, true)) CallAfter(&HistoryDialog::choose);
}

void HistoryDialog::choose() {
  choice_waits_ = false;
  if (is_undoing_) return;
  if (const std::vector<int> passes = passes_->selection(); passes != sheet_.chosen()) {
    sheet_.choose(passes);
    files_->show(sheet_.files());
  }
  update();
}

void HistoryDialog::update() {
  const std::vector<int> selection = files_->selection();
  const bool may_undo = !is_undoing_ && window_.hindrance().empty();
  details_->ChangeValue(to_wx(files_->count() > 0 ? sheet_.details(selection) : ""));
  undo_selected_->Enable(may_undo && sheet_.undoable(selection) > 0);
  undo_pass_->Enable(may_undo && sheet_.undoable() > 0);
  folder_->Enable(!is_undoing_ && !sheet_.folder_of(selection).empty());
  close_->SetLabel(is_undoing_ ? "Stop" : "Close");
}

void HistoryDialog::tell(const std::string& text) {
  result_->SetLabelText(to_wx(text));
  result_->SetToolTip(to_wx(text));
}

void HistoryDialog::undo(const std::function<PastUndoing::Result(const PastSheet::GoesOn&)>& action) {
  if (const std::string hindrance = window_.hindrance(); !hindrance.empty()) {
    tell(hindrance);
    return update();
  }
  PastUndoing::Result result;
  {
    const Restored<bool> undoing(is_undoing_, true);
    update();
    close_->SetFocus();  // the others cannot have it now
    window_.run([&] {
      result = action([this](int place, int count) {
        tell("Undoing " + std::to_string(place) + " of " + std::to_string(count) + "\u2026");
        return window_.goes_on();
      });
    });
  }
  if (!IsModal()) return;  // the window has gone meanwhile
  show_passes();
  show_files();
  tell(text_of(result));
  update();
  files_->SetFocus();
}

void HistoryDialog::undo_selected() {
  undo([this](const PastSheet::GoesOn& goes_on) { return sheet_.undo(files_->selection(), goes_on); });
}

void HistoryDialog::undo_pass() {
  undo([this](const PastSheet::GoesOn& goes_on) { return sheet_.undo_all(goes_on); });
}

void HistoryDialog::open_folder() {
  const std::string folder = sheet_.folder_of(files_->selection());
  if (folder.empty() || is_undoing_) return;
  quorvel::open_folder(window_.launcher, window_.session.ports.ui, window_.session.ports.files, folder);
}

void HistoryDialog::close() {
  if (is_undoing_) return window_.stop();
  EndModal(wxID_CANCEL);
}

void HistoryDialog::EndModal(int result) {
  if (is_undoing_) window_.stop();
  wxDialog::EndModal(result);
}

}  // namespace quorvel::ui
