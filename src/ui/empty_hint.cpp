#include "ui/empty_hint.h"

#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <utility>

#include "ui/size.h"

namespace quorvel::ui {

EmptyHint::EmptyHint(wxWindow* parent, std::function<void(bool)> turn_exact_names)
    // A window of its own, over the list's: the list paints its whole area.
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxTAB_TRAVERSAL, "hint") {
  auto* const what_to_do = new wxStaticText(this, wxID_ANY, "Drop files or folders here");
  exact_names_ = new wxCheckBox(this, wxID_ANY, "&Exact Names", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator,
                                "exact_names");
  auto* const meaning = new wxStaticText(
      this, wxID_ANY, "Names files just as TVmaze does, and leaves a file alone rather than guess what it is.");
  exact_names_->SetToolTip(meaning->GetLabel());  // which screen readers read out with it
  exact_names_->Bind(wxEVT_CHECKBOX,
                     [turn = std::move(turn_exact_names)](const wxCommandEvent& event) { turn(event.IsChecked()); });
  const auto colour = [this, what_to_do, meaning] {
    SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX));
    for (wxStaticText* const text : {what_to_do, meaning}) {
      text->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
    }
  };
  colour();
  Bind(wxEVT_SYS_COLOUR_CHANGED, [colour](wxSysColourChangedEvent& event) {
    event.Skip();
    colour();
  });
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(what_to_do, wxSizerFlags().CenterHorizontal().Border(wxBOTTOM, scaled(*this, 24)));
  sizer->Add(exact_names_, wxSizerFlags().CenterHorizontal().Border(wxBOTTOM, scaled(*this, 4)));
  sizer->Add(meaning, wxSizerFlags().CenterHorizontal());
  SetSizerAndFit(sizer);
  Raise();
}

}  // namespace quorvel::ui
