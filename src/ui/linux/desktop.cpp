#include "ui/desktop.h"

#include <wx/taskbar.h>

#include "platform/console.h"
#include "ui/icons.h"
#include "ui/text.h"

namespace quorvel::ui {

class TrayIcon::Icon : public wxTaskBarIcon {
 public:
  Icon(wxFrame& window, const std::string& tip, Actions actions) : actions_(std::move(actions)) {
    SetIcon(icons::tray(), to_wx(tip));
    Bind(wxEVT_TASKBAR_LEFT_DCLICK, [this](wxTaskBarIconEvent&) { actions_.toggle(); });
    Bind(wxEVT_MENU, [&window](wxCommandEvent& event) { window.ProcessWindowEvent(event); });
  }

 private:
  wxMenu* CreatePopupMenu() override { return actions_.menu(); }

  const Actions actions_;
};

TrayIcon::TrayIcon(wxFrame& window, const std::string& tip, Actions actions)
    : icon_(new Icon(window, tip, std::move(actions)), [](Icon* icon) {
        icon->RemoveIcon();
        icon->Destroy();  // later: an event of its own may have led here
      }) {}

TrayIcon::~TrayIcon() = default;

bool TrayIcon::is_available() {
  return wxTaskBarIcon::IsAvailable();
}

bool TrayIcon::is_in() const {
  return true;
}

void tell(const std::string& text) {
  console::write_out(text);
}

void bring_to_front(wxFrame& window) {
  window.Raise();
}

bool cancel_system_dialogs() {
  return false;  // the toolkit runs them all
}

}  // namespace quorvel::ui
