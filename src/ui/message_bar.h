#pragma once

#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <functional>
#include <string>
#include <vector>

namespace quorvel::ui {

/// A strip that tells something without holding up the user: a text, and buttons for what can be done about it. Each
/// closes the strip, as Escape does while the keyboard is in it, and "Close", which is always there.
class MessageBar : public wxPanel {
 public:
  struct Button {
    const char* label;
    std::function<void()> press;
  };

  /// Nothing is seen of it before show(). It comes after `neighbour` for the keyboard, and gives it back to that.
  MessageBar(wxWindow* parent, wxWindow& neighbour);

  /// In place of what it shows.
  void show(const std::string& text, const std::vector<Button>& buttons);
  void close();

 private:
  void add(const Button& button);

  wxWindow& neighbour_;
  wxStaticText* text_;
  wxBoxSizer* buttons_;
};

}  // namespace quorvel::ui
