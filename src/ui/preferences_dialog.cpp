#include "ui/preferences_dialog.h"

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "text/case.h"
#include "text/characters.h"
#include "text/cut.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr std::size_t shortest_types = 3;
constexpr int cache_warning = 1;  // the message's number, by which the user can switch it off

wxCheckBox* check_box(wxWindow* parent, const wxString& label, const char* name) {
  return new wxCheckBox(parent, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
}

/// Without dots, and without a ";" at the end.
std::string cleaned(std::string types) {
  std::erase(types, '.');
  if (types.ends_with(';')) types.pop_back();
  return types;
}

}  // namespace

PreferencesDialog::PreferencesDialog(wxWindow* parent, Session& session, bool& keep_temp)
    : wxDialog(parent, wxID_ANY, "Preferences"),
      session_(session),
      keep_temp_(keep_temp),
      autoclose_(check_box(this, "Close &when done", "Check6")),
      verbose_(check_box(this, "&Verbose Logging", "Check5")),
      confirm_(check_box(this, "Confirm &File Operations", "Check2")),
      nocache_(check_box(this, "Disable &Cache", "Check3")),
      noutf8_(check_box(this, "Disable &UTF-8 Decoding", "Check4")),
      context_(check_box(this, "Add To Context &Menu for Folders && Video Files", "Check1")) {
  lay_out();
  fill();
  Bind(wxEVT_BUTTON, &PreferencesDialog::on_ok, this, wxID_OK);
  Bind(wxEVT_CHAR_HOOK, &PreferencesDialog::on_key, this);
}

void PreferencesDialog::lay_out() {
  auto* const label = new wxStaticText(this, wxID_ANY, "Additional &Types:");
  types_ = new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, FromDIP(wxSize(220, -1)), 0,
                          wxDefaultValidator, "txtTypes");
  auto* const ok = new wxButton(this, wxID_OK, "OK");
  auto* const cancel = new wxButton(this, wxID_CANCEL, "Cancel");

  auto* const boxes = new wxBoxSizer(wxVERTICAL);
  for (wxCheckBox* const box : {autoclose_, verbose_, confirm_, nocache_, noutf8_, context_}) {
    boxes->Add(box, wxSizerFlags().Border(wxBOTTOM, FromDIP(6)));
  }
  auto* const types = new wxBoxSizer(wxHORIZONTAL);
  types->Add(label, wxSizerFlags().CenterVertical().Border(wxRIGHT));
  types->Add(types_, wxSizerFlags(1));
  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  buttons->AddStretchSpacer();
  buttons->Add(ok);
  buttons->Add(cancel, wxSizerFlags().Border(wxLEFT));
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, FromDIP(12));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(FromDIP(12));
  sizer->Add(boxes, part);
  sizer->Add(types, part);
  sizer->Add(buttons, part);
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
}

void PreferencesDialog::fill() {
  const Settings& settings = session_.settings;
  context_->SetValue(settings.context > Settings::TurnedOff);
  types_->ChangeValue(to_wx(settings.types));
  confirm_->SetValue(settings.confirm);
  nocache_->SetValue(settings.nocache);
  noutf8_->SetValue(settings.noutf8);
  verbose_->SetValue(session_.log.level() != LogLevel::Normal);
  autoclose_->SetValue(settings.autoclose);
}

void PreferencesDialog::on_ok(wxCommandEvent&) {
  if (!types_are_given()) return;
  if (nocache_->IsChecked()) {
    session_.ports.ui.show_message(
        cache_warning, "Not Recommended",
        "Disabling the cache is for troubleshooting only. The program will operate a lot slower with no cache",
        MessageIcon::Warning);
  }
  save_types_and_context();
  save_rest();
  if (IsModal()) EndModal(wxID_OK);
}

bool PreferencesDialog::types_are_given() {
  if (length(from_wx(types_->GetValue())) >= shortest_types) return true;
  session_.ports.ui.show_message(
      0, "Filetypes Required",
      "Please enter at least one filetype. Multiple filetypes can be seperated with semicolons.",
      MessageIcon::Information);
  types_->SetFocus();
  return false;
}

void PreferencesDialog::save_types_and_context() {
  Settings& settings = session_.settings;
  ContextMenu* const menu = session_.ports.context_menu;
  const std::string old_types = settings.types;
  if (menu != nullptr) {
    for (const std::string_view type : split(old_types, ";")) menu->remove(std::string(type));
  }
  settings.types = lower_case(cleaned(from_wx(types_->GetValue())));
  session_.settings_store.write_string("types", settings.types);
  if (context_->IsChecked()) {
    if (menu != nullptr) {
      for (const std::string_view type : split(settings.types, ";")) menu->install(std::string(type));
      menu->install("DIR");
    }
    settings.context = Settings::Installed;
  } else {
    if (menu != nullptr) menu->remove("DIR");
    settings.context = Settings::TurnedOff;
  }
  session_.settings_store.write_number("context", settings.context);
}

void PreferencesDialog::save_rest() {
  Settings& settings = session_.settings;
  SettingsStore& store = session_.settings_store;
  const auto save = [&store](const char* name, const wxCheckBox* box, bool& setting) {
    setting = box->IsChecked();
    store.write_number(name, setting ? 1 : 0);
  };
  save("confirm", confirm_, settings.confirm);
  save("nocache", nocache_, settings.nocache);
  save("noutf8", noutf8_, settings.noutf8);
  session_.log.set_level(verbose_->IsChecked() ? LogLevel::Verbose : LogLevel::Normal);
  store.write_number("logging", static_cast<int>(session_.log.level()));
  save("autoclose", autoclose_, settings.autoclose);
}

void PreferencesDialog::on_key(wxKeyEvent& event) {
  if (!event.ControlDown() || event.GetKeyCode() != 'T') return event.Skip();
  keep_temp_ = !keep_temp_;
  session_.log.debug_log(keep_temp_ ? "Keep temp on" : "Keep temp off", LogLevel::Normal);
}

}  // namespace quorvel::ui
