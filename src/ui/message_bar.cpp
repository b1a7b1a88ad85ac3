#include "ui/message_bar.h"

#include <wx/button.h>

#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {

MessageBar::MessageBar(wxWindow* parent, wxWindow& neighbour)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL | wxBORDER_THEME, "message_bar"),
      neighbour_(neighbour),
      text_(new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_ELLIPSIZE_END)),
      buttons_(new wxBoxSizer(wxHORIZONTAL)) {
  auto* const sizer = new wxBoxSizer(wxHORIZONTAL);
  const wxSizerFlags part = wxSizerFlags().CenterVertical().Border(wxALL, scaled(*this, 6));
  sizer->Add(text_, wxSizerFlags(part).Proportion(1));
  sizer->Add(buttons_, part);
  SetSizer(sizer);
  Hide();
  Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
    if (event.GetKeyCode() != WXK_ESCAPE) return event.Skip();
    close();
  });
}

void MessageBar::add(const Button& button) {
  auto* const made = new wxButton(this, wxID_ANY, to_wx(button.label));
  made->Bind(wxEVT_BUTTON, [this, press = button.press](wxCommandEvent&) {
    close();
    CallAfter(press);  // which may show something else, and take this button away
  });
  buttons_->Add(made, wxSizerFlags().Border(wxLEFT, scaled(*this, 4)));
}

void MessageBar::show(const std::string& text, const std::vector<Button>& buttons) {
  close();
  text_->SetLabelText(to_wx(text));
  text_->SetToolTip(to_wx(text));
  buttons_->Clear(true);
  for (const Button& button : buttons) add(button);
  add({"&Close", [] {}});
  Show();
  MoveAfterInTabOrder(&neighbour_);  // the toolkit has left out what could not take the keyboard when it was made
  GetParent()->Layout();
}

void MessageBar::close() {
  if (!IsShown()) return;
  if (wxWindow* const focus = FindFocus(); focus != nullptr && IsDescendant(focus)) neighbour_.SetFocus();
  Hide();
  GetParent()->Layout();
}

}  // namespace quorvel::ui
