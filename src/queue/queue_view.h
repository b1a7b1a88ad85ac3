#pragma once

#include "platform/user_interface.h"
#include "queue/work_queue.h"
#include "rules/filters.h"

namespace quorvel {

/// Shows the states of the queue's items.
class QueueView {
 public:
  QueueView(WorkQueue& queue, const FilterList& filters, UserInterface& ui)
      : queue_(queue), filters_(filters), ui_(ui) {}

  /// Brings the item's row up to date, selects it and lets pending events run. False when that fails on the way, for
  /// instance because the item's rule is gone; that is not reported, and the item is not touched.
  bool update_lv(int index);

 private:
  WorkQueue& queue_;
  const FilterList& filters_;
  UserInterface& ui_;
};

}  // namespace quorvel
