#include "cli/json_report.h"

#include "platform/stamp_text.h"
#include "rules/action.h"
#include "text/cut.h"
#include "text/json_text.h"

namespace quorvel::cli {
namespace {

/// Of one that has ended.
const char* word_of(QueueState state, bool is_dry_run) {
  if (state == QueueState::Done) return is_dry_run ? "planned" : "done";
  return state == QueueState::Failed ? "failed" : "cancelled";
}

}  // namespace

std::vector<JsonObject> companions_of(const std::vector<FileJob>& companions) {
  std::vector<JsonObject> list;
  list.reserve(companions.size());
  for (const FileJob& each : companions) {
    list.push_back(JsonObject().text("path", each.path).text("new_path", each.destination()));
  }
  return list;
}

namespace {

std::optional<int> positive(int number) {
  return number > 0 ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string state_word(const QueueItem& item, bool is_dry_run) {
  return item.is_left_by_rule    ? "left by rule"
         : item.is_right_already ? "right already"
                                 : word_of(item.state, is_dry_run);
}

std::vector<int> episodes_of(const QueueItem& item) {
  std::vector<int> episodes;
  if (!item.episode_title.empty() || item.episode > 0) episodes.push_back(item.episode);
  episodes.insert(episodes.end(), item.more_episodes.begin(), item.more_episodes.end());
  return episodes;
}

std::string json_of(const QueueItem& item, bool is_dry_run) {
  std::string reason = item.error_text;
  replace_all(reason, "\r\n", "\n");
  const std::vector<int> episodes = episodes_of(item);
  return JsonObject()
      .text("path", item.path)
      .text("state", state_word(item, is_dry_run))
      .text("new_path", item.new_name.empty() ? "" : item.dest_path + item.new_name)
      .text("action", item.new_name.empty() ? "" : action_word(item.action))
      .objects("companions", companions_of(item.companions))
      .text("show", item.show_name)
      .number("show_id", positive(item.show_id))
      .number("season", episodes.empty() ? std::nullopt : std::optional<int>(item.season))
      .numbers("episodes", episodes)
      .text("title", item.episode_title)
      .text("reason", reason)
      .texts("doubts", item.doubts)
      .text("stamp", item.source_stamp ? stamp_text(*item.source_stamp) : "")
      .line();
}

std::string json_of(const PassResult& result, int left, bool is_dry_run) {
  JsonObject summary;
  summary.number(word_of(QueueState::Done, is_dry_run), result.done())
      .number("failed", result.failed)
      .number("cancelled", result.cancelled)
      .number("not processed", left)
      .number("right already", result.right_already);
  return JsonObject().object("summary", summary).line();
}

}  // namespace quorvel::cli
