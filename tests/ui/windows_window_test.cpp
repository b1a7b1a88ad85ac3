// What only Windows sends to a window.
#include <wx/msw/private.h>

// After the system's, which it needs.
#include <shellapi.h>

#include "test_window.h"

namespace quorvel::testing {

TEST_F(TestWindow, TheTrayIconAnswersClicksAndTheUpdatersMessageClosesDialogsTheSystemsToo) {
  const auto to_window = system_instance_channel("QuorvelWindowTest", "Quorvel 3.4");
  for (const int dialog : {static_cast<int>(ui::mnuPrefs), static_cast<int>(ui::mnuOpen)}) {
    start();
    to_window->receive([this](const std::string& text) { startup->handle_message(text); });
    const HWND window = GetHwndOf(frame);
    std::string seen;
    frame->stack().show_menu = [&](wxWindow&, wxMenu& menu, const wxPoint&) { seen += captions(menu); };
    for (const LPARAM click : {WM_RBUTTONUP, WM_LBUTTONUP}) SendMessageW(window, WM_MOUSEMOVE, 1, click);
    EXPECT_EQ(seen, "Hide|-|Exit");
    frame->Hide();
    frame->life().notify("1 renamed");
    SendMessageW(window, WM_MOUSEMOVE, 1, NIN_BALLOONUSERCLICK);
    EXPECT_TRUE(frame->IsShown());
    on_dialog([&](wxDialog&) {  // as the updater does it
      char text[] = "QV|UD|";
      COPYDATASTRUCT record{3, sizeof text, text};
      SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record));
    });
    command(dialog);
    wait_for_the_end();
  }
}

}  // namespace quorvel::testing
