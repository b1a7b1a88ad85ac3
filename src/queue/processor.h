#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fileops/batch.h"
#include "queue/identification.h"
#include "queue/pipeline.h"
#include "queue/queue_view.h"

namespace quorvel {

/// Drives the items of the queue through an identification and the pipeline, one after another. One bad file never ends
/// a pass. With a review wanted, a pass only plans: what is planned waits for apply().
class Processor {
 public:
  /// `way` is asked before each pass for the identification that the pass is to use.
  Processor(WorkQueue& queue, const Settings& settings, UserInterface& ui, Log& log, History& history,
            std::function<Identification&()> way, Pipeline& pipeline, Batch& batch, QueueView& view)
      : queue_(queue),
        settings_(settings),
        ui_(ui),
        log_(log),
        history_(history),
        way_(std::move(way)),
        pipeline_(pipeline),
        batch_(batch),
        view_(view) {}

  /// One pass: from the item after the last one taken to the end of the queue, which may grow meanwhile, or to the
  /// user's wish to quit. Callers see to it that no pass is running.
  void process_queue();

  /// A pass from the first item on over what is not done. Does nothing while a pass runs.
  void retry_failed();

  /// Carries out, in one pass, what these items are planned for, in an order that works. Does nothing while a pass
  /// runs.
  void apply(const std::vector<int>& items);
  /// Those of the items that are planned are cancelled.
  void give_up(const std::vector<int>& items, const std::string& reason);

  /// Those of the items that have failed, been cancelled or are planned go through the pipeline again, in a pass of
  /// their own or at the end of the one that runs. `anew`: what is kept of the service's answers is not used for them.
  void take_again(const std::vector<int>& items, bool anew);
  bool may_take_again(int index) const;

  /// The window is to close: false when that must wait for a running pass, which then ends at its next stage and
  /// closes the window itself.
  bool may_close();

  /// Whether a running pass will end so.
  bool is_quitting() const { return quit_; }

  /// Ends a running pass at its next stage. What it has not done by then is cancelled, so that nothing happens to it
  /// when the user adds another file; a retry takes it up again.
  void stop();

  bool queue_busy() const { return queue_busy_; }

  /// How many items the pass that runs has still to take or is at.
  int left() const;

  /// How many of all items need the user. While there are any, the program does not end by itself.
  int need_user() const;

  /// Called when an item has ended, well or not.
  std::function<void(const QueueItem&)> on_ended = [](const QueueItem&) {};
  /// Called at a pass's end, before the program ends because of it.
  std::function<void()> on_pass_ended = [] {};

 private:
  void run(void (Processor::*pass)());
  void run_pass();
  void carry_out_plans();
  void process_item(int index);
  bool process_next_again();
  void set_state(int index, QueueState state);
  void fail(int index, const std::string& log_line, const std::string& error_text);
  void cancel(int index, const std::string& error_text);
  /// Whether the user wants to quit or has stopped the pass.
  bool is_ending() const { return quit_ || stop_after_ > 0; }
  void conclude();
  void end_pass();
  void finish();
  void cancel_rest();

  WorkQueue& queue_;
  const Settings& settings_;
  UserInterface& ui_;
  Log& log_;
  History& history_;
  const std::function<Identification&()> way_;
  Identification* identification_ = nullptr;  // of the pass that runs
  Pipeline& pipeline_;
  Batch& batch_;
  QueueView& view_;
  int queue_cursor_ = 0;    // the last item taken in the queue's order
  std::deque<int> again_;   // to be taken after them
  std::vector<int> plans_;  // to be carried out
  int at_work_ = 0;         // the item that was taken last in this pass
  bool queue_busy_ = false;
  bool retry_mode_ = false;
  bool quit_ = false;
  int stop_after_ = 0;  // the last item when the user stopped the pass; 0 when that was not so
};

}  // namespace quorvel
