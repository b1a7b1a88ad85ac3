#include "queue/processor.h"

#include "queue/stage.h"

namespace quorvel {
namespace {

constexpr const char* listings_site = "tvmaze.com";

std::string episode_text(const QueueItem& item) {
  return item.show_name + " " + std::to_string(item.season) + "x" + std::to_string(item.episode);
}

}  // namespace

bool Processor::may_close() {
  if (!queue_busy_) return true;
  log_.debug_log("Got quit signal, finishing up...", LogLevel::Normal);
  quit_ = true;
  return false;
}

void Processor::retry_failed() {
  if (queue_busy_) return;
  retry_mode_ = true;
  queue_cursor_ = 0;
  process_queue();
}

void Processor::process_queue() {
  queue_busy_ = true;
  try {
    run_pass();
  } catch (...) {
    queue_busy_ = false;  // else the window could never be closed again
    throw;
  }
}

void Processor::run_pass() {
  while (!ends_for_quit()) {
    if (queue_cursor_ >= queue_.count()) {
      retry_mode_ = false;
      queue_busy_ = false;
      if (queue_cursor_ == 0) {
        log_.debug_log("No work to do", LogLevel::Verbose);
      } else {
        log_.debug_log("All items processed", LogLevel::Normal);
        if (settings_.autoclose) ui_.close();
      }
      return;
    }
    const int index = ++queue_cursor_;
    if (retry_mode_ && queue_.at(index).state >= QueueState::Scanning) {
      // A retry pass steps over the item after a skipped one as well; users rely on the order this gives.
      ++queue_cursor_;
      continue;
    }
    process_item(index);
  }
}

/// Whether the user wants to quit; the pass is over then and the window closes.
bool Processor::ends_for_quit() {
  if (!quit_) return false;
  if (queue_busy_) {
    queue_busy_ = false;
    ui_.close();
  }
  return true;
}

void Processor::set_state(int index, QueueState state) {
  queue_.at(index).state = state;
  view_.update_lv(index);
}

void Processor::fail(int index, const std::string& log_line, const std::string& error_text) {
  if (!log_line.empty()) log_.debug_log(log_line, LogLevel::Normal);
  queue_.at(index).error_text = error_text;
  set_state(index, QueueState::Failed);
}

/// Ends early when the user wants to quit; the item then keeps the state it has reached.
void Processor::process_item(int index) {
  QueueItem& item = queue_.at(index);
  const auto names_an_episode = [&](bool parent_folder) {
    return run_stage(log_, "Error getting filename filter: ", [&] { return pipeline_.getbits(item, parent_folder); });
  };
  set_state(index, QueueState::Scanning);
  if (!names_an_episode(true) && !names_an_episode(false)) {
    return fail(index, "Unable to find filename filter for: " + item.filename, "Unable to find filename filter");
  }

  log_.debug_log("Found filename filter for: " + item.filename, LogLevel::Verbose);
  set_state(index, QueueState::Searching);
  log_.debug_log("Checking exceptions", LogLevel::Verbose);
  pipeline_.checkex(item);
  log_.debug_log("Searching for: " + item.search_name, LogLevel::Verbose);
  const std::string searched = "\r\nSearched for: " + item.search_name;
  if (!run_stage(log_, "Error searching for show: ", [&] { return pipeline_.searchtv(item); })) {
    return fail(index, "Unable to find show page for: " + item.search_name,
                std::string("Unable to find show on ") + listings_site + searched);
  }

  set_state(index, QueueState::FetchingListings);
  if (ends_for_quit()) return;
  if (!run_stage(log_, "Error getting listings: ", [&] { return pipeline_.getlistings(item); })) {
    return fail(index, "Unable to find listings for: " + episode_text(item),
                std::string("Unable to find listings on ") + listings_site + searched +
                    "\r\nDetected as: " + episode_text(item));
  }

  set_state(index, QueueState::CheckingFilters);
  if (ends_for_quit()) return;
  const StageResult rule = run_stage(log_, "Error checking filters: ", [&] { return pipeline_.dofilter(item); });
  if (!rule.failure.empty()) return fail(index, {}, rule.failure);
  if (!rule) {
    return fail(index, "Unable to find matching filter for: " + episode_text(item),
                "Found listings, but no filter could be found to move/rename the file");
  }

  set_state(index, QueueState::Processing);
  if (ends_for_quit()) return;
  if (!pipeline_.confirm(item)) {
    log_.debug_log("Unable to rename/move files for: " + item.new_name + " (user cancelled)", LogLevel::Normal);
    item.error_text = "User cancelled the file operation";
    return set_state(index, QueueState::Cancelled);
  }
  if (run_stage(log_, "Error renaming/moving: ", [&] { return pipeline_.fileops(item); })) {
    return set_state(index, QueueState::Done);
  }
  log_.debug_log("Unable to rename/move files for: " + item.new_name, LogLevel::Normal);
  set_state(index, QueueState::Failed);
}

}  // namespace quorvel
