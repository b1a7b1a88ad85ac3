#pragma once

#include <wx/dataview.h>
#include <wx/panel.h>
#include <wx/timer.h>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ui/cell_editor.h"
#include "ui/review_model.h"

namespace quorvel::ui {

/// The tree of the review: keeps what the user has selected, closed and is editing while the rows change.
class ReviewTree : public wxPanel {
 public:
  struct Actions {
    std::function<void()> on_select;
    std::function<void(const std::vector<int>& items, bool on)> tick;
    /// For a file's row, by its own key, Enter or a double-click.
    std::function<void(int item, ReviewModel::Column)> edit;
    std::function<void(const wxPoint&)> open_menu;
    std::function<std::string(int item)> tip;
  };

  ReviewTree(wxWindow* parent, const ReviewSheet& sheet, Actions actions);

  /// Shows what the sheet has by now.
  void show(ReviewSheet::Filter filter);

  /// The files of the rows that are selected, those below a group as well, in the queue's order.
  std::vector<int> selection() const;
  /// The file whose row alone is selected; 0 for none.
  int selected_file() const;
  void select(const std::vector<int>& items);

  /// Lets the user edit a text in that cell; `accept` gives false for one that is refused.
  void edit(int item, ReviewModel::Column column, const std::string& text,
            std::function<bool(const std::string&)> accept);
  CellEditor& editor() { return *editor_; }
  /// Called when the editing has ended.
  std::function<void()> on_edited = [] {};

  wxDataViewCtrl& control() { return *control_; }
  ReviewModel& model() { return *model_; }

 private:
  void add_columns();
  void lay_out();
  void show_folders(bool on);
  void rebuild(const wxDataViewItem& top);
  wxDataViewItemArray selected_rows() const;
  void on_activated(const wxDataViewEvent& event);
  void on_context_menu(const wxContextMenuEvent& event);
  void on_key(wxKeyEvent& event);
  void on_motion(wxMouseEvent& event);
  void select_all();
  void tick_selected();
  void open_group(bool on);
  void choose(const wxDataViewItemArray& rows);
  wxRect area_of_editor() const;

  const Actions actions_;
  wxDataViewCtrl* control_;
  const wxObjectDataPtr<ReviewModel> model_;
  CellEditor* editor_;
  std::set<void*> closed_;      // the groups that the user has closed
  wxDataViewItemArray chosen_;  // the rows that he has selected; some may be gone for a while
  bool is_changing_ = false;    // by the program, not by the user
  bool columns_are_set_ = false;
  int tipped_ = 0;  // the item whose tooltip is set
  int edited_item_ = 0;
  ReviewModel::Column edited_column_ = ReviewModel::NewName;
  wxTimer follow_;  // while a cell is edited
};

}  // namespace quorvel::ui
