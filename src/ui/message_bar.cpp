#include "ui/message_bar.h"

#include <wx/button.h>
#include <wx/textwrapper.h>
#include <wx/wupdlock.h>

#include "ui/desktop.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int gap = 6;
constexpr int max_lines = 4;

/// A text in lines of a width, the last one with dots where it has more of them than are shown.
class Lines : public wxTextWrapper {
 public:
  Lines(wxWindow& window, const wxString& text, int width) { Wrap(&window, text, width); }
  const wxString& text() const { return text_; }

 private:
  void OnOutputLine(const wxString& line) override {
    if (++count_ <= max_lines) text_ += line;
  }
  void OnNewLine() override {
    if (count_ < max_lines) text_ += "\n";
    if (count_ == max_lines) text_ += L"\u2026";
  }

  wxString text_;
  int count_ = 0;
};

}  // namespace

MessageBar::MessageBar(wxWindow* parent, wxWindow& neighbour, wxWindow& before, const char* name)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL | wxBORDER_THEME, name),
      neighbour_(neighbour),
      before_(before),
      text_(new wxStaticText(this, wxID_ANY, "")),
      buttons_(new wxBoxSizer(wxHORIZONTAL)) {
  auto* const sizer = new wxBoxSizer(wxHORIZONTAL);
  sizer->Add(text_);
  sizer->Add(buttons_);
  SetSizer(sizer);
  Hide();
  Bind(wxEVT_CHAR_HOOK, [this](wxKeyEvent& event) {
    if (event.GetKeyCode() != WXK_ESCAPE) return event.Skip();
    dismiss();
  });
}

void MessageBar::add(const Button& button) {
  auto* const made = new wxButton(this, wxID_ANY, to_wx(button.label));
  made->Bind(wxEVT_BUTTON, [this, press = button.press, closes = button.closes](wxCommandEvent&) {
    if (closes) close();
    CallAfter(press);  // which may show something else, and take this button away
  });
  buttons_->Add(made, wxSizerFlags().Border(wxLEFT, scaled(*this, gap)));
}

void MessageBar::arrange(const wxString& text) {
  const int border = scaled(*this, gap), buttons = buttons_->CalcMin().x;
  const int width = GetParent()->GetClientSize().x - 2 * wxSizerFlags::GetDefaultBorder() - 4 * border;
  const int beside = width - buttons - border;
  const bool fits = text_->GetTextExtent(text).x <= beside;
  text_->SetLabelText(fits ? text : Lines(*text_, text, width).text());
  text_->SetToolTip(text);

  auto& sizer = *static_cast<wxBoxSizer*>(GetSizer());
  sizer.Detach(text_);
  sizer.Detach(buttons_);
  sizer.SetOrientation(fits ? wxHORIZONTAL : wxVERTICAL);
  sizer.Add(text_, (fits ? wxSizerFlags(1).CenterVertical() : wxSizerFlags().Expand()).Border(wxALL, border));
  const wxSizerFlags flags = fits ? wxSizerFlags().CenterVertical() : wxSizerFlags().Right();
  sizer.Add(buttons_, wxSizerFlags(flags).Border(fits ? wxALL : wxALL & ~wxTOP, border));
}

void MessageBar::show(const std::string& text, const std::vector<Button>& buttons) {
  const wxWindowUpdateLocker no_flicker(GetParent());
  give_keyboard_back();
  buttons_->Clear(true);
  for (const Button& button : buttons) add(button);
  add({"&Close", [this] { on_dismissed(); }});
  arrange(to_wx(text));
  Show();
  MoveAfterInTabOrder(&before_);  // the toolkit has left out what could not take the keyboard when it was made
  InvalidateBestSize();
  GetParent()->Layout();
  announce(*this, text);
}

void MessageBar::give_keyboard_back() {
  if (wxWindow* const focus = FindFocus(); focus != nullptr && IsDescendant(focus)) {
    neighbour_.IsShown() ? neighbour_.SetFocus() : static_cast<void>(Navigate(wxNavigationKeyEvent::IsForward));
  }
}

void MessageBar::close() {
  if (!IsShown()) return;
  give_keyboard_back();
  Hide();
  GetParent()->Layout();
}

void MessageBar::dismiss() {
  close();
  on_dismissed();
}

}  // namespace quorvel::ui
