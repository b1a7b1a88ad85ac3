#pragma once

#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/textctrl.h>

#include <functional>

#include "naming/tokens.h"
#include "rules/presets.h"
#include "ui/call_stack.h"

namespace quorvel::ui {

/// Buttons below a box for a mask or a folder, with menus: the tokens, which come where the caret is, and the presets.
class MaskTools : public wxPanel {
 public:
  /// `on_preset` is called with the one that the user has chosen.
  MaskTools(wxTextCtrl& box, bool in_folder, CallStack& stack, std::function<void(const Preset&)> on_preset);

 private:
  void add_button(const char* label, const char* name, void (MaskTools::*fill)(wxMenu&), CallStack& stack);
  void fill_tokens(wxMenu& menu);
  void fill_presets(wxMenu& menu);
  void add_tokens(wxMenu& menu, TokenKind kind);
  void add(wxMenu& menu, const wxString& label, const std::function<void()>& choose);

  void insert(const Token& token);
  void insert_braces();
  /// Gives the keyboard back to the box, with the caret there.
  void go_on_at(long place);

  wxTextCtrl& box_;
  const bool in_folder_;
  const std::function<void(const Preset&)> on_preset_;
  std::vector<std::function<void()>> choices_;  // of the menu that is open
  std::size_t chosen_ = 0;
};

}  // namespace quorvel::ui
