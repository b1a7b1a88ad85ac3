#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "cli/terminal.h"
#include "platform/user_interface.h"
#include "queue/work_queue.h"

namespace quorvel::cli {

/// The queue in a terminal: no lists, but a line of progress, questions, and Ctrl+C in place of the closing button.
class TerminalUi : public UserInterface {
 public:
  explicit TerminalUi(Terminal& terminal) : terminal_(terminal) {}

  /// What an interrupt does; nothing by default. The first ends the pass, the second stops a transfer as well.
  std::function<void()> on_quit = [] {};
  std::function<void()> on_cancel = [] {};

  /// `done` of `total` bytes are copied; false when the copy should be abandoned.
  bool copy_progress(std::uint64_t done, std::uint64_t total);

  void add_row(int index, const std::string& filename) override;
  void update_row(int index, const RowUpdate& update) override;
  void show_filters(const std::vector<ListRow>&) override {}
  void show_exceptions(const std::vector<ListRow>&) override {}
  void process_events() override;
  std::optional<bool> ask_confirmation(const ConfirmationQuestion& question) override;
  void show_message(int id, const std::string& title, const std::string& text, MessageIcon icon) override;
  void arm_start_timer() override {}
  void close() override {}

 private:
  std::string progress() const;

  Terminal& terminal_;
  std::vector<std::string> names_;  // of the rows
  int current_ = 0;
  int interrupts_seen_ = 0;
  std::chrono::steady_clock::time_point last_percentage_;
};

}  // namespace quorvel::cli
