#pragma once

#include <string>
#include <vector>

namespace quorvel::cli {

/// Tells what each name says, one line a name; "-" stands for the lines of standard input. Files, settings and network
/// are left alone.
void read_names(const std::vector<std::string>& names, bool as_json);

}  // namespace quorvel::cli
