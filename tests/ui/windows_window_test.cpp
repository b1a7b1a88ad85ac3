// What only Windows sends to a window, and asks of one.
#include <wx/msw/private.h>

#include <shellapi.h>

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
  LRESULT send(UINT message, WPARAM first, LPARAM second) const {
    return SendMessageW(GetHwndOf(frame), message, first, second);
  }
};

TEST_F(OnWindows, TheTrayIconAnswersClicksComesBackWithTheTrayAndGoesWithTheWindow) {
  Tray tray;
  start();
  std::string seen;
  frame->stack().show_menu = [&](wxWindow&, wxMenu& menu, const wxPoint&) { seen += captions(menu) + ";"; };
  const auto click = [&] {
    for (const LPARAM event : {WM_MOUSEMOVE, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_RBUTTONUP})
      send(WM_MOUSEMOVE, 1, event);
    seen += frame->IsShown() ? "shown;" : "hidden;";
  };
  click(), click();
  on_dialog([&](wxDialog& dialog) {
    click();
    press(dialog, "OK");
  });
  command(ui::mnuAbout);
  EXPECT_EQ(seen, "Show|-|Exit;hidden;Hide|-|Exit;shown;shown;");
  const std::string icon = std::to_string(HandleToLong(GetHwndOf(frame))) + " 1",
                    added = "0 " + icon + " 7 512 Quorvel";
  send(RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_EQ(tray.calls, (std::vector{added, added}));
  frame->Close();
  wait_for_the_end();
  EXPECT_EQ(tray.calls.back(), "2 " + icon);
}

TEST_F(OnWindows, TheUpdatersMessageClosesTheProgramsDialogsAndTheSystems) {
  const auto to_window = system_instance_channel("QuorvelWindowTest", "Quorvel 3.4");
  for (const int dialog : {static_cast<int>(ui::mnuPrefs), static_cast<int>(ui::mnuOpen)}) {
    start();
    to_window->receive([this](const std::string& text) { startup->handle_message(text); });
    on_dialog([this](wxDialog&) {  // as the updater does it
      char text[] = "QV|UD|";
      COPYDATASTRUCT record{3, sizeof text, text};
      send(WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record));
    });
    command(dialog);
    wait_for_the_end();
  }
}

}  // namespace
}  // namespace quorvel::testing
