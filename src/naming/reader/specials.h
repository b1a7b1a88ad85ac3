#pragma once

#include "naming/reader/reading.h"
#include "naming/reader/tokens.h"

namespace quorvel::reader {

/// Reads a special that no number is told of, "Show - Special - Title", "Show.OVA", or any file in a folder of
/// specials: nobody but the listings knows which one it is, by its title. What is no special leaves the reading as it
/// is.
void read_special(const Name& name, bool in_folder_of_specials, Reading& reading);

}  // namespace quorvel::reader
