#include "queue/processor.h"

#include <algorithm>
#include <utility>

#include "queue/stage.h"

namespace quorvel {
namespace {

constexpr const char* stopped = "Stopped by the user";

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

void Processor::take_again(const std::vector<int>& items, bool anew) {
  for (const int index : items) {
    if (!may_take_again(index)) continue;
    QueueItem& item = queue_.at(index);
    item.look_up_anew = anew;
    item.is_planned = false;
    item.error_text.clear();
    set_state(index, QueueState::Inactive);
    again_.push_back(index);
  }
  if (!queue_busy_ && !again_.empty()) process_queue();
}

bool Processor::may_take_again(int index) const {
  return queue_.holds(index) && (queue_.at(index).state < QueueState::Inactive || queue_.at(index).is_planned);
}

void Processor::apply(const std::vector<int>& items) {
  if (queue_busy_) return;
  plans_ = items;
  run(&Processor::carry_out_plans);
}

void Processor::give_up(const std::vector<int>& items, const std::string& reason) {
  for (const int index : items) {
    if (std::exchange(queue_.at(index).is_planned, false)) cancel(index, reason);
  }
}

void Processor::process_queue() {
  run(&Processor::run_pass);
}

void Processor::run(void (Processor::*pass)()) {
  queue_busy_ = true;
  try {
    (this->*pass)();
  } catch (...) {
    end_pass();  // else the window could never be closed again
    throw;
  }
}

void Processor::stop() {
  if (!queue_busy_ || stop_after_ > 0) return;
  if (!quit_) log_.debug_log(stopped, LogLevel::Normal);
  stop_after_ = queue_.count();
}

void Processor::run_pass() {
  const History::Pass pass(history_);
  identification_ = &way_();
  identification_->begin_pass();
  pipeline_.begin_pass();
  while (!is_ending()) {
    if (queue_cursor_ >= queue_.count()) {
      if (process_next_again()) continue;
      conclude();
      if (queue_cursor_ == 0) {
        log_.debug_log("No work to do", LogLevel::Verbose);
      } else {
        finish();
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
  if (!quit_) cancel_rest();  // meanwhile the user may quit
  conclude();
  if (quit_) {
    ui_.close();
  } else if (queue_cursor_ < queue_.count()) {
    ui_.arm_start_timer();  // for what was added after the pass was stopped
  }
}

void Processor::carry_out_plans() {
  const History::Pass pass(history_);
  std::vector<Batch::Entry> entries;
  for (const int index : plans_) {
    QueueItem& item = queue_.at(index);
    item.past_id = 0;
    entries.push_back({job_of(item), item.source_stamp});
  }
  const auto ended = [&](std::size_t entry, const FileJobResult& result, const std::string& trouble) {
    const int index = plans_[entry];
    QueueItem& item = queue_.at(index);
    item.is_planned = false;
    pipeline_.note(item, result);
    item.is_right_already = !result.done && item.path == job_of(item).destination();
    if (result.done) {
      set_state(index, QueueState::Done);
    } else {
      fail(index, "Unable to rename/move files for: " + item.new_name, trouble);
    }
    return !is_ending();
  };
  batch_.run(entries, ended, [this](std::size_t entry) { set_state(plans_[entry], QueueState::Processing); });
  const bool was_stopped = stop_after_ > 0;
  conclude();
  if (quit_) return ui_.close();
  if (queue_cursor_ < queue_.count()) ui_.arm_start_timer();  // for what was added meanwhile
  if (!was_stopped) finish();
}

/// All is done that is to be done now. What the user has not seen would be gone with the window.
void Processor::finish() {
  log_.debug_log("All items processed", LogLevel::Normal);
  if (!settings_.autoclose || settings_.watching || queue_cursor_ < queue_.count()) return;
  const int count = need_user();
  if (count == 0) return ui_.close();
  log_.debug_log(
      "The window stays open, for " + std::to_string(count) + (count == 1 ? " file needs" : " files need") + " you",
      LogLevel::Normal);
}

int Processor::need_user() const {
  int count = 0;
  for (int index = 1; index <= queue_.count(); ++index) count += needs_user(queue_.at(index)) ? 1 : 0;
  return count;
}

int Processor::left() const {
  if (!queue_busy_) return 0;
  if (!plans_.empty()) {
    return static_cast<int>(std::ranges::count_if(plans_, [this](int index) { return queue_.at(index).is_planned; }));
  }
  const auto state = [this](int index) { return queue_.at(index).state; };
  auto count = static_cast<int>(again_.size());
  if (at_work_ > 0 && !has_ended(state(at_work_))) ++count;
  if (!retry_mode_) return count + std::max(queue_.count() - queue_cursor_, 0);
  for (int index = queue_cursor_ + 1; index <= queue_.count(); ++index) {
    if (state(index) < QueueState::Scanning) ++count;
  }
  return count;
}

/// False when there is none.
bool Processor::process_next_again() {
  if (again_.empty()) return false;
  const int index = again_.front();
  again_.pop_front();
  if (queue_.at(index).state == QueueState::Inactive) process_item(index);
  return true;
}

void Processor::conclude() {
  pipeline_.end_pass();
  end_pass();
  on_pass_ended();
}

/// The next pass goes on after the last item, even where a retry has stepped over that.
void Processor::end_pass() {
  queue_cursor_ = std::min(queue_cursor_, queue_.count());
  retry_mode_ = false;
  queue_busy_ = false;
  stop_after_ = 0;
  at_work_ = 0;
  plans_.clear();
}

void Processor::cancel_rest() {
  std::vector<int> rest(again_.begin(), again_.end());
  again_.clear();
  for (int index = std::max(queue_cursor_, 1); index <= stop_after_; ++index) rest.push_back(index);
  if (at_work_ > 0) rest.push_back(at_work_);
  std::ranges::sort(rest);
  for (const int index : rest) {
    const QueueItem& item = queue_.at(index);
    if (!has_ended(item.state) && !item.is_planned) cancel(index, stopped);
  }
  queue_cursor_ = std::max(queue_cursor_, stop_after_);
}

void Processor::set_state(int index, QueueState state) {
  queue_.at(index).state = state;
  view_.update_lv(index);
  if (has_ended(state)) on_ended(queue_.at(index));
}

/// What fails after the user has stopped it has been cancelled.
void Processor::fail(int index, const std::string& log_line, const std::string& error_text) {
  if (stop_after_ > 0) return cancel(index, stopped);
  if (!log_line.empty()) log_.debug_log(log_line, LogLevel::Normal);
  QueueItem& item = queue_.at(index);
  item.error_text = error_text;
  item.failed_at = item.state;
  set_state(index, QueueState::Failed);
}

void Processor::cancel(int index, const std::string& error_text) {
  queue_.at(index).error_text = error_text;
  queue_.at(index).is_under_review = false;
  set_state(index, QueueState::Cancelled);
}

/// Ends early when the user wants to quit or has stopped the pass; the item then keeps the state it has reached.
void Processor::process_item(int index) {
  at_work_ = index;
  QueueItem& item = queue_.at(index);
  // What the user looks at is not done behind his back, whatever the setting says by now.
  const bool is_under_review = item.is_under_review || settings_.review;
  item.forget_findings();
  item.is_under_review = is_under_review;
  const Identified found = identification_->identify(item, [&](QueueState state) {
    set_state(index, state);
    // At the search a wish to quit waits, so that each item that was taken is looked for.
    return state == QueueState::Searching ? stop_after_ == 0 : !is_ending();
  });
  item.look_up_anew = false;
  item.no_answer = found.no_answer;
  if (found.outcome == Identified::Interrupted) return;
  if (found.outcome == Identified::Failed) return fail(index, found.log_line, found.error_text);

  set_state(index, QueueState::CheckingFilters);
  if (is_ending()) return;
  const StageResult rule = run_stage(log_, "Error checking filters: ", [&] { return pipeline_.dofilter(item); });
  if (!rule.failure.empty()) return fail(index, {}, rule.failure);
  if (!rule) {
    return fail(index, "Unable to find matching filter for: " + item.episode_text(),
                "Found listings, but no filter could be found to move/rename the file");
  }

  const StageResult free =
      run_stage(log_, "Error checking the destination: ", [&] { return pipeline_.duplicates(item); });
  if (!free) return fail(index, {}, free.failure.empty() ? item.error_text : free.failure);

  if (item.is_under_review) {
    pipeline_.plan(item);
    view_.update_lv(index);
    return;
  }
  set_state(index, QueueState::Processing);
  if (is_ending()) return;
  if (!pipeline_.confirm(item)) {
    log_.debug_log("Unable to rename/move files for: " + item.new_name + " (user cancelled)", LogLevel::Normal);
    return cancel(index, "User cancelled the file operation");
  }
  const StageResult operation = run_stage(log_, "Error renaming/moving: ", [&] { return pipeline_.fileops(item); });
  if (operation) return set_state(index, QueueState::Done);
  fail(index, "Unable to rename/move files for: " + item.new_name,
       operation.failure.empty() ? item.error_text : operation.failure);
}

}  // namespace quorvel
