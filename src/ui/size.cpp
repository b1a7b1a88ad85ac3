#include "ui/size.h"

#include <wx/display.h>

#include <algorithm>

namespace quorvel::ui {
namespace {

constexpr int ordinary_letter_height = 17;

void fit_to_display(wxFrame& frame) {
  const wxRect room = wxDisplay(&frame).GetClientArea();
  const wxSize size = frame.GetSize();
  wxSize wanted = size;
  wanted.DecTo(room.GetSize());
  if (wanted != size) {
    frame.SetSizeHints(wxDefaultSize, wxDefaultSize);
    frame.SetClientSize(frame.GetClientSize() + wanted - size);
    frame.SetSizeHints(wanted, wanted);
  }
  if (!frame.IsIconized() && !room.Contains(frame.GetRect())) frame.CentreOnScreen();
}

}  // namespace

int scaled(const wxWindow& window, int length) {
  if (length <= 0) return length;  // the toolkit's own choice
  // Some desktops enlarge the letters alone, in place of all lengths.
  const auto letters = static_cast<double>(window.GetCharHeight()) / ordinary_letter_height;
  return std::max(window.FromDIP(length), static_cast<int>(length * letters));
}

void fit_letters(wxWindow& box) {
  const int height = std::max(box.GetBestSize().y, box.GetCharHeight() + scaled(box, 6));
  box.SetMinSize(wxSize(box.GetMinSize().x, height));
}

void fix_size(wxFrame& frame, const wxSize& client_area) {
  frame.SetSizeHints(wxDefaultSize, wxDefaultSize);
  frame.SetClientSize(scaled(frame, client_area));
  fit_to_display(frame);
  frame.SetSizeHints(frame.GetSize(), frame.GetSize());
  frame.SendSizeEvent();  // the contents may have come after the size
}

void keep_on_display(wxFrame& frame) {
  frame.Bind(wxEVT_SIZE, [&frame, largest = wxSize()](wxSizeEvent& event) mutable {
    event.Skip();
    const wxSize size = frame.GetSize();
    if (size.x <= largest.x && size.y <= largest.y) return;  // a system that insists on it is not asked for ever
    largest.IncTo(size);
    frame.CallAfter([&frame] { fit_to_display(frame); });
  });
}

}  // namespace quorvel::ui
