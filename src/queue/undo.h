#pragma once

#include <string>

#include "fileops/file_job.h"
#include "queue/queue_view.h"
#include "queue/work_queue.h"

namespace quorvel {

/// The undo command of the queue list.
class Undo {
 public:
  /// How the menu entry looks for an item.
  struct Entry {
    std::string caption;
    bool enabled = false;
    bool operator==(const Entry&) const = default;
  };

  Undo(WorkQueue& queue, FileJobs& jobs, History& history, Log& log, QueueView& view)
      : queue_(queue), jobs_(jobs), history_(history), log_(log), view_(view) {}

  /// `index` is one that the queue holds.
  Entry entry(int index) const;

  /// Takes the item's file operation back and records the outcome in the item; does nothing for an index that the queue
  /// does not hold or an item that is not done.
  void run(int index);

 private:
  bool undofileops(QueueItem& item);

  WorkQueue& queue_;
  FileJobs& jobs_;
  History& history_;
  Log& log_;
  QueueView& view_;
};

}  // namespace quorvel
