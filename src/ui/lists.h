#pragma once

#include <wx/listctrl.h>
#include <wx/panel.h>

#include <string>
#include <vector>

#include "platform/user_interface.h"

namespace quorvel::ui {

/// A list of the main window. Its rows count from 1, as what they show does.
class RowList : public wxListCtrl {
 public:
  RowList(wxWindow* parent, const char* name, long style, const std::vector<const char*>& titles);

  /// 0 when none is.
  int selected() const;
  /// The row, or the last one when there are fewer; does nothing with an empty list.
  void select(int index);

  /// The row that a context menu is for, 0 for the empty area; `at` becomes where the menu belongs.
  int menu_row(const wxContextMenuEvent& event, wxPoint& at) const;

 protected:
  /// The columns' widths in an area of this width; none while it is too narrow.
  virtual std::vector<int> widths(int area) const = 0;

 private:
  void lay_out();
  int row_at(const wxPoint& point) const;

  bool columns_are_set_ = false;
};

/// The list of queued files. The system asks it for what is in sight, so its length costs nothing.
class QueueList : public RowList {
 public:
  enum Column { Filename, NewName, Status };

  explicit QueueList(wxWindow* parent);

  // Changes are seen as soon as events run.

  void add_row(const std::string& filename);

  /// Throws Failure when there is no such row.
  void update_row(int index, const RowUpdate& update);

  /// What is shown after the status until the row's next update, such as a percentage. Ignored without such a row.
  void set_progress(int index, const std::string& progress);

  bool hint_is_shown() const { return hint_->IsShown(); }

 private:
  struct Row {
    std::string filename, new_name, status, progress;
    RowUpdate::Icon icon = RowUpdate::WaitingIcon;
  };

  bool holds(int index) const { return index >= 1 && index <= static_cast<int>(rows_.size()); }
  const Row& row(int index) const { return rows_[static_cast<std::size_t>(index) - 1]; }
  Row& row(int index) { return rows_[static_cast<std::size_t>(index) - 1]; }
  wxString OnGetItemText(long row, long column) const override;
  int OnGetItemImage(long row) const override;
  std::vector<int> widths(int area) const override;
  void show_changes_later();
  void show_changes();

  std::vector<Row> rows_;
  wxPanel* hint_;  // what to do, while there is nothing to show
  bool changes_wait_ = false;
  int row_to_show_ = 0, row_to_select_ = 0;  // 0 for none
};

struct RuleColumn {
  const char* title;
  int share;  // of the list's width, in percent
};

/// The list of the filter rules, or of the exceptions.
class RuleList : public RowList {
 public:
  RuleList(wxWindow* parent, const char* name, const std::vector<RuleColumn>& columns);

  /// Puts these rows in place of those shown; the selection is gone.
  void show(const std::vector<ListRow>& rows);

 private:
  std::vector<int> widths(int area) const override;

  std::vector<int> shares_;
};

}  // namespace quorvel::ui
