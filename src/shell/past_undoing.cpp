#include "shell/past_undoing.h"

#include <algorithm>

#include "shell/past_text.h"

namespace quorvel {

PastUndoing::Result PastUndoing::undo(const std::vector<PastOperation>& operations,
                                      const std::function<bool(int place, int count)>& goes_on) {
  // Another copy of the program may have been at it since they were read.
  std::map<std::int64_t, PastOperation> current;
  for (const PastOperation& operation : operations) {
    if (current.contains(operation.id)) continue;
    const std::optional<PastOperation> found = session_.history.operation(operation.id);
    if (!found || !found->is_undoable()) continue;
    for (PastOperation& each : session_.history.group_of(*found)) current.try_emplace(each.id, std::move(each));
  }
  std::vector<PastOperation> now;
  now.reserve(current.size());
  for (const auto& [id, operation] : current) now.push_back(operation);
  Result result{.wanted = static_cast<int>(now.size())};
  int place = 0;
  const std::vector<PastUndo::Outcome> outcomes =
      session_.past_undo.undo(now, [&] { return goes_on(++place, result.wanted); });
  for (const PastUndo::Outcome& outcome : outcomes) {
    const std::int64_t id = outcome.operation.id;
    if (outcome.trouble.empty()) {
      ++result.undone;
      refusals_.erase(id);
    } else {
      ++result.refused;
      refusals_[id] = outcome.trouble;
    }
  }
  session_.undo.show_undone(outcomes);
  return result;
}

std::optional<PastPass> PastUndoing::last_pass() {
  const std::int64_t last = session_.history.last_undoable_pass();
  for (std::int64_t id = last; id != 0; id = session_.history.last_undoable_pass(id)) {
    std::optional<PastPass> pass = session_.history.pass(id);
    const auto may_be_undone = [this](const PastOperation& each) {
      return each.is_undoable() && refusal(each).empty();
    };
    if (pass && std::ranges::any_of(pass->operations, may_be_undone)) return pass;
  }
  return last == 0 ? std::nullopt : session_.history.pass(last);
}

std::string PastUndoing::refusal(const PastOperation& operation) const {
  const auto found = refusals_.find(operation.id);
  return found == refusals_.end() || !operation.is_undoable() ? "" : found->second;
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
