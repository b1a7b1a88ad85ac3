#pragma once

#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <functional>
#include <string>
#include <vector>

namespace quorvel::ui {

/// A strip that tells something without holding up the user: a text, and buttons for what can be done about it, below
/// the text where they have no room beside it. Escape closes it while the keyboard is in it, as does "Close", which is
/// always there.
class MessageBar : public wxPanel {
 public:
  struct Button {
    std::string label;
    std::function<void()> press;
    bool closes = true;
  };

  /// Nothing is seen of it before show(). It gives the keyboard back to `neighbour`, and comes after `before` for it.
  MessageBar(wxWindow* parent, wxWindow& neighbour, wxWindow& before, const char* name);

  /// In place of what it shows. Screen readers say it.
  void show(const std::string& text, const std::vector<Button>& buttons);
  void close();

  /// Called when the user has closed it by "Close" or Escape.
  std::function<void()> on_dismissed = [] {};

 private:
  void add(const Button& button);
  void give_keyboard_back();
  void arrange(const wxString& text);
  void dismiss();

  wxWindow &neighbour_, &before_;
  wxStaticText* text_;
  wxBoxSizer* buttons_;
};

}  // namespace quorvel::ui
