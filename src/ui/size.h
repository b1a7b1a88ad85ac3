#pragma once

#include <wx/frame.h>

namespace quorvel::ui {

/// A length that fits ordinary letters on an ordinary display, as `window` needs it with its letters on its display.
int scaled(const wxWindow& window, int length);
inline wxSize scaled(const wxWindow& window, const wxSize& size) {
  return {scaled(window, size.x), scaled(window, size.y)};
}

/// Makes a box for one line high enough for its letters: some toolkits only count on ordinary ones.
void fit_letters(wxWindow& box);

/// Gives the frame this client area, or what the display has room for, for good.
void fix_size(wxFrame& frame, const wxSize& client_area);

/// Fits such a frame to the display again when it becomes larger: what the system puts around it may be known only when
/// it has been shown.
void keep_on_display(wxFrame& frame);

}  // namespace quorvel::ui
