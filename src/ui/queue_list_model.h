#pragma once

#include <string>
#include <vector>

#include "platform/user_interface.h"

namespace quorvel::ui {

/// What the rows of the queue list say. Counted from 1, as the queue is.
class QueueListModel {
 public:
  enum Column { Filename, NewName, Status };

  int count() const { return static_cast<int>(rows_.size()); }
  bool holds(int index) const { return index >= 1 && index <= count(); }

  void add(const std::string& filename);

  /// Throws Failure when there is no such row.
  void update(int index, const RowUpdate& update);

  /// What is shown behind the status until the row's next update, such as a percentage; false when it is there already
  /// or there is no such row.
  bool set_progress(int index, const std::string& progress);

  /// `index` is one that the model holds, in these two.
  std::string text(int index, int column) const;
  RowUpdate::Icon icon(int index) const { return at(index).icon; }

 private:
  struct Row {
    std::string filename, new_name, status, progress;
    RowUpdate::Icon icon = RowUpdate::WaitingIcon;
  };

  const Row& at(int index) const { return rows_.at(static_cast<std::size_t>(index) - 1); }

  std::vector<Row> rows_;
};

}  // namespace quorvel::ui
