#include "ui/desktop.h"

#include <wx/access.h>
#include <wx/choice.h>
#include <wx/dataview.h>
#include <wx/msw/private.h>
#include <wx/settings.h>
#include <wx/textctrl.h>

#include <commctrl.h>
#include <shellapi.h>

#include <string_view>

#include "platform/console.h"
#include "platform/windows/wide.h"
#include "shell/version.h"
#include "ui/icons.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

/// Tells screen readers a name in place of the control's text, and all else as the system does.
class Named : public wxAccessible {
 public:
  Named(wxWindow& control, const char* name) : wxAccessible(&control), name_(name) {}
  wxAccStatus GetName(int child, wxString* name) override {
    if (child != wxACC_SELF) return wxACC_NOT_IMPLEMENTED;
    *name = name_;
    return wxACC_OK;
  }

 private:
  const wxString name_;
};

/// The toolkit's own dialogs are of the same class, but it knows them.
BOOL CALLBACK cancel(HWND window, LPARAM found) {
  if (wxGetWindowClass(window) == "#32770" && IsWindowVisible(window) && wxFindWinFromHandle(window) == nullptr) {
    PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    *reinterpret_cast<bool*>(found) = true;
  }
  return TRUE;
}

}  // namespace

/// The toolkit's own class would give the icon to a window of its own; here it belongs to the program's window, which
/// is what other programs look for.
class TrayIcon::Icon : public std::enable_shared_from_this<Icon> {
 public:
  Icon(wxFrame& window, const std::string& tip, Actions actions)
      : window_(GetHwndOf(&window)),
        icon_(icons::tray().GetIcon(wxSize(wxSystemSettings::GetMetric(wxSYS_SMALLICON_X, &window),
                                           wxSystemSettings::GetMetric(wxSYS_SMALLICON_Y, &window)))),
        tip_(tip),
        actions_(std::move(actions)) {
    SetWindowSubclass(window_, procedure, icon_id, reinterpret_cast<DWORD_PTR>(this));
    add();
  }
  ~Icon() {
    RemoveWindowSubclass(window_, procedure, icon_id);
    NOTIFYICONDATAA record = this->record();
    Shell_NotifyIconA(NIM_DELETE, &record);
  }
  Icon(const Icon&) = delete;
  Icon& operator=(const Icon&) = delete;

  bool is_in() const { return is_in_; }

  void set_tip(const std::string& tip) {
    tip_ = tip;
    NOTIFYICONDATAA record = this->record();
    Shell_NotifyIconA(NIM_MODIFY, &record);
  }

  void notify(const std::string& title, const std::string& text) {
    NOTIFYICONDATAW record{};
    record.cbSize = sizeof record;
    record.hWnd = window_;
    record.uID = icon_id;
    record.uFlags = NIF_INFO;
    record.dwInfoFlags = NIIF_RESPECT_QUIET_TIME;
    to_utf16_or_marks(title).copy(record.szInfoTitle, std::size(record.szInfoTitle) - 1);
    to_utf16_or_marks(text).copy(record.szInfo, std::size(record.szInfo) - 1);
    Shell_NotifyIconW(NIM_MODIFY, &record);
  }

 private:
  static constexpr UINT icon_id = 1;
  static constexpr UINT callback_message = WM_MOUSEMOVE;

  NOTIFYICONDATAA record() const {
    NOTIFYICONDATAA record{};
    record.cbSize = NOTIFYICONDATAA_V1_SIZE;
    record.hWnd = window_;
    record.uID = icon_id;
    record.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    record.uCallbackMessage = callback_message;
    record.hIcon = GetHiconOf(icon_);
    tip_.copy(record.szTip, tip_length - 1);
    return record;
  }

  void add() {
    NOTIFYICONDATAA record = this->record();
    // The tray also says so when only its looks have changed, and has the icon then.
    is_in_ = Shell_NotifyIconA(NIM_ADD, &record) || Shell_NotifyIconA(NIM_MODIFY, &record);
  }

  void on_mouse(LPARAM event) {
    if (event == WM_LBUTTONDBLCLK) actions_.toggle();
    if (event == WM_RBUTTONUP) pop_up();
    if (event == NIN_BALLOONUSERCLICK) actions_.show();
  }

  void pop_up() {
    const std::unique_ptr<wxMenu> menu(actions_.menu());
    if (menu == nullptr) return;
    SetForegroundWindow(window_);  // else a click elsewhere would not close the menu
    actions_.pop_up(*menu);
    PostMessageW(window_, WM_NULL, 0, 0);  // else the next menu would close at once
  }

  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second, UINT_PTR, DWORD_PTR data) {
    static const UINT taskbar_created = RegisterWindowMessageW(L"TaskbarCreated");
    const std::shared_ptr<Icon> self = reinterpret_cast<Icon*>(data)->shared_from_this();
    if (message == taskbar_created) {
      self->add();
      return 0;
    }
    if (message == callback_message && first == icon_id) self->on_mouse(second);
    return DefSubclassProc(window, message, first, second);
  }

  static constexpr std::size_t tip_length = 64;

  const HWND window_;
  const wxIcon icon_;
  std::string tip_;
  const Actions actions_;
  bool is_in_ = false;
};

TrayIcon::TrayIcon(wxFrame& window, const std::string& tip, Actions actions)
    : icon_(std::make_shared<Icon>(window, tip, std::move(actions))) {}

TrayIcon::~TrayIcon() = default;

bool TrayIcon::is_in() const {
  return icon_->is_in();
}

void TrayIcon::set_tip(const std::string& tip) {
  icon_->set_tip(tip);
}

void TrayIcon::notify(const std::string& title, const std::string& text) {
  icon_->notify(title, text);
}

void tell(const std::string& text) {
  const HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
  const DWORD type = GetFileType(out);
  DWORD mode = 0;
  // Of a program that was started by a click it leads nowhere.
  if (type == FILE_TYPE_DISK || type == FILE_TYPE_PIPE || GetConsoleMode(out, &mode)) return console::write_out(text);
  MessageBoxW(nullptr, to_utf16_or_marks(text).c_str(), to_utf16_or_marks(application_title).c_str(),
              MB_OK | MB_ICONINFORMATION);
}

void bring_to_front(wxFrame& window) {
  SetForegroundWindow(GetLastActivePopup(GetHwndOf(&window)));
}

void set_spoken_name(wxWindow& control, const char* name) {
  if (dynamic_cast<wxDataViewCtrl*>(&control) != nullptr) {
    control.SetName(name);  // which the toolkit tells
  } else if (dynamic_cast<wxTextCtrl*>(&control) != nullptr || dynamic_cast<wxChoice*>(&control) != nullptr) {
    control.SetAccessible(new Named(control, name));
  } else {
    control.SetLabel(name);  // lists do not show theirs
  }
}

void announce(wxWindow& control, const std::string& text) {
  control.SetLabel(to_wx(text));
  NotifyWinEvent(EVENT_SYSTEM_ALERT, GetHwndOf(&control), OBJID_CLIENT, CHILDID_SELF);
}

std::string file_pattern(const std::string& type) {
  return "*." + type;
}

bool cancel_system_dialogs() {
  bool found = false;
  EnumThreadWindows(GetCurrentThreadId(), cancel, reinterpret_cast<LPARAM>(&found));
  return found;
}

}  // namespace quorvel::ui
