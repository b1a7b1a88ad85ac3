#pragma once

#include <wx/dialog.h>
#include <wx/timer.h>

#include <functional>

namespace quorvel::ui {

/// Fills a dialog a moment after it has been shown: by then it is laid out, and texts can be measured and scrolled.
class FirstTick : public wxTimer {
 public:
  FirstTick(wxDialog& dialog, std::function<void()> fill) : fill_(std::move(fill)) {
    dialog.Bind(wxEVT_INIT_DIALOG, [this](wxInitDialogEvent& event) {
      event.Skip();
      StartOnce(1);
    });
  }

  void Notify() override { fill_(); }

 private:
  std::function<void()> fill_;
};

}  // namespace quorvel::ui
