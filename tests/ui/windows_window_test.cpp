// What only Windows sends to a window, and asks of one.
#include <wx/listctrl.h>
#include <wx/msw/private.h>

#include <commctrl.h>
#include <shellapi.h>

#include "platform/windows/copy_data_channel.h"
#include "platform/windows/wide.h"
#include "test_window.h"

namespace quorvel::testing {
namespace {

/// Stands where the shell looks for its tray, and tells what the icon's record said. The form in which the record gets
/// there is Wine's.
class Tray {
 public:
  Tray() {
    WNDCLASSW type{};
    type.lpfnWndProc = procedure;
    type.hInstance = GetModuleHandleW(nullptr);
    type.lpszClassName = L"Shell_TrayWnd";
    RegisterClassW(&type);
    window_ = CreateWindowExW(WS_EX_TOPMOST, type.lpszClassName, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                              type.hInstance, nullptr);
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  }
  ~Tray() { DestroyWindow(window_); }
  Tray(const Tray&) = delete;
  Tray& operator=(const Tray&) = delete;

  std::vector<std::string> calls;  // "message window icon flags callback tip"

 private:
  struct Record {
    LONG window;
    UINT icon, flags, callback;
    WCHAR tip[128];
  };

  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    auto* const self = reinterpret_cast<Tray*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message != WM_COPYDATA || self == nullptr) return DefWindowProcW(window, message, first, second);
    const auto& data = *reinterpret_cast<const COPYDATASTRUCT*>(second);
    const auto& record = *static_cast<const Record*>(data.lpData);
    std::string call = std::to_string(data.dwData);
    for (const long number : {record.window, static_cast<long>(record.icon)}) call += " " + std::to_string(number);
    if (data.dwData != NIM_DELETE) {
      call += " " + std::to_string(record.flags) + " " + std::to_string(record.callback) + " " + to_utf8(record.tip);
    }
    self->calls.push_back(call);
    return TRUE;
  }

  HWND window_ = nullptr;
};

class OnWindows : public TestWindow {
 protected:
  HWND window() const { return GetHwndOf(frame); }
  LRESULT send(UINT message, WPARAM first, LPARAM second) const {
    return SendMessageW(window(), message, first, second);
  }
  void click_tray(UINT event) const { send(WM_MOUSEMOVE, 1, static_cast<LPARAM>(event)); }
  /// As the updater does it.
  void send_close_message() const {
    char text[] = "QV|UD|";
    COPYDATASTRUCT record{3, sizeof text, text};
    send(WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record));
  }
  void start_with_channel() {
    start();
    channel_.receive([this](const std::string& text) { startup->handle_message(text); });
  }

 private:
  CopyDataChannel channel_{"Quorvel 3.4", "QuorvelWindowTest"};
};

TEST_F(OnWindows, TheTrayIconComesBackWithTheTrayAndGoesWithTheWindow) {
  Tray tray;
  start();
  const std::string icon = std::to_string(HandleToLong(window())) + " 1";
  const std::string added = "0 " + icon + " 7 512 Quorvel";
  EXPECT_EQ(tray.calls, std::vector{added});
  send(RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_EQ(tray.calls, (std::vector{added, added}));
  frame->Close();
  wait_for_the_end();
  EXPECT_EQ(tray.calls.back(), "2 " + icon);
}

TEST_F(OnWindows, ClicksOnTheTrayIconCountOnlyWithoutADialog) {
  Tray tray;
  start();
  std::string menus;
  frame->stack().show_menu = [&](wxWindow&, wxMenu& menu, const wxPoint&) { menus += captions(menu) + ";"; };
  const auto click_both = [&] { click_tray(WM_LBUTTONDBLCLK), click_tray(WM_RBUTTONUP); };
  click_both();
  EXPECT_FALSE(frame->IsShown());
  click_both();
  EXPECT_TRUE(frame->IsShown());
  click_tray(WM_LBUTTONUP), click_tray(WM_MOUSEMOVE);
  on_dialog([&](wxDialog& dialog) {
    click_both();
    press(dialog, "OK");
  });
  command(ui::mnuAbout);
  EXPECT_TRUE(frame->IsShown());
  EXPECT_EQ(menus, "Show|-|Exit;Hide|-|Exit;");
}

TEST_F(OnWindows, TheWindowHasOneSizeAndItsListsSelectWholeRows) {
  start();
  MINMAXINFO info{};
  send(WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&info));
  RECT area;
  GetWindowRect(window(), &area);
  const auto size = [](const POINT& of) { return std::to_string(of.x) + "x" + std::to_string(of.y); };
  const std::string real = size({area.right - area.left, area.bottom - area.top});
  EXPECT_EQ(size(info.ptMinTrackSize) + " " + size(info.ptMaxTrackSize), real + " " + real);
  for (const char* const name : {"ListView1", "ListView2", "ListView3"}) {
    const HWND list = GetHwndOf(&find<wxListCtrl>(*frame, name));
    EXPECT_TRUE(ListView_GetExtendedListViewStyle(list) & LVS_EX_FULLROWSELECT) << name;
  }
}

TEST_F(OnWindows, TheUpdatersMessageEndsAPass) {
  start_with_channel();
  drop({file("harbour.lights.s01e01.avi")});
  in_the_pass([this] { send_close_message(); });
  run_pass();
  wait_for_the_end();
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
}

TEST_F(OnWindows, TheUpdatersMessageClosesTheProgramsDialogsAndTheSystems) {
  for (const int dialog : {static_cast<int>(ui::mnuPrefs), static_cast<int>(ui::mnuOpen)}) {
    start_with_channel();
    on_dialog([this](wxDialog&) { send_close_message(); });
    command(dialog);
    wait_for_the_end();
  }
}

}  // namespace
}  // namespace quorvel::testing
