#pragma once

#include <wx/frame.h>
#include <wx/menu.h>

#include <functional>
#include <memory>
#include <string>

/// What differs between desktops.
namespace quorvel::ui {

/// The icon in the tray, which comes by itself whenever a tray does. What it does is the window's.
class TrayIcon {
 public:
  struct Actions {
    std::function<void()> toggle;         // a double-click
    std::function<void()> show;           // a click on what notify() has shown
    std::function<wxMenu*()> menu;        // a right click: a new menu, or null for none
    std::function<void(wxMenu&)> pop_up;  // shows that menu and comes back, where the toolkit does not do it itself
  };

  /// `window` outlives it and is sent the commands of the menu.
  TrayIcon(wxFrame& window, const std::string& tip, Actions actions);
  /// Takes the icon away, even in the middle of an event of its own.
  ~TrayIcon();
  TrayIcon(const TrayIcon&) = delete;
  TrayIcon& operator=(const TrayIcon&) = delete;

  /// Whether there is a tray and it has taken the icon.
  bool is_in() const;

  void set_tip(const std::string& tip);

  /// Shows a text in the desktop's way, in place of the one before. Does not wait for the desktop, and does nothing
  /// where that has no way.
  void notify(const std::string& title, const std::string& text);

 private:
  class Icon;
  std::shared_ptr<Icon> icon_;
};

/// Shows a text before there is any window: on standard output, or in a message where a program of the desktop has
/// none.
void tell(const std::string& text);

/// Brings the window, with the dialog that it waits for, in front of those of other programs.
void bring_to_front(wxFrame& window);

/// What screen readers call a control that has no label.
void set_spoken_name(wxWindow& control, const char* name);

/// Has screen readers say a text that has come up in the control.
void announce(wxWindow& control, const std::string& text);

/// What fits the names of files of this type, in capitals too, where files are picked.
std::string file_pattern(const std::string& type);

/// Cancels the dialogs that the system shows for this program by itself: where it picks files or asks about them. They
/// close as soon as their own event loops come to it. False when there is none.
bool cancel_system_dialogs();

}  // namespace quorvel::ui
