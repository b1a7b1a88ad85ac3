#pragma once

#include "child_process.h"

namespace quorvel::testing {

/// Turns this process into that program, with the input and the output that it has; ends it when that fails.
[[noreturn]] void become(const Start& start);

}  // namespace quorvel::testing
