#include "ui/queue_list_model.h"

#include "text/failure.h"

namespace quorvel::ui {

void QueueListModel::add(const std::string& filename) {
  rows_.emplace_back().filename = filename;
}

void QueueListModel::update(int index, const RowUpdate& update) {
  if (!holds(index)) throw Failure("no such row");
  Row& row = rows_[static_cast<std::size_t>(index) - 1];
  row.progress.clear();
  if (update.icon) row.icon = *update.icon;
  if (update.new_name) row.new_name = *update.new_name;
  if (update.status) row.status = *update.status;
}

bool QueueListModel::set_progress(int index, const std::string& progress) {
  if (!holds(index)) return false;
  Row& row = rows_[static_cast<std::size_t>(index) - 1];
  if (row.progress == progress) return false;
  row.progress = progress;
  return true;
}

std::string QueueListModel::text(int index, int column) const {
  const Row& row = at(index);
  switch (column) {
    case Filename:
      return row.filename;
    case NewName:
      return row.new_name;
    default:
      return row.progress.empty() ? row.status : row.status + " " + row.progress;
  }
}

}  // namespace quorvel::ui
