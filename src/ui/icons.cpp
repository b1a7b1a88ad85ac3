#include "ui/icons.h"

#include "ui/icon_data.h"
#include "ui/size.h"

namespace quorvel::ui::icons {
namespace {

const wxSize row_size(16, 16);
const wxSize about_size(64, 64);

/// The bundle itself follows the display.
wxSize scaled_for_bundle(const wxWindow& window, const wxSize& size) {
  return window.ToDIP(scaled(window, size));
}

}  // namespace

wxIconBundle application() {
  const wxBitmapBundle drawing = wxBitmapBundle::FromSVG(icon_data::application, about_size);
  wxIconBundle bundle;
  for (const int size : {16, 24, 32, 48, 64, 128}) {
    wxIcon icon;
    icon.CopyFromBitmap(drawing.GetBitmap(wxSize(size, size)));
    bundle.AddIcon(icon);
  }
  return bundle;
}

wxBitmapBundle tray() {
  return wxBitmapBundle::FromSVG(icon_data::application, wxSize(22, 22));
}

wxBitmapBundle about(const wxWindow& window) {
  return wxBitmapBundle::FromSVG(icon_data::application, scaled_for_bundle(window, about_size));
}

wxVector<wxBitmapBundle> rows(const wxWindow& window) {
  wxVector<wxBitmapBundle> images;
  for (const char* const drawing : {icon_data::done, icon_data::failed, icon_data::waiting, icon_data::look}) {
    images.push_back(wxBitmapBundle::FromSVG(drawing, scaled_for_bundle(window, row_size)));
  }
  return images;
}

}  // namespace quorvel::ui::icons
