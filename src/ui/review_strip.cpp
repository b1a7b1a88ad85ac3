#include "ui/review_strip.h"

#include <wx/button.h>
#include <wx/sizer.h>

#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {

ReviewStrip::ReviewStrip(wxWindow* parent, const std::function<void()>& open)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL | wxBORDER_THEME, "review_strip"),
      text_(new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_ELLIPSIZE_END)) {
  auto* const button = new wxButton(this, wxID_ANY, "Re&view Now");
  button->Bind(wxEVT_BUTTON, [this, open](wxCommandEvent&) { CallAfter(open); });  // which hides the button
  auto* const sizer = new wxBoxSizer(wxHORIZONTAL);
  const wxSizerFlags part = wxSizerFlags().CenterVertical().Border(wxALL, scaled(*this, 6));
  sizer->Add(text_, wxSizerFlags(part).Proportion(1));
  sizer->Add(button, part);
  SetSizer(sizer);
  Hide();
}

void ReviewStrip::tell(const std::string& text) {
  text_->SetLabelText(to_wx(text));
  text_->SetToolTip(to_wx(text));
  if (IsShown() == !text.empty()) return;
  Show(!text.empty());
  GetParent()->Layout();
}

}  // namespace quorvel::ui
