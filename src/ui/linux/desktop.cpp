#include "ui/desktop.h"

#include <wx/settings.h>
#include <wx/taskbar.h>

// After the toolkit's, whose names it would otherwise take.
#include <gtk/gtk.h>

#include <chrono>

#include "platform/console.h"
#include "ui/icons.h"
#include "ui/linux/notifications.h"
#include "ui/text.h"

namespace quorvel::ui {

class TrayIcon::Icon : public wxTaskBarIcon {
 public:
  Icon(wxFrame& window, const std::string& tip, Actions actions)
      : actions_(std::move(actions)), notifications_([this, &window](const std::string& token) {
          // Without it, a desktop may keep the window behind others.
          if (!token.empty()) gtk_window_set_startup_id(GTK_WINDOW(window.GetHandle()), token.c_str());
          actions_.show();
        }) {
    set_tip(tip);
    Bind(wxEVT_TASKBAR_LEFT_DOWN, &Icon::on_click, this);
    Bind(wxEVT_MENU, [&window](wxCommandEvent& event) { window.ProcessWindowEvent(event); });
  }

  void set_tip(const std::string& tip) { SetIcon(icons::tray(), to_wx(tip)); }
  Notifications& notifications() { return notifications_; }

 private:
  wxMenu* CreatePopupMenu() override { return actions_.menu(); }

  /// Here one click is enough, and who is used to two means the same.
  void on_click(wxTaskBarIconEvent&) {
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::milliseconds pause(wxSystemSettings::GetMetric(wxSYS_DCLICK_MSEC));
    if (now - std::exchange(last_click_, now) > pause) actions_.toggle();
  }

  const Actions actions_;
  Notifications notifications_;
  std::chrono::steady_clock::time_point last_click_;
};

TrayIcon::TrayIcon(wxFrame& window, const std::string& tip, Actions actions)
    : icon_(new Icon(window, tip, std::move(actions)), [](Icon* icon) {
        icon->RemoveIcon();
        icon->Destroy();  // later: an event of its own may have led here
      }) {}

TrayIcon::~TrayIcon() = default;

bool TrayIcon::is_in() const {
  return wxTaskBarIcon::IsAvailable();  // it goes into whatever tray comes
}

void TrayIcon::set_tip(const std::string& tip) {
  icon_->set_tip(tip);
}

void TrayIcon::notify(const std::string& title, const std::string& text) {
  icon_->notifications().show(title, text);
}

void tell(const std::string& text) {
  console::write_out(text);
}

void bring_to_front(wxFrame& window) {
  window.Raise();
}

void set_spoken_name(wxWindow& control, const char* name) {
  GtkWidget* widget = control.GetHandle();
  if (GTK_IS_SCROLLED_WINDOW(widget)) widget = gtk_bin_get_child(GTK_BIN(widget));
  atk_object_set_name(gtk_widget_get_accessible(widget), name);
}

void announce(wxWindow& control, const std::string& text) {
  AtkObject* const spoken = gtk_widget_get_accessible(control.GetHandle());
  atk_object_set_role(spoken, ATK_ROLE_NOTIFICATION);
  atk_object_set_name(spoken, text.c_str());
  atk_object_notify_state_change(spoken, ATK_STATE_SHOWING, TRUE);
}

std::string file_pattern(const std::string& type) {
  wxString pattern = "*.";
  for (const wxUniChar letter : to_wx(type)) {
    const auto capital = static_cast<wxChar>(wxToupper(letter));
    pattern += letter == capital ? wxString(letter) : wxString::Format("[%c%c]", wxChar(letter), capital);
  }
  return from_wx(pattern);
}

bool cancel_system_dialogs() {
  return false;  // the toolkit runs them all
}

}  // namespace quorvel::ui
