#include "cli/past.h"

#include <algorithm>
#include <map>

#include "platform/console.h"
#include "shell/past_text.h"
#include "text/json_text.h"

namespace quorvel::cli {
namespace {

std::string json_of(const PastOperation& operation, const Clock& clock) {
  return JsonObject()
      .number("pass", static_cast<int>(operation.pass))
      .number("operation", static_cast<int>(operation.id))
      .text("time", time_text(clock, operation.time))
      .text("action", deed_words(operation.deed).infinitive)
      .text("path", operation.old_path)
      .text("new_path", operation.new_path)
      .text("state", outcome_word(operation))
      .text("reason", operation.reason)
      .line();
}

std::string json_of(const PastUndo::Outcome& outcome, bool is_dry_run) {
  const bool is_undone = outcome.trouble.empty();
  return JsonObject()
      .number("pass", static_cast<int>(outcome.operation.pass))
      .number("operation", static_cast<int>(outcome.operation.id))
      .text("path", outcome.from)
      .text("new_path", outcome.to)
      .text("state", !is_undone   ? "refused"
                     : is_dry_run ? "planned"
                                  : "undone")
      .text("reason", outcome.trouble)
      .line();
}

}  // namespace

void tell_history(Session& session, int count, bool json, Terminal& terminal) {
  if (!session.history.exists()) return terminal.error_line("Nothing has been done yet");
  std::vector<PastPass> passes = session.history.passes(count);
  std::ranges::reverse(passes);
  for (const PastPass& pass : passes) {
    if (!json) terminal.out_line(summary(pass, session.ports.clock));
    for (const PastOperation& operation : pass.operations) {
      json ? terminal.data_line(json_of(operation, session.ports.clock)) : terminal.out_line("  " + line_of(operation));
    }
  }
}

bool undo_pass(Session& session, std::optional<int> wanted, bool json, Terminal& terminal) {
  const std::int64_t id = wanted ? *wanted : session.history.exists() ? session.history.last_undoable_pass() : 0;
  const std::optional<PastPass> pass = id == 0 ? std::nullopt : session.history.pass(id);
  if (!pass) {
    terminal.error_line(wanted ? "There is no pass " + std::to_string(*wanted) : "There is nothing to undo");
    return false;
  }
  const int wanted_count = pass->undoable();
  int undone = 0, refused = 0;
  const bool is_dry_run = !session.ports.files.are_real();
  for (const PastUndo::Outcome& outcome :
       session.past_undo.undo(pass->operations, [] { return console::interrupts() == 0; })) {
    if (json) terminal.data_line(json_of(outcome, is_dry_run));
    if (!outcome.trouble.empty()) {
      ++refused;
      terminal.error_line("Not undone: " + outcome.trouble);
    } else {
      ++undone;
      // A dry run tells of everything else itself.
      if (!json && (!is_dry_run || is_link(outcome.operation.deed))) terminal.out_line(undone_line(outcome));
    }
  }
  if (json) {
    const JsonObject counts = JsonObject().number(is_dry_run ? "planned" : "undone", undone).number("refused", refused);
    terminal.data_line(JsonObject().object("summary", counts).line());
  }
  terminal.error_line(summary(*pass, session.ports.clock) + ": " + std::to_string(undone) + " of " +
                      std::to_string(wanted_count) + " undone");
  const std::int64_t before = !wanted && refused > 0 ? session.history.last_undoable_pass(id) : 0;
  if (before != 0) {
    // It would be taken for the last one again.
    terminal.error_line("To leave that and undo the pass before: --undo " + std::to_string(before));
  }
  return undone == wanted_count && undone > 0;
}

}  // namespace quorvel::cli
