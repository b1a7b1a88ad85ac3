#pragma once

#include "cli/options.h"

namespace quorvel::cli {

/// Does what the options ask for and returns the exit status.
int run(const Options& options);

}  // namespace quorvel::cli
