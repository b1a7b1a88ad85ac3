#include "queue/pipeline.h"

#include <utility>

#include "naming/file_names.h"
#include "queue/placement.h"
#include "text/case.h"

namespace quorvel {

bool Pipeline::dofilter(QueueItem& item) {
  const std::optional<int> rule = parts_.filters.first_fitting(getextension(item.filename), item.show_name);
  if (!rule) return false;
  const AFilter& filter = parts_.filters.at(*rule);
  Placement placement = placement_by(filter, item);
  item.new_name = std::move(placement.new_name);
  item.dest_path = std::move(placement.dest_path);
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
