#pragma once

#include <functional>
#include <string>

#include "cli/options.h"
#include "cli/terminal.h"
#include "shell/session.h"

namespace quorvel::cli {

class Hooks;

/// Exit statuses of the program.
inline constexpr int all_done = 0, something_failed = 1, wrong_usage = 2;

/// Does what the options say and returns the program's exit status.
int run(const Options& options);

/// Makes a session as the options want it, not opened yet, and has `work` done in it, which returns whether all is
/// done. Returns the exit status; when it fails, after having told why.
using Work = std::function<bool(Session& session, Hooks& hooks)>;
int with_session(const Options& options, Terminal& terminal, const Work& work);

/// What holds for the files of every run, once the session is open.
void use_options(Session& session, const Options& options);

/// For a log whose lines the user is to read.
std::function<void(const std::string&, bool)> lines_to(Terminal& terminal, const Options& options);

}  // namespace quorvel::cli
