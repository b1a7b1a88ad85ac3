#pragma once

#include <optional>

#include "naming/reader/numbers.h"

/// Numbers without any word that says what they are: "- 12 -", "[12]", "Show 112", "show.102".
namespace quorvel::reader {

/// The number that looks most like an episode's. With `standing_out` only one that brackets or dashes set apart.
std::optional<Numbers> bare_number(const Name& name, std::optional<int> folder_season, bool standing_out);

/// The last year that stands where films have theirs, in brackets or in front of technical words; 0 without one.
/// Numbers in front of it are the film's.
std::size_t last_year_of(const Name& name);

/// Whether the name starts as those of fan groups do: "[Group] Show - 12".
bool starts_with_group(const Name& name);

}  // namespace quorvel::reader
