#include "ui/tray_icon.h"

#include "ui/icons.h"
#include "ui/text.h"

namespace quorvel::ui {

TrayIcon::TrayIcon(const std::string& tip, Actions actions) : actions_(std::move(actions)) {
  SetIcon(icons::tray(), to_wx(tip));
  Bind(wxEVT_TASKBAR_LEFT_DCLICK, [this](wxTaskBarIconEvent&) { actions_.toggle(); });
  Bind(wxEVT_MENU, [this](wxCommandEvent& event) { actions_.command(event); });
}

}  // namespace quorvel::ui
