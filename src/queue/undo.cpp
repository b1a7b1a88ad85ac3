#include "queue/undo.h"

namespace quorvel {

Undo::Entry Undo::entry(int index) const {
  const QueueItem& item = queue_.at(index);
  if (item.state < QueueState::Done) return {"Undo Rename", false};
  switch (item.action) {
    case MoveAndRename:
      return {"Undo Move/Rename", true};
    case CopyAndRename:
      return {"Undo Copy/Rename", true};
    default:
      return {"Undo Rename", true};
  }
}

void Undo::run(int index) {
  if (!queue_.holds(index)) return;
  QueueItem& item = queue_.at(index);
  // What stands at the destination of an item that is not done is somebody else's file.
  if (item.state != QueueState::Done) return;
  if (pipeline_.undofileops(index)) {
    item.state = QueueState::Cancelled;
    item.error_text = "The file operation has been undone";
  } else {
    log_.debug_log("Failed to undo file operation", LogLevel::Normal);
    item.error_text = "The file undo operation failed";
    item.state = QueueState::Failed;
  }
  view_.update_lv(index);
}

}  // namespace quorvel
