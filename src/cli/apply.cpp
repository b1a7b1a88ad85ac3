#include "cli/apply.h"

#include <iostream>
#include <iterator>

#include "cli/hooks.h"
#include "cli/json_report.h"
#include "platform/console.h"
#include "platform/system.h"
#include "shell/plan_file.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/json_text.h"

namespace quorvel::cli {
namespace {

std::string text_of(const Files& files, const std::string& file) {
  if (file == "-") return {std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()};
  const std::optional<std::string> text = files.read(absolute_path(file));
  if (!text) throw Failure("The plan \"" + file + "\" cannot be read");
  return *text;
}

}  // namespace

bool apply_plan(Session& session, const std::string& file, bool json, Hooks& hooks, Terminal& terminal) {
  const std::vector<Batch::Entry> plan = plan_of(text_of(session.ports.files, file));
  const History::Pass pass(session.history);
  std::size_t done = 0;
  const bool is_real = session.ports.files.are_real();
  const auto tell = [&](std::size_t entry, const FileJobResult& result, std::string trouble) {
    const FileJob& job = plan[entry].job;
    const bool is_done = result.done;
    done += is_done ? 1 : 0;
    replace_all(trouble, "\r\n", "; ");
    if (json) {
      terminal.data_line(JsonObject()
                             .text("path", job.path)
                             .text("state", !is_done  ? "failed"
                                            : is_real ? "done"
                                                      : "planned")
                             .text("new_path", job.destination())
                             .text("action", action_word(job.action))
                             .objects("companions", companions_of(job.companions))
                             .text("reason", trouble)
                             .line());
    } else if (is_done && is_real) {
      for (const FileJob& each : job.companions) terminal.out_line(each.path + " -> " + each.destination());
      terminal.out_line(job.path + " -> " + job.destination());
    }
    if (!is_done) terminal.error_line(job.path + ": " + trouble);
    hooks.item_ended(job, trouble);
    return console::interrupts() == 0;
  };
  session.batch.run(plan, tell);
  hooks.pass_ended();
  if (json) {
    const JsonObject counts = JsonObject()
                                  .number(is_real ? "done" : "planned", static_cast<int>(done))
                                  .number("failed", static_cast<int>(plan.size() - done));
    terminal.data_line(JsonObject().object("summary", counts).line());
  }
  terminal.error_line(std::to_string(done) + " done, " + std::to_string(plan.size() - done) + " failed");
  return !plan.empty() && done == plan.size();
}

}  // namespace quorvel::cli
