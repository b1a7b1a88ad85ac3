#pragma once

#include <wx/button.h>
#include <wx/panel.h>

#include "ui/rule_list.h"

namespace quorvel::ui {

/// A tab with a list of rules and the buttons that order and add them.
struct RulePage {
  /// The names of the list and of the three buttons.
  struct Names {
    const char *list, *up, *down, *add;
  };

  RulePage(wxWindow* parent, const Names& names, std::vector<RuleColumn> columns);

  wxPanel* panel;
  RuleList* list;
  wxButton *up, *down, *add;
};

}  // namespace quorvel::ui
