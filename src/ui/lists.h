#pragma once

#include <wx/bmpbndl.h>
#include <wx/panel.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/user_interface.h"

namespace quorvel::ui {

/// A list: the system's own control, which screen readers know. It asks for the rows in sight, so
/// its length costs nothing. Rows count from 1, as what they show does.
class RowList : public wxPanel {
 public:
  struct Looks {
    const char *name, *spoken_name;
    std::vector<const char*> titles;
    wxVector<wxBitmapBundle> icons = {};  // of the first column's cells
    bool several = false;                 // whether more than one row can be selected
  };

  const std::vector<const char*>& titles() const { return titles_; }
  int count() const;
  virtual wxString cell(int row, int column) const = 0;
  /// 0 for the first one.
  virtual int icon(int /*row*/) const { return 0; }
  /// What is shown while the pointer rests on the row; empty for nothing.
  virtual std::string tip(int /*row*/) const { return {}; }

  /// The rows that are selected, from the top.
  std::vector<int> selection() const;
  /// The first of them; 0 when none is.
  int selected() const;
  /// The row alone, or the last one when there are fewer, and scrolls to it; does nothing with an empty list.
  void select(int row);
  /// Scrolls to the row when just one is selected.
  void scroll_to_selected();
  /// These rows, where there are so many, and no others.
  void select_all(const std::vector<int>& rows);
  /// Of the row, in this window; empty when it is out of sight.
  wxRect area_of(int row) const;

  /// The row that a context menu is for, 0 for the empty area; `at` becomes where the menu belongs.
  int menu_row(const wxContextMenuEvent& event, wxPoint& at) const;

  /// Called with the row for Enter and for the double-click.
  std::function<void(int)> on_activate = [](int) {};
  /// Called when another row, or none, is selected; perhaps also when nothing has changed.
  std::function<void()> on_select = [] {};
  /// Called when the rows have more or less room than before.
  std::function<void()> on_room = [] {};

 protected:
  RowList(wxWindow* parent, const Looks& looks);

  /// The columns' widths in an area of this width; none while it is too narrow.
  virtual std::vector<int> widths(int area) const = 0;

  void set_count(int count);
  /// Other rows are shown now; none is selected.
  void reset(int count);
  void repaint(int row);
  void scroll_to(int row);
  /// Selects the row alone, where it is.
  void mark(int row);
  void mark_also(int row);
  void unmark();

 private:
  class Control;

  /// Sets control_.
  wxWindow* make_control(const Looks& looks);
  void lay_out();
  int top_row() const;
  int row_at(const wxPoint& point) const;
  void set_widths(const std::vector<int>& widths);

  const std::vector<const char*> titles_;
  Control* control_ = nullptr;
  bool columns_are_set_ = false;
};

/// The list of queued files.
class QueueList : public RowList {
 public:
  enum Column { Filename, NewName, Status };

  explicit QueueList(wxWindow* parent);

  wxString cell(int row, int column) const override;
  int icon(int row) const override { return this->row(row).icon - RowUpdate::DoneIcon; }
  std::string tip(int row) const override { return tip_of(row); }

  /// Gives what tip() does.
  std::function<std::string(int)> tip_of = [](int) { return std::string(); };
  /// Called when changes have been shown.
  std::function<void()> on_change = [] {};
  /// Whether the row that is being selected is one that has changed, and not the user's choice.
  bool is_following() const { return is_following_; }

  // Changes are seen as soon as events run.

  void add_row(const std::string& filename);

  /// Throws Failure when there is no such row.
  void update_row(int index, const RowUpdate& update);

  /// What is shown after the status until the row's next update, such as a percentage. Ignored without such a row.
  void set_progress(int index, const std::string& progress);

  /// Puts `hint`, a child of this list, over its middle while there is nothing to show.
  void set_hint(wxWindow& hint);

 private:
  struct Row {
    std::string filename, new_name, status, progress;
    RowUpdate::Icon icon = RowUpdate::WaitingIcon;
  };

  bool holds(int index) const { return index >= 1 && index <= static_cast<int>(rows_.size()); }
  const Row& row(int index) const { return rows_[static_cast<std::size_t>(index) - 1]; }
  Row& row(int index) { return rows_[static_cast<std::size_t>(index) - 1]; }
  std::vector<int> widths(int area) const override;
  void show_changes_later();
  void changed_later(int index);
  void show_changes();
  void follow(int show, int select);

  std::vector<Row> rows_;
  wxWindow* hint_ = nullptr;
  bool changes_wait_ = false, is_following_ = false;
  std::vector<int> changed_rows_;
  int row_to_show_ = 0, row_to_select_ = 0;  // 0 for none
};

/// A list whose rows are handed over all at once: of the filter rules, of shows.
class PlainList : public RowList {
 public:
  /// `shares` are the columns' parts of the width, in percent.
  PlainList(wxWindow* parent, const Looks& looks, std::vector<int> shares)
      : RowList(parent, looks), shares_(std::move(shares)) {}

  /// Puts these rows in place of those shown; the selection is gone.
  void show(const std::vector<ListRow>& rows);

  wxString cell(int row, int column) const override;
  std::string tip(int row) const override;

 private:
  std::vector<int> widths(int area) const override;

  const std::vector<int> shares_;
  std::vector<ListRow> rows_;
};

}  // namespace quorvel::ui
