#pragma once

#include <string>

#include "queue/pipeline.h"
#include "queue/queue_view.h"

namespace quorvel {

/// The undo command of the queue list.
class Undo {
 public:
  /// The menu entry as it is to be shown for an item.
  struct Entry {
    std::string caption;
    bool enabled = false;
    bool operator==(const Entry&) const = default;
  };

  Undo(Pipeline::Parts parts, Pipeline& pipeline, QueueView& view)
      : queue_(parts.queue), log_(parts.log), pipeline_(pipeline), view_(view) {}

  /// `index` is one that the queue holds.
  Entry entry(int index) const;

  /// Takes the item's file operation back and records the outcome in the item; does nothing for an index that the queue
  /// does not hold or an item that is not done.
  void run(int index);

 private:
  WorkQueue& queue_;
  Log& log_;
  Pipeline& pipeline_;
  QueueView& view_;
};

}  // namespace quorvel
