#pragma once

#include <wx/checkbox.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <functional>
#include <vector>

namespace quorvel::ui {

/// What lies over the queue's list while there is nothing in it: what to do, and in which way that is to be done.
class EmptyHint : public wxPanel {
 public:
  using Turn = std::function<void(bool)>;

  /// Each is called when the user ticks or clears its box.
  EmptyHint(wxWindow* parent, Turn turn_exact_names, Turn turn_review_first);

  void show(bool exact_names, bool review_first, bool watching);

 private:
  wxCheckBox* add_choice(wxSizer& sizer, const char* label, const char* name, const char* meaning, Turn turn);

  wxCheckBox *exact_names_ = nullptr, *review_first_ = nullptr;
  std::vector<wxStaticText*> texts_;
};

}  // namespace quorvel::ui
