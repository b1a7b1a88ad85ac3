#pragma once

#include "cli/options.h"
#include "cli/terminal.h"

namespace quorvel::cli {

/// Takes the files below the folders that the options name, those that are there and those that come, until the user
/// interrupts. Returns the program's exit status.
int watch(const Options& options, Terminal& terminal);

}  // namespace quorvel::cli
