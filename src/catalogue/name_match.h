#pragma once

#include <string>
#include <string_view>

/// Comparing the names of shows as they are written in file names with those that the service gives.
namespace quorvel {

/// The words of a name, one blank between them, without case, marks, accents and punctuation, and with "and" for "&".
/// Names of which only such things differ have one key.
std::string match_key(std::string_view name);

/// How alike two names are, by their keys: 100 the same, 95 but for articles, 90 but for blanks; 60 to 85 with a few
/// letters changed; 50 where one holds all words of the other in order; else 0.
int likeness(const std::string& key, const std::string& other);

}  // namespace quorvel
