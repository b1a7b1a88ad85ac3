#include "ui/empty_hint.h"

#include <wx/settings.h>

#include <utility>

#include "ui/size.h"

namespace quorvel::ui {

EmptyHint::EmptyHint(wxWindow* parent, Turn turn_exact_names, Turn turn_review_first)
    // A window of its own, over the list's: the list paints its whole area.
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxTAB_TRAVERSAL, "hint") {
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  texts_ = {new wxStaticText(this, wxID_ANY, "Drop files or folders here")};
  sizer->Add(texts_.front(), wxSizerFlags().CenterHorizontal());
  exact_names_ = add_choice(*sizer, "&Exact Names", "exact_names",
                            "Names files just as TVmaze does, and leaves a file alone rather than guess what it is.",
                            std::move(turn_exact_names));
  review_first_ = add_choice(*sizer, "&Review First", "review_first",
                             "Shows all new names first, for you to correct and to apply. Until then no file changes.",
                             std::move(turn_review_first));
  const auto colour = [this] {
    SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX));
    for (wxStaticText* const text : texts_) {
      text->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
    }
  };
  colour();
  Bind(wxEVT_SYS_COLOUR_CHANGED, [colour](wxSysColourChangedEvent& event) {
    event.Skip();
    colour();
  });
  SetSizerAndFit(sizer);
  Raise();
}

void EmptyHint::show(bool exact_names, bool review_first, bool watching) {
  exact_names_->SetValue(exact_names);
  review_first_->SetValue(review_first);
  texts_.front()->SetLabelText(watching ? "Watching folders for new files. Drop files or folders here, too"
                                        : "Drop files or folders here");
  Layout();
}

wxCheckBox* EmptyHint::add_choice(wxSizer& sizer, const char* label, const char* name, const char* meaning, Turn turn) {
  auto* const box =
      new wxCheckBox(this, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
  box->SetToolTip(meaning);  // which screen readers read out with it
  box->Bind(wxEVT_CHECKBOX, [turn = std::move(turn)](const wxCommandEvent& event) { turn(event.IsChecked()); });
  texts_.push_back(new wxStaticText(this, wxID_ANY, meaning));
  sizer.Add(box, wxSizerFlags().CenterHorizontal().Border(wxTOP, scaled(*this, 24)));
  sizer.Add(texts_.back(), wxSizerFlags().CenterHorizontal().Border(wxTOP, scaled(*this, 4)));
  return box;
}

}  // namespace quorvel::ui
