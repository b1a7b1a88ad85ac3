#pragma once

#include <string>
#include <vector>

#include "cli/options.h"
#include "cli/terminal.h"
#include "platform/commands.h"
#include "queue/queue_item.h"
#include "shell/pass_result.h"

namespace quorvel::cli {

/// The user's own commands after each item that has ended and after each pass. They are told by variables of their
/// environment what has become of the file, or how many have ended in which way. In a dry run none is run.
class Hooks {
 public:
  Hooks(const Options& options, Terminal& terminal);

  void item_ended(const QueueItem& item);
  /// One of a plan; `trouble` is why it was not done.
  void item_ended(const FileJob& job, const std::string& trouble);
  /// With the items that have ended since the last.
  void pass_ended();

  /// Whether one could not be run, or has ended with another status than 0.
  bool have_failed() const { return have_failed_; }

 private:
  void run(const std::vector<std::string>& words, const commands::Environment& variables);

  const std::vector<std::string> after_item_, after_pass_;
  Terminal& terminal_;
  PassResult pass_;
  bool have_failed_ = false;
};

}  // namespace quorvel::cli
