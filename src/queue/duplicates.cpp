#include "queue/duplicates.h"

#include <compare>
#include <utility>

#include "naming/file_names.h"
#include "rules/action.h"

namespace quorvel {
namespace {

std::string numbered(const std::string& name, int number) {
  const std::string extension = getextension(name);
  const std::string stem = extension == name ? name : remextension(name);
  return stem + " (" + std::to_string(number) + ")" + name.substr(stem.size());
}

}  // namespace

bool Duplicates::settle(QueueItem& item) {
  if (std::exchange(item.came_by_itself, false) && has_gone(job_of(item))) {
    return leave(item, item.dest_path + item.new_name + " was made of this file before, and is not there any more");
  }
  if (item.existing == Existing::Ask || !is_taken(job_of(item))) return true;
  if (item.existing == Existing::KeepBoth) return keep_both(item);
  if (item.is_under_review) return true;
  if (is_copy_of_source(job_of(item))) return leave(item, item.dest_path + item.new_name + " is a copy of it already");
  if (item.existing == Existing::KeepBetter) return keep_better(item);
  return leave(item, item.dest_path + item.new_name + " is there already, so the file stays where it is");
}

/// What took its source and was not undone is none of it: the source has come anew.
bool Duplicates::has_gone(const FileJob& job) const {
  if (files_.exists(job.destination())) return false;
  const std::optional<PastOperation> past = history_.last_from(job.path);
  const std::optional<FileStamp> now = files_.stamp(job.path);
  const bool is_file =
      past && past->new_path == job.destination() && past->stamp && now && past->stamp->may_be_copy_of(*now);
  return is_file && (past->undone || !takes_source(static_cast<int>(past->deed)));
}

/// By another file than the item's own, under whatever name.
bool Duplicates::is_taken(const FileJob& job) const {
  if (!files_.exists(job.destination()) || jobs_.is_done_already(job)) return false;
  const std::optional<FileStamp> source = files_.stamp(job.path), existing = files_.stamp(job.destination());
  return !source || !existing || !source->same_file(*existing);
}

/// Else each pass over a folder whose files stay there would add another copy.
bool Duplicates::is_copy_of_source(const FileJob& job) const {
  const std::optional<FileStamp> source = files_.stamp(job.path), existing = files_.stamp(job.destination());
  return job.action == CopyAndRename && source && existing && existing->may_be_copy_of(*source);
}

bool Duplicates::keep_both(QueueItem& item) {
  const std::string wanted = item.new_name;
  for (int number = 2; is_taken(job_of(item)); ++number) {
    if (is_copy_of_source(job_of(item)))
      return leave(item, item.dest_path + item.new_name + " is a copy of it already");
    item.new_name = numbered(wanted, number);
  }
  item.companions = companions_.of(job_of(item));
  log_.debug_log(wanted + " is there already, so the file becomes " + item.new_name, LogLevel::Normal);
  return true;
}

/// A file that the program has put there has lost the words that tell how good it is; the history knows its old name.
Quality Duplicates::quality_of_existing(const std::string& path) {
  const std::optional<PastOperation> past = history_.last_to(path);
  const std::optional<FileStamp> now = files_.stamp(path);
  const bool is_its = past && past->stamp && now && now->same_contents(*past->stamp);
  return quality_in(is_its ? past->old_path : path);
}

bool Duplicates::keep_better(QueueItem& item) {
  const std::string existing = item.dest_path + item.new_name;
  if (!item.doubts.empty()) {
    item.error_text = existing + " is there already, and whether this is the same episode is uncertain";
    return false;
  }
  const std::partial_ordering order = quality_in(item.path) <=> quality_of_existing(existing);
  if (order == std::partial_ordering::unordered) {
    item.error_text = existing + " is there already, and the names do not tell which of the two is better";
    return false;
  }
  if (std::is_gt(order)) {
    item.replaces = true;
    for (FileJob& companion : item.companions) companion.replaces = true;
    log_.debug_log(existing + " is there already, but the new file is better", LogLevel::Normal);
    return true;
  }
  const std::string as_good =
      existing + (std::is_lt(order) ? " is there already and is better" : " is there already, as good");
  // The user's word is wanted for what is done, and for this there is no question.
  if (std::is_eq(order) || !takes_source(item.action) || settings_.confirm) return leave(item, as_good);
  const FileJobResult result = jobs_.discard(job_of(item));
  if (!result.done) {
    item.error_text = as_good + ", but the file cannot be put into the trash: " + result.error_text.value_or("");
    return false;
  }
  return leave(item, as_good + ", so the file goes to the " + std::string(native::trash_name));
}

bool Duplicates::leave(QueueItem& item, std::string reason) {
  item.error_text = std::move(reason);
  item.is_right_already = true;
  item.is_left_by_rule = true;
  log_.debug_log(item.error_text, LogLevel::Normal);
  return false;
}

}  // namespace quorvel
