#include "ui/preferences_dialog.h"

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <algorithm>
#include <array>

#include "shell/preferences.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int max_days = 32767;  // what is stored is no larger

/// A box for each setting that is on or off, in the order in which the user meets them.
struct Box {
  const char *setting, *label, *name;
};
constexpr std::array<Box, 11> boxes = {{{"autoclose", "Close &when done", "Check6"},
                                        {"logging", "&Verbose Logging", "Check5"},
                                        {"confirm", "Confirm &File Operations", "Check2"},
                                        {"review", "Rev&iew First", "Check10"},
                                        {"exact", "&Exact Names", "Check8"},
                                        {"strict", "Fail What Ma&y Be Read Otherwise", "Check9"},
                                        {"verify", "&Read Back What Is Moved to Another Drive", "Check7"},
                                        {"nocache", "&Disable Cache", "Check3"},
                                        {"noutf8", "Disable &UTF-8 Decoding", "Check4"},
                                        {"tidy", "&Put Emptied Folders into the Trash", "Check11"},
                                        {"context", "Add To Context &Menu for Folders && Video Files", "Check1"}}};

const NumberSetting& setting_of(const Box& box) {
  return *std::find_if(number_settings.begin(), number_settings.end(),
                       [&](const NumberSetting& setting) { return setting.name == box.setting; });
}

}  // namespace

PreferencesDialog::PreferencesDialog(wxWindow* parent, Session& session, bool& keep_temp)
    : wxDialog(parent, wxID_ANY, "Preferences"), session_(session), keep_temp_(keep_temp) {
  for (const Box& box : boxes) {
    boxes_.push_back(
        new wxCheckBox(this, wxID_ANY, box.label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, box.name));
    boxes_.back()->SetValue(setting_of(box).is_on(session.settings));
  }
  lay_out();
  Bind(wxEVT_BUTTON, &PreferencesDialog::on_ok, this, wxID_OK);
  Bind(wxEVT_CHAR_HOOK, &PreferencesDialog::on_key, this);
}

void PreferencesDialog::lay_out() {
  auto* const fields = new wxFlexGridSizer(2, scaled(*this, wxSize(8, 6)));
  fields->AddGrowableCol(1);
  const auto field = [&](const char* label, const char* name, const std::string& text) {
    fields->Add(new wxStaticText(this, wxID_ANY, label), wxSizerFlags().CenterVertical());
    auto* const made = new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, scaled(*this, wxSize(270, -1)), 0,
                                      wxDefaultValidator, name);
    fit_letters(*made);
    made->ChangeValue(to_wx(text));
    fields->Add(made, wxSizerFlags().Expand());
    return made;
  };
  types_ = field("Additional &Types:", "txtTypes", session_.settings.types);
  companions_ = field("&Goes Along:", "txtCompanions", session_.settings.companions);
  leftovers_ = field("&Leftovers in Folders:", "txtLeftovers", session_.settings.leftovers);
  along_ = new wxCheckBox(this, wxID_ANY, "Ta&ke Along What Belongs to an Episode", wxDefaultPosition, wxDefaultSize, 0,
                          wxDefaultValidator, "Check12");
  along_->SetValue(!session_.settings.companions.empty());
  auto* const history_label = new wxStaticText(this, wxID_ANY, "Days to Keep the &History:");
  history_ = new wxSpinCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize, wxSP_ARROW_KEYS, 1, max_days,
                            session_.settings.history, "spnHistory");
  auto* const ok = new wxButton(this, wxID_OK, "OK");
  auto* const cancel = new wxButton(this, wxID_CANCEL, "Cancel");

  auto* const box_sizer = new wxBoxSizer(wxVERTICAL);
  for (wxCheckBox* const box : boxes_) {
    const wxSizerFlags line = wxSizerFlags().Border(wxBOTTOM, scaled(*this, 6));
    if (box == box_of("tidy")) {
      along_->MoveBeforeInTabOrder(box);
      box_sizer->Add(along_, line);
    }
    box_sizer->Add(box, line);
  }
  auto* const history = new wxBoxSizer(wxHORIZONTAL);
  history->Add(history_label, wxSizerFlags().CenterVertical().Border(wxRIGHT));
  history->Add(history_);
  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  buttons->AddStretchSpacer();
  buttons->Add(ok);
  buttons->Add(cancel, wxSizerFlags().Border(wxLEFT));
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 12));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(scaled(*this, 12));
  sizer->Add(box_sizer, part);
  sizer->Add(fields, part);
  sizer->Add(history, part);
  sizer->Add(buttons, part);
  SetSizerAndFit(sizer);
  CentreOnParent();
  ok->SetDefault();
  for (wxCheckBox* const box : {along_, box_of("tidy")}) box->Bind(wxEVT_CHECKBOX, &PreferencesDialog::on_fields, this);
  show_fields();
}

wxCheckBox* PreferencesDialog::box_of(std::string_view setting) const {
  const auto* const found = std::ranges::find(boxes, setting, &Box::setting);
  return boxes_[static_cast<std::size_t>(found - boxes.begin())];
}

void PreferencesDialog::on_fields(wxCommandEvent&) {
  if (along_->IsChecked() && companions_->IsEmpty()) companions_->ChangeValue(usual_companions);
  show_fields();
}

/// What counts only with its box.
void PreferencesDialog::show_fields() {
  companions_->Enable(along_->IsChecked());
  leftovers_->Enable(box_of("tidy")->IsChecked());
}

void PreferencesDialog::on_ok(wxCommandEvent&) {
  Settings wanted = session_.settings;
  wanted.types = from_wx(types_->GetValue());
  wanted.companions = along_->IsChecked() ? from_wx(companions_->GetValue()) : "";
  wanted.leftovers = from_wx(leftovers_->GetValue());
  wanted.history = history_->GetValue();
  for (std::size_t i = 0; i < boxes.size(); ++i) setting_of(boxes[i]).turn(wanted, boxes_[i]->IsChecked());
  if (!apply_preferences(session_, wanted)) return types_->SetFocus();
  if (IsModal()) EndModal(wxID_OK);
}

void PreferencesDialog::on_key(wxKeyEvent& event) {
  if (!event.ControlDown() || event.GetKeyCode() != 'T') return event.Skip();
  keep_temp_ = !keep_temp_;
  session_.log.debug_log(keep_temp_ ? "Keep temp on" : "Keep temp off", LogLevel::Normal);
}

}  // namespace quorvel::ui
