#pragma once

#include <string>

#include "naming/reader/numbers.h"
#include "naming/reader/reading.h"
#include "naming/reader/tokens.h"

namespace quorvel::reader {

/// Fills in all that stands around the numbers: the show with its year and country, the release group, how the file was
/// made, the episode's title.
void read_surroundings(const Name& name, const Numbers& numbers, Reading& reading);

/// The show that a folder without an episode's numbers is named after, with year and country; cut before its season.
void read_show_folder(const Name& name, Reading& reading);

}  // namespace quorvel::reader
