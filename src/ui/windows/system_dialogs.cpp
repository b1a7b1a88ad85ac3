#include "ui/system_dialogs.h"

#include <wx/msw/private.h>

namespace quorvel::ui {
namespace {

/// The toolkit's own dialogs are of the same class, but it knows them.
BOOL CALLBACK cancel(HWND window, LPARAM found) {
  if (wxGetWindowClass(window) == "#32770" && IsWindowVisible(window) && wxFindWinFromHandle(window) == nullptr) {
    PostMessageW(window, WM_COMMAND, IDCANCEL, 0);
    *reinterpret_cast<bool*>(found) = true;
  }
  return TRUE;
}

}  // namespace

bool cancel_system_dialogs() {
  bool found = false;
  EnumThreadWindows(GetCurrentThreadId(), cancel, reinterpret_cast<LPARAM>(&found));
  return found;
}

}  // namespace quorvel::ui
