#include "queue/undo.h"

#include <algorithm>
#include <map>

#include "queue/stage.h"
#include "rules/action.h"

namespace quorvel {

Undo::Entry Undo::entry(const std::vector<int>& items) const {
  const auto is_done = [this](int index) { return queue_.at(index).state >= QueueState::Done; };
  const auto count = std::ranges::count_if(items, is_done);
  if (count == 0) return {"Undo Rename", false};
  if (count > 1) return {"Undo " + std::to_string(count) + " Files", true};
  const QueueItem& item = queue_.at(*std::ranges::find_if(items, is_done));
  const ActionWords* const words = words_of(item.action);
  return {words == nullptr ? "Undo Rename" : std::string(words->undo), true};
}

void Undo::run(std::vector<int> items, const std::function<bool(int)>& goes_on) {
  const History::Pass pass(history_);
  std::erase_if(items, [this](int index) { return !queue_.holds(index); });
  std::ranges::sort(items, std::greater(), [this](int index) { return queue_.at(index).past_id; });
  for (const int index : items) {
    if (goes_on && !goes_on(index)) return;
    take_back(index);
  }
}

void Undo::take_back(int index) {
  QueueItem& item = queue_.at(index);
  // A file at the destination of an item that is not done belongs to somebody else.
  if (item.state != QueueState::Done) return;
  const StageResult undone = run_stage(log_, "Error undoing: ", [&] { return undofileops(item); });
  if (undone) {
    set_undone(index);
  } else {
    log_.debug_log("Failed to undo file operation", LogLevel::Normal);
    item.error_text = "The file undo operation failed" + undone.line();
    item.state = QueueState::Failed;
    view_.update_lv(index);
  }
}

void Undo::show_undone(const std::vector<PastUndo::Outcome>& outcomes) {
  std::map<std::int64_t, const PastUndo::Outcome*> undone, redone;
  for (const PastUndo::Outcome& outcome : outcomes) {
    if (!outcome.trouble.empty()) continue;
    undone[outcome.operation.id] = redone[outcome.operation.undoes] = &outcome;
  }
  for (int index = 1; index <= queue_.count(); ++index) {
    const QueueItem& item = queue_.at(index);
    if (item.past_id == 0) continue;
    if (item.state != QueueState::Cancelled && undone.contains(item.past_id)) set_undone(index);
    const auto found = redone.find(item.past_id);
    if (found == redone.end() || job_of(item).destination() != found->second->to) continue;
    for (FileJob& companion : queue_.at(index).companions) {
      const auto along = redone.find(companion.past_id);
      if (along == redone.end()) continue;
      companion.past_id = along->second->by;
      companion.done_stamp = along->second->stamp;
    }
    set_redone(index, *found->second);
  }
}

void Undo::set_redone(int index, const PastUndo::Outcome& outcome) {
  QueueItem& item = queue_.at(index);
  item.state = QueueState::Done;
  item.error_text.clear();
  item.past_id = outcome.by;
  item.done_stamp = outcome.stamp;
  view_.update_lv(index);
}

void Undo::set_undone(int index) {
  queue_.at(index).state = QueueState::Cancelled;
  queue_.at(index).error_text = "The file operation has been undone";
  view_.update_lv(index);
}

bool Undo::undofileops(QueueItem& item) {
  const FileJobResult result = jobs_.undo(job_of(item));
  if (result.error_text) item.error_text = *result.error_text;
  return result.done;
}

}  // namespace quorvel
