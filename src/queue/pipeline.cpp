#include "queue/pipeline.h"

#include "naming/file_names.h"
#include "naming/mask.h"
#include "naming/service_names.h"
#include "text/case.h"
#include "text/failure.h"

namespace quorvel {

bool Pipeline::dofilter(QueueItem& item) {
  const std::string extension = getextension(item.filename);
  const std::optional<int> rule = parts_.filters.first_fitting(extension, item.show_name);
  if (!rule) return false;
  const AFilter& filter = parts_.filters.at(*rule);
  MaskValues values{item.show_name, item.season, item.episode, item.episode_title, item.more_episodes, item.facts};
  if (item.show_id > 0) values.facts.id = std::to_string(item.show_id);
  values.facts.old_name = remextension(item.filename);
  std::string folder;
  if (filter.action < MoveAndRename) {
    folder = getpath(item.path, 0);
  } else {
    const std::string path = with_native_separators(with_home(filter.path));
    if (!path.empty() && !is_full_path(path)) {
      throw Failure("The rule's folder \"" + filter.path + "\" begins neither at the root or a drive nor with \"~\"");
    }
    if (const auto trouble = mask_trouble(path, values, expand_folder)) throw Failure("The folder " + *trouble);
    folder = without_ends(expand_folder(path, values));
    if (folder.empty()) throw Failure("The rule has no folder to put files into");
  }
  const std::string mask = filter.mask + "." + extension;
  if (const auto trouble = mask_trouble(mask, values, expand_name)) throw Failure("The new name " + *trouble);
  item.new_name = expand_name(mask, values);
  if (item.new_name.starts_with('.') && !item.filename.starts_with('.')) {
    throw Failure("The new name \"" + item.new_name + "\" would hide the file");
  }
  item.dest_path = with_separator(folder);
  item.filter_index = *rule;
  item.action = filter.action;
  item.existing = filter.existing;
  item.companions = parts_.companions.of(job_of(item));
  return true;
}

void Pipeline::plan(QueueItem& item) {
  item.source_stamp = parts_.files.stamp(item.path);
  item.is_planned = true;
}

bool Pipeline::duplicates(QueueItem& item) {
  return parts_.duplicates.settle(item);
}

bool Pipeline::confirm(QueueItem& item) {
  if (!parts_.settings.confirm) return true;
  const FileJob job = job_of(item);
  const ActionWords* const words = words_of(job.action);
  const std::string operation(words == nullptr ? "Rename" : words->verb);
  const std::optional<bool> answer = parts_.ui.ask_confirmation(
      {"Confirm File " + operation, "Continue with file " + lower_case(operation) + "?", job.path, job.destination()});
  item.confirmed = answer.value_or(false);
  return item.confirmed;
}

bool Pipeline::fileops(QueueItem& item) {
  item.past_id = 0;
  const FileJobResult result = parts_.jobs.run(job_of(item));
  note(item, result);
  return result.done;
}

void Pipeline::note(QueueItem& item, const FileJobResult& result) {
  if (result.error_text) item.error_text = *result.error_text;
  if (result.dest_path) item.dest_path = *result.dest_path;
  item.done_stamp = result.stamp;
  item.is_right_already = result.is_right_already;
  item.past_id = result.past_id;
  item.source_stamp = result.source_stamp;
  if (!result.done) return;
  item.companions = result.companions;
  parts_.tidying.note(item);
}

}  // namespace quorvel
