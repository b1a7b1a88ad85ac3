#pragma once

#include <cstdint>
#include <functional>
#include <set>

#include "shell/pass_result.h"
#include "shell/session.h"
#include "ui/message_bar.h"
#include "ui/window_life.h"

namespace quorvel::ui {

/// Tells how far a pass is, in the tray, and what came out of it: in a bar, and on the desktop while the window is not
/// in front.
class PassReport {
 public:
  struct Actions {
    std::function<void(std::int64_t operation)> undo;  // the pass that this belongs to
    std::function<void()> retry_failed, use_exact_names;
    std::function<std::string()> review;  // what there is to look at before it happens; empty for nothing
  };

  PassReport(Session& session, MessageBar& bar, WindowLife& life, Actions actions);
  ~PassReport();
  PassReport(const PassReport&) = delete;
  PassReport& operator=(const PassReport&) = delete;

  /// Shows in the tray how far the pass is that runs.
  void show_progress();

  /// What has ended in passes so far is not told any more.
  void forget() { ended_.clear(); }

  /// Called when a pass has ended, before its outcome is told.
  std::function<void()> on_pass_ended = [] {};

 private:
  void pass_ended();
  void tell(const PassResult& result);

  Session& session_;
  MessageBar& bar_;
  WindowLife& life_;
  const Actions actions_;
  std::set<const QueueItem*> ended_;  // in the pass, and in those before it whose review it is that is applied
};

}  // namespace quorvel::ui
