#pragma once

#include <wx/panel.h>
#include <wx/textctrl.h>

#include <functional>
#include <string>

namespace quorvel::ui {

/// A box over a cell, to edit a text in. Enter, and going elsewhere, hand the text over; Escape gives it up. A text
/// that is refused stays in the box.
class CellEditor : public wxPanel {
 public:
  /// `neighbour` has the keyboard again when the box closes. The window is not seen before open().
  CellEditor(wxWindow* parent, wxWindow& neighbour);

  /// `accept` gives false for a text that is refused. An open box goes without a word.
  void open(const wxRect& area, const std::string& text, const char* spoken_name,
            std::function<bool(const std::string&)> accept);
  /// Follows its cell; an empty area leaves it where it is.
  void move(const wxRect& area);
  bool is_open() const { return IsShown(); }

  /// Hands the text over; false when it is refused. True when there is nothing open.
  bool commit();
  void close();

 private:
  void on_key(wxKeyEvent& event);

  wxWindow& neighbour_;
  wxTextCtrl* text_;
  std::function<bool(const std::string&)> accept_;
  std::string original_;
  bool is_committing_ = false;
};

}  // namespace quorvel::ui
