#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>
#include <wx/window.h>

/// The program's own pictures, drawn for any resolution.
namespace quorvel::ui::icons {

wxIconBundle application();
wxBitmapBundle tray();

// As large as the letters in `window` want them.

wxBitmapBundle about(const wxWindow& window);

/// The pictures of the queue list's rows, in the order of RowUpdate::Icon. Their shapes differ, not only their colours.
wxVector<wxBitmapBundle> rows(const wxWindow& window);

}  // namespace quorvel::ui::icons
