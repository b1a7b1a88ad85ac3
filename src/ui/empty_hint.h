#pragma once

#include <wx/checkbox.h>
#include <wx/panel.h>

#include <functional>

namespace quorvel::ui {

/// What lies over the queue's list while there is nothing in it: what to do, and the choice of the way in which it is
/// done.
class EmptyHint : public wxPanel {
 public:
  /// `turn_exact_names` is called when the user ticks or clears the box.
  EmptyHint(wxWindow* parent, std::function<void(bool)> turn_exact_names);

  void show_exact_names(bool on) { exact_names_->SetValue(on); }

 private:
  wxCheckBox* exact_names_;
};

}  // namespace quorvel::ui
