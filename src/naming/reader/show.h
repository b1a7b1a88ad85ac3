#pragma once

#include <string>

#include "naming/reader/numbers.h"
#include "naming/reader/reading.h"
#include "naming/reader/tokens.h"

namespace quorvel::reader {

/// Fills in all that stands around the numbers: the show with its year and country, the release group, how the file was
/// made, the episode's title.
void read_surroundings(const Name& name, const Numbers& numbers, Reading& reading);

/// The words of some tokens, the last one excluded, without brackets and what stands in for blanks.
std::string plain_text(const Name& name, std::size_t first, std::size_t last);

/// The words from a token up to those that say how the file was made.
std::string plain_title(const Name& name, std::size_t from);

/// The show that a folder without an episode's numbers is named after, with year and country; cut before its season.
void read_show_folder(const Name& name, Reading& reading);

}  // namespace quorvel::reader
