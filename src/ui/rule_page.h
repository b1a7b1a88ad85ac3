#pragma once

#include <wx/button.h>
#include <wx/menu.h>
#include <wx/panel.h>

#include <functional>

#include "ui/lists.h"

namespace quorvel::ui {

/// A tab with a list of rules, the buttons that order and add them, the menus over the list, and its keys: Delete
/// removes the selected rule; F2, Enter and the double-click edit it.
class RulePage : public wxPanel {
 public:
  struct Looks {
    RowList::Looks list;
    std::vector<int> shares;      // of its columns
    const char *up, *down, *add;  // the buttons' names
    wxMenu &on_rule, &on_empty_area;
  };
  /// What is done with the rules, which count from 1. The first two say whether the file has been written, and the
  /// list shown anew, or the user has heard why not.
  struct Actions {
    std::function<bool(int)> remove;
    std::function<bool(int, int)> exchange;
    std::function<void()> add;
    std::function<void(int)> edit;                      // empty where rules cannot be edited
    std::function<void(const std::string&)> not_saved;  // tells the user that this did not work: "move", "remove"
    std::function<void(wxWindow& over, wxMenu& menu, const wxPoint& at)> pop_up;
  };

  RulePage(wxWindow* parent, const Looks& looks, Actions actions);

  PlainList& list() { return *list_; }

  // What the buttons, keys and menus do with the selected rule; nothing when there is none.

  void edit();
  void remove();
  void move(int by);

 private:
  void on_key(wxKeyEvent& event);

  const Actions actions_;
  PlainList* list_;
};

}  // namespace quorvel::ui
