#pragma once

#include <wx/listctrl.h>

#include <string>
#include <vector>

#include "platform/user_interface.h"

namespace quorvel::ui {

struct RuleColumn {
  const char* title;
  int share;  // of the list's width, in percent
};

/// The list of the filter rules, or of the exceptions. Its rows count from 1, as the rules do.
class RuleList : public wxListCtrl {
 public:
  RuleList(wxWindow* parent, const wxString& name, std::vector<RuleColumn> columns);

  /// Puts these rows in place of those shown; the selection is gone.
  void show(const std::vector<ListRow>& rows);

  /// 0 when none is.
  int selected() const;
  /// The row, or the last one when there are fewer; does nothing with an empty list.
  void select(int index);

 private:
  void lay_out();

  const std::vector<RuleColumn> columns_;
  bool columns_are_set_ = false;
};

}  // namespace quorvel::ui
