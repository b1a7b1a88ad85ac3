#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "fileops/past_undo.h"
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

  /// For items that the queue holds.
  Entry entry(const std::vector<int>& items) const;

  /// Takes the item's file operation back and records the outcome in the item; does nothing for an index that the queue
  /// does not hold or an item that is not done.
  void run(int index) { run(std::vector{index}); }
  /// The same for several, the last operation first. `goes_on` is called before each with its
  /// index; false ends it.
  void run(std::vector<int> items, const std::function<bool(int)>& goes_on = {});

  /// These operations of the history were tried to be taken back: shows it in the items whose operations they were, or
  /// whose operations they had taken back.
  void show_undone(const std::vector<PastUndo::Outcome>& outcomes);

 private:
  void take_back(int index);
  bool undofileops(QueueItem& item);
  void set_undone(int index);
  void set_redone(int index, const PastUndo::Outcome& outcome);

  WorkQueue& queue_;
  FileJobs& jobs_;
  History& history_;
  Log& log_;
  QueueView& view_;
};

}  // namespace quorvel
