#pragma once

#include <wx/panel.h>
#include <wx/stattext.h>

#include <functional>
#include <string>

namespace quorvel::ui {

/// A strip below the queue list: what there is to review, and the way there.
class ReviewStrip : public wxPanel {
 public:
  /// Nothing is seen of it before tell().
  ReviewStrip(wxWindow* parent, const std::function<void()>& open);

  /// Without a text it goes.
  void tell(const std::string& text);

 private:
  wxStaticText* text_;
};

}  // namespace quorvel::ui
