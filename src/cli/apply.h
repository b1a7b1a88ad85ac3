#pragma once

#include <string>

#include "cli/hooks.h"
#include "cli/terminal.h"
#include "shell/session.h"

namespace quorvel::cli {

/// Carries out the plan in a file, or in standard input for "-", and tells how each of its files ended. Returns whether
/// all is done. Throws Failure, with nothing done, when the plan cannot be read or understood.
bool apply_plan(Session& session, const std::string& file, bool json, Hooks& hooks, Terminal& terminal);

}  // namespace quorvel::cli
