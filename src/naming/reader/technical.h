#pragma once

#include "naming/reader/tokens.h"

namespace quorvel::reader {

/// Marks the tokens that say how the file was made or where it comes from - resolutions, sources, codecs, sound,
/// hashes, sites - and the brackets that hold nothing else, so that none of their numbers is taken for an episode.
void mark_technical(Name& name);

/// Whether a name is one run of letters and digits that nobody can read: a hash, or an obfuscated name.
bool is_meaningless(const Name& name);

}  // namespace quorvel::reader
