#pragma once

#include <cstdint>
#include <optional>

#include "cli/terminal.h"
#include "shell/session.h"

/// What was done to files, and taking it back, in a terminal.
namespace quorvel::cli {

/// Tells the last passes, `count` of them, the latest last. `json`: an object a line for each operation.
void tell_history(Session& session, int count, bool json, Terminal& terminal);

/// Takes a pass back, or the last one that can be. `json`: an object a line for each operation, and one with a summary.
/// Returns whether all of it was taken back.
bool undo_pass(Session& session, std::optional<int> pass, bool json, Terminal& terminal);

}  // namespace quorvel::cli
