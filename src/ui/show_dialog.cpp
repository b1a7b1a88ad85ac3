#include "ui/show_dialog.h"

#include <wx/sizer.h>

#include <utility>

#include "shell/dialogs.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int width = 520, list_height = 190;
constexpr int result_lines = 2;

}  // namespace

ShowDialog::ShowDialog(wxWindow* parent, ShowChoice& choice, Launcher& launcher, UserInterface& ui)
    : wxDialog(parent, wxID_ANY, "Choose Show", wxDefaultPosition, wxDefaultSize,
               wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER),
      choice_(choice),
      launcher_(launcher),
      ui_(ui),
      first_tick_(*this, [this] { search(); }) {
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 8));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(scaled(*this, 12));
  sizer->Add(line("Filename: " + choice.filename(), "filename"), part);
  sizer->Add(line("Read as: " + choice.read_as(), "read_as"), part);
  if (const std::string others = choice.others(); !others.empty()) sizer->Add(line(others, "others"), part);
  sizer->Add(search_row(), part);
  shows_ = new PlainList(this, {"shows", "Shows", {"Name", "Year", "Country", "Network"}}, {46, 12, 15, 27});
  shows_->SetMinSize(scaled(*this, wxSize(width, list_height)));
  shows_->on_select = [this] { update(); };
  shows_->on_activate = [this](int) { choose(); };
  sizer->Add(shows_, wxSizerFlags(part).Proportion(1));
  result_ = line("", "result");
  result_->SetMinSize(wxSize(scaled(*this, width), result_lines * result_->GetCharHeight()));
  sizer->Add(result_, part);
  sizer->Add(earlier_row(), part);
  remember_ = new wxCheckBox(this, wxID_ANY, "&Remember for this name", wxDefaultPosition, wxDefaultSize, 0,
                             wxDefaultValidator, "remember");
  remember_->SetValue(true);
  sizer->Add(remember_, part);
  sizer->Add(buttons(), part);
  update();
  SetSizerAndFit(sizer);
  CentreOnParent();
}

/// What does not fit is cut, and seen whole over it.
wxStaticText* ShowDialog::line(const std::string& text, const char* name) {
  auto* const made = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, scaled(*this, wxSize(width, -1)),
                                      wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_MIDDLE, name);
  made->SetLabelText(to_wx(text));
  made->SetToolTip(to_wx(text));
  return made;
}

wxSizer* ShowDialog::search_row() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(new wxStaticText(this, wxID_ANY, "&Name:"), wxSizerFlags().CenterVertical().Border(wxRIGHT));
  name_ = new wxTextCtrl(this, wxID_ANY, to_wx(choice_.name()), wxDefaultPosition, wxDefaultSize, wxTE_PROCESS_ENTER,
                         wxDefaultValidator, "name");
  name_->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { search(); });
  row->Add(name_, wxSizerFlags(1).CenterVertical());
  search_ = new wxButton(this, wxID_ANY, "&Search");
  search_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { search(); });
  row->Add(search_, wxSizerFlags().CenterVertical().Border(wxLEFT));
  return row;
}

wxSizer* ShowDialog::earlier_row() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  earlier_ = line("", "earlier");
  row->Add(earlier_, wxSizerFlags(1).CenterVertical());
  forget_ = new wxButton(this, wxID_ANY, "&Forget");
  forget_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { forget(); });
  row->Add(forget_, wxSizerFlags().CenterVertical().Border(wxLEFT));
  return row;
}

wxSizer* ShowDialog::buttons() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  page_ = new wxButton(this, wxID_ANY, "Show &Page");
  page_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { show_page(); });
  row->Add(page_);
  row->AddStretchSpacer();
  choose_ = new wxButton(this, wxID_OK, "Ch&oose");
  choose_->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { choose(); });
  choose_->SetDefault();
  row->Add(choose_);
  row->Add(new wxButton(this, wxID_CANCEL, "Cancel"), wxSizerFlags().Border(wxLEFT));
  return row;
}

void ShowDialog::search() {
  if (choice_.is_searching()) return;
  const std::string name = from_wx(name_->GetValue().Strip(wxString::both));
  shows_->show({});
  tell("Searching\u2026");
  search_->Disable();
  const std::string result = choice_.search(name);
  if (!IsModal()) return;  // the user has closed it meanwhile
  search_->Enable();
  tell(result);
  shows_->show(choice_.rows());
  if (const auto place = choice_.place_of_earlier_choice()) shows_->select(static_cast<int>(*place) + 1);
  update();
  if (choice_.found().empty()) {
    name_->SetFocus();
    name_->SelectAll();
  } else {
    shows_->SetFocus();
  }
}

void ShowDialog::tell(const std::string& text) {
  result_->SetLabelText(to_wx(text));
  result_->Wrap(shows_->GetSize().x);
  result_->SetToolTip(to_wx(text));
  update();
}

void ShowDialog::update() {
  const bool has_choice = shows_->selected() > 0;
  choose_->Enable(has_choice);
  page_->Enable(has_choice && !page_address(choice_.found().at(place()).url).empty());
  const std::string earlier = choice_.is_searching() ? "" : choice_.earlier_choice();
  earlier_->SetLabelText(to_wx(earlier));
  earlier_->SetToolTip(to_wx(earlier));
  earlier_->Show(!earlier.empty());
  forget_->Show(!earlier.empty());
  Layout();
}

void ShowDialog::choose() {
  if (shows_->selected() > 0 && IsModal()) EndModal(wxID_OK);
}

void ShowDialog::show_page() {
  open_page(launcher_, ui_, choice_.found().at(place()).url);
}

void ShowDialog::forget() {
  choice_.forget();
  update();
  shows_->SetFocus();  // the button has gone
}

void ShowDialog::EndModal(int result) {
  choice_.give_up();
  wxDialog::EndModal(result);
}

}  // namespace quorvel::ui
