#include "shell/pass_result.h"

#include "shell/past_text.h"

namespace quorvel {

void PassResult::add(const QueueItem& item) {
  if (item.is_right_already) {
    ++right_already;
    if (item.is_left_by_rule) ++left_by_rule;
  } else if (item.state == QueueState::Done) {
    ++done_by_action[item.action];
    if (!item.doubts.empty()) ++doubtful;
    if (item.lost_characters) ++lossy;
    past_id = item.past_id;
  } else {
    ++(item.state == QueueState::Failed ? failed : cancelled);
  }
}

int PassResult::done() const {
  int count = 0;
  for (const auto& [action, number] : done_by_action) count += number;
  return count;
}

std::string PassResult::text() const {
  std::string text;
  const auto add = [&text](int count, const std::string& words) {
    if (count > 0) text.append(text.empty() ? "" : ", ").append(std::to_string(count) + " " + words);
  };
  for (const auto& [action, count] : done_by_action) add(count, deed_words(static_cast<Deed>(action)).participle);
  if (doubtful < done()) {
    add(doubtful, "of them uncertain");
  } else if (doubtful > 0) {
    text += doubtful == 1 ? ", uncertain" : ", all uncertain";
  }
  add(right_already - left_by_rule, "already right");
  add(left_by_rule, "left out by a rule");
  add(cancelled, "cancelled");
  add(failed, failed == 1 ? "needs you" : "need you");
  return text;
}

}  // namespace quorvel
