#pragma once

#include <wx/taskbar.h>

#include <functional>
#include <string>

namespace quorvel::ui {

/// The icon in the tray. What it does is the window's.
class TrayIcon : public wxTaskBarIcon {
 public:
  struct Actions {
    std::function<void()> toggle;                  // a double-click
    std::function<wxMenu*()> menu;                 // a right click: a new menu, or null for none
    std::function<void(wxCommandEvent&)> command;  // an entry of that menu
  };

  TrayIcon(const std::string& tip, Actions actions);

 private:
  wxMenu* CreatePopupMenu() override { return actions_.menu(); }

  const Actions actions_;
};

}  // namespace quorvel::ui
