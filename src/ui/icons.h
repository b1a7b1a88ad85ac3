#pragma once

#include <wx/bmpbndl.h>
#include <wx/iconbndl.h>

/// The program's own pictures, drawn for any resolution.
namespace quorvel::ui::icons {

wxIconBundle application();
wxBitmapBundle tray();
wxBitmapBundle about();

/// The pictures of the queue list's rows, in the order of RowUpdate::Icon. Their shapes differ, not only their colours.
wxVector<wxBitmapBundle> rows();

}  // namespace quorvel::ui::icons
