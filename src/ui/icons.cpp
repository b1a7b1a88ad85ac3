#include "ui/icons.h"

#include "ui/icon_data.h"

namespace quorvel::ui::icons {
namespace {

const wxSize row_size(16, 16);
const wxSize about_size(64, 64);

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

wxBitmapBundle about() {
  return wxBitmapBundle::FromSVG(icon_data::application, about_size);
}

wxVector<wxBitmapBundle> rows() {
  wxVector<wxBitmapBundle> images;
  for (const char* const drawing : {icon_data::done, icon_data::failed, icon_data::waiting}) {
    images.push_back(wxBitmapBundle::FromSVG(drawing, row_size));
  }
  return images;
}

}  // namespace quorvel::ui::icons
