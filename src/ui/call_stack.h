#pragma once

#include <wx/dialog.h>
#include <wx/menu.h>
#include <wx/timer.h>

#include <functional>
#include <vector>

namespace quorvel::ui {

/// What of the window is at work further down the call stack: passes, dialogs, menus. Events run in the middle of
/// passes and file operations and inside of dialogs, so the order to end can arrive in any of them; nothing may be
/// destroyed before the last has come back.
class CallStack {
 public:
  /// Lives as long as something is at work that needs the window.
  class Use {
   public:
    explicit Use(CallStack& stack) : stack_(stack) { ++stack_.uses_; }
    ~Use() { stack_.leave(); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

   private:
    CallStack& stack_;
  };

  CallStack();

  bool empty() const { return uses_ == 0; }
  bool has_dialog() const { return !dialogs_.empty(); }

  /// The innermost open dialog; null when there is none.
  wxDialog* top_dialog() const { return dialogs_.empty() ? nullptr : dialogs_.back(); }

  /// What a dialog that `window` opens is to lie over.
  wxWindow* dialog_parent(wxWindow& window) const { return has_dialog() ? top_dialog() : wxGetTopLevelParent(&window); }

  /// What ShowModal gives; wxID_CANCEL at once, and nothing shown, after end_dialogs().
  int show_modal(wxDialog& dialog);

  /// Shows a menu and comes back when the user has chosen from it or closed it.
  void pop_up(wxWindow& over, wxMenu& menu, const wxPoint& at) {
    const Use use(*this);
    show_menu(over, menu, at);
  }

  /// Closes all open dialogs as if the user had, the system's too, each as soon as those above it have come back.
  void end_dialogs();

  /// Called each time when nothing is at work any more.
  std::function<void()> on_empty = [] {};

  /// Called for F1 in an open dialog.
  std::function<void()> on_help = [] {};

  /// What shows menus; tests put their own in its place.
  std::function<void(wxWindow& over, wxMenu& menu, const wxPoint& at)> show_menu =
      [](wxWindow& over, wxMenu& menu, const wxPoint& at) { over.PopupMenu(&menu, at); };

 private:
  void end_top_dialog();
  void leave() {
    if (--uses_ == 0) on_empty();
  }

  int uses_ = 0;
  bool ending_ = false;
  wxTimer retry_;
  std::vector<wxDialog*> dialogs_;
};

}  // namespace quorvel::ui
