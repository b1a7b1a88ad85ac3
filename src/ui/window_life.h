#pragma once

#include <wx/frame.h>
#include <wx/timer.h>

#include <functional>
#include <memory>
#include <string>

#include "ui/call_stack.h"
#include "ui/desktop.h"

namespace quorvel::ui {

/// How the window is hidden, comes back, and ends. Minimised, it lives in the tray, or in the task bar where there is
/// none. It ends when everything that needs it has come back.
class WindowLife {
 public:
  struct Hooks {
    std::function<bool()> may_close;   // false when a pass is running, which then ends at its next stage
    std::function<void()> stop;        // a transfer or a copy is abandoned
    std::function<bool()> stays_open;  // when it was to close by itself
    std::function<void()> on_unload;   // called once, when the window really goes away
  };

  WindowLife(wxFrame& frame, CallStack& stack);
  ~WindowLife();
  WindowLife(const WindowLife&) = delete;
  WindowLife& operator=(const WindowLife&) = delete;

  void attach(Hooks hooks) { hooks_ = std::move(hooks); }

  void minimise();
  /// Shows the window, in front of all others, with the dialog that is open.
  void restore();
  /// Minimises the window, or restores it when it is minimised.
  void toggle();

  void add_tray_icon(const std::string& tip);
  void remove_tray_icon() { tray_icon_.reset(); }
  /// From now on clicks on the icon count, while no dialog is open.
  void accept_tray_clicks() { tray_clicks_count_ = true; }
  void toggle_from_tray();
  /// Shows over the icon how far something is; with an empty text, only the program's name.
  void show_progress(const std::string& text);
  const std::string& progress() const { return progress_; }

  /// Whether the window, or a dialog over it, is what the user works with.
  bool is_in_front() const;
  /// Tells something on the desktop, unless the window is in front; a click there brings it up.
  void notify(const std::string& text);
  /// The menu of the tray icon, to be deleted by whoever shows it; null while clicks there do not count.
  wxMenu* open_tray_menu();

  /// As the user closes the window; with a dialog open, once that has come back.
  void close();
  /// Ends the window whatever is going on, and abandons what is being copied.
  void unload();
  bool is_unloading() const { return unloading_; }

  /// Whether the icon is in a tray; tests put their own in its place.
  std::function<bool()> lives_in_tray = [this] { return tray_icon_ != nullptr && tray_icon_->is_in(); };

 private:
  void on_close(wxCloseEvent& event);
  void on_iconize(wxIconizeEvent& event);
  void on_query_end_session(wxCloseEvent& event);
  void on_end_session(wxCloseEvent&) { unload(); }
  void on_tray_watch(wxTimerEvent& event);
  void begin_unload();
  void stack_is_empty();
  void finish_unload();

  wxFrame& frame_;
  CallStack& stack_;
  Hooks hooks_{[] { return true; }, [] {}, [] { return false; }, [] {}};
  std::unique_ptr<TrayIcon> tray_icon_;
  std::string progress_;  // over it
  wxTimer tray_watch_;    // while the window is minimised
  bool tray_clicks_count_ = false;
  bool minimised_ = false;
  bool close_when_empty_ = false;
  bool unloading_ = false;
  bool unloaded_ = false;
};

}  // namespace quorvel::ui
