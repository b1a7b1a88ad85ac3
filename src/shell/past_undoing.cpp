#include "shell/past_undoing.h"

#include <set>

#include "shell/past_text.h"

namespace quorvel {

PastUndoing::Result PastUndoing::undo(const std::vector<PastOperation>& operations,
                                      const std::function<bool(int place, int count)>& goes_on) {
  // Another copy of the program may have been at it since they were read.
  std::vector<PastOperation> now;
  for (const PastOperation& operation : operations) {
    const std::optional<PastOperation> found = session_.history.operation(operation.id);
    if (found && is_undoable(*found)) now.push_back(*found);
  }
  Result result{.wanted = static_cast<int>(now.size())};
  int place = 0;
  std::set<std::int64_t> undone;
  for (const PastUndo::Outcome& outcome :
       session_.past_undo.undo(now, [&] { return goes_on(++place, result.wanted); })) {
    const std::int64_t id = outcome.operation.id;
    if (outcome.trouble.empty()) {
      ++result.undone;
      refusals_.erase(id);
      undone.insert(id);
    } else {
      ++result.refused;
      refusals_[id] = outcome.trouble;
    }
  }
  session_.undo.show_undone(undone);
  return result;
}

std::string PastUndoing::refusal(const PastOperation& operation) const {
  const auto found = refusals_.find(operation.id);
  return found == refusals_.end() || !is_undoable(operation) ? "" : found->second;
}

std::string text_of(const PastUndoing::Result& result) {
  if (result.wanted == 0) return "There is nothing to undo";
  std::string text = std::to_string(result.undone);
  if (result.undone < result.wanted) text += " of " + std::to_string(result.wanted);
  text += " undone";
  if (result.refused > 0) text += ", " + std::to_string(result.refused) + " left alone";
  return text;
}

}  // namespace quorvel
