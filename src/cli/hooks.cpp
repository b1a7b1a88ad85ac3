#include "cli/hooks.h"

#include <utility>

#include "cli/json_report.h"
#include "platform/console.h"
#include "text/cut.h"

namespace quorvel::cli {
namespace {

std::string text_of(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers) text.append(text.empty() ? "" : ",").append(std::to_string(number));
  return text;
}

/// The second interrupt ends what runs, as it ends a copy.
bool goes_on() {
  return console::interrupts() < 2;
}

}  // namespace

Hooks::Hooks(const Options& options, Terminal& terminal)
    : after_item_(options.dry_run ? std::vector<std::string>() : options.after_item),
      after_pass_(options.dry_run ? std::vector<std::string>() : options.after_pass),
      terminal_(terminal) {}

void Hooks::item_ended(const QueueItem& item) {
  pass_.add(item);
  const std::vector<int> episodes = episodes_of(item);
  std::string reason = item.error_text;
  replace_all(reason, "\r\n", "\n");
  run(after_item_, {{"QUORVEL_STATE", state_word(item, false)},
                    {"QUORVEL_OLD_PATH", item.path},
                    {"QUORVEL_NEW_PATH", item.new_name.empty() ? "" : item.dest_path + item.new_name},
                    {"QUORVEL_SHOW", item.show_name},
                    {"QUORVEL_SEASON", episodes.empty() ? "" : std::to_string(item.season)},
                    {"QUORVEL_EPISODES", text_of(episodes)},
                    {"QUORVEL_TITLE", item.episode_title},
                    {"QUORVEL_REASON", reason}});
}

void Hooks::item_ended(const FileJob& job, const std::string& trouble) {
  QueueItem item;
  item.state = trouble.empty() ? QueueState::Done : QueueState::Failed;
  item.path = job.path;
  item.new_name = job.new_name;
  item.dest_path = job.dest_path;
  item.action = job.action;
  item.error_text = trouble;
  item_ended(item);
}

void Hooks::pass_ended() {
  const PassResult result = std::exchange(pass_, {});
  run(after_pass_, {{"QUORVEL_DONE", std::to_string(result.done())},
                    {"QUORVEL_FAILED", std::to_string(result.failed)},
                    {"QUORVEL_CANCELLED", std::to_string(result.cancelled)},
                    {"QUORVEL_RIGHT_ALREADY", std::to_string(result.right_already)}});
}

void Hooks::run(const std::vector<std::string>& words, const commands::Environment& variables) {
  if (words.empty()) return;
  const commands::Ending ending = commands::run(words, variables, goes_on);
  if (ending.status == 0) return;
  have_failed_ = true;
  terminal_.error_line("The command \"" + words.front() + "\" " +
                       (ending.status ? "has ended with status " + std::to_string(*ending.status)
                                      : "has not been run to its end: " + ending.trouble));
}

}  // namespace quorvel::cli
