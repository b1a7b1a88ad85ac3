#pragma once

#include <wx/listctrl.h>
#include <wx/panel.h>

#include "ui/queue_list_model.h"

namespace quorvel::ui {

/// The list of queued files. It asks the model for what is in sight, so its length costs nothing.
class QueueList : public wxListCtrl {
 public:
  QueueList(wxWindow* parent, const QueueListModel& model);

  /// The model has a new last row. Both are seen as soon as events run.
  void row_added();
  /// Paints the row anew; brings it into view and makes it the selected one when asked to.
  void row_changed(int index, bool scroll_into_view, bool select);

  /// 0 when none is.
  int selected() const;

  bool hint_is_shown() const { return hint_->IsShown(); }

 private:
  wxString OnGetItemText(long row, long column) const override;
  int OnGetItemImage(long row) const override;
  void lay_out();
  void change_later();
  void change();

  const QueueListModel& model_;
  wxPanel* hint_;  // what to do, while there is nothing to show
  bool columns_are_set_ = false;
  bool changes_wait_ = false;
  int row_to_show_ = 0, row_to_select_ = 0;  // 0 for none
};

}  // namespace quorvel::ui
