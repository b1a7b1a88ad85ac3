#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fileops/batch.h"

/// Plans as a dry run tells them for programs and people: an object of JSON a line, of which a line with the state
/// "planned" says what is to be done to one file.
namespace quorvel {

/// The jobs of a plan; lines of other states, and the summary, are passed over. Throws Failure, which names the line,
/// when one cannot be understood or lacks something.
std::vector<Batch::Entry> plan_of(std::string_view text);

}  // namespace quorvel
