#include "cli/terminal_ui.h"

#include "platform/console.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel::cli {

void TerminalUi::add_row(int, const std::string& filename) {
  names_.push_back(filename);
}

void TerminalUi::update_row(int index, const RowUpdate&) {
  if (index < 1 || index > static_cast<int>(names_.size())) throw Failure("no such row");
  if (index == current_) return;
  current_ = index;
  terminal_.set_progress(progress());
}

std::string TerminalUi::progress() const {
  return std::to_string(current_) + " of " + std::to_string(names_.size()) + "  " +
         names_[static_cast<std::size_t>(current_) - 1];
}

bool TerminalUi::copy_progress(std::uint64_t done, std::uint64_t total) {
  constexpr auto often_enough = std::chrono::milliseconds(100);
  process_events();
  const auto now = std::chrono::steady_clock::now();
  if (current_ > 0 && total > 0 && now - last_percentage_ >= often_enough) {
    last_percentage_ = now;
    const auto percent = static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total));
    terminal_.set_progress(std::to_string(percent) + "%  " + progress());
  }
  return interrupts_seen_ < 2;
}

void TerminalUi::process_events() {
  for (; interrupts_seen_ < console::interrupts();) {
    ++interrupts_seen_;
    interrupts_seen_ == 1 ? on_quit() : on_cancel();
  }
}

std::optional<bool> TerminalUi::ask_confirmation(const ConfirmationQuestion& question) {
  terminal_.set_progress({});
  terminal_.error_line(question.title);
  terminal_.error_line("  " + question.source);
  terminal_.error_line("  " + question.destination);
  terminal_.ask(question.question + " [y/N] ");
  const std::optional<std::string> answer = console::read_line();
  if (!answer) terminal_.error_line("");
  process_events();
  return answer && (*answer == "y" || *answer == "Y" || *answer == "yes");
}

void TerminalUi::show_message(int, const std::string& title, const std::string& text, MessageIcon) {
  terminal_.error_line(title);
  for (const std::string_view line : split(text, "#")) terminal_.error_line("  " + std::string(line));
}

}  // namespace quorvel::cli
