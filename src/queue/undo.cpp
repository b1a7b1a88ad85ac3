#include "queue/undo.h"

#include "queue/stage.h"
#include "rules/action.h"

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
  // A file at the destination of an item that is not done belongs to somebody else.
  if (item.state != QueueState::Done) return;
  const History::Pass pass(history_);
  const StageResult undone = run_stage(log_, "Error undoing: ", [&] { return undofileops(item); });
  if (undone) {
    item.state = QueueState::Cancelled;
    item.error_text = "The file operation has been undone";
  } else {
    log_.debug_log("Failed to undo file operation", LogLevel::Normal);
    item.error_text = "The file undo operation failed" + undone.line();
    item.state = QueueState::Failed;
  }
  view_.update_lv(index);
}

bool Undo::undofileops(QueueItem& item) {
  const FileJobResult result = jobs_.undo(job_of(item));
  if (result.error_text) item.error_text = *result.error_text;
  return result.done;
}

}  // namespace quorvel
