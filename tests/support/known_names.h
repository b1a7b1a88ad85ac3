#pragma once

#include <optional>
#include <string>
#include <vector>

#include "naming/reader/reading.h"

namespace quorvel::testing {

/// A name and what it means. What a line leaves out is not said.
struct KnownName {
  std::string name;
  std::optional<std::string> show;  // empty: the name has none; missing: it does not matter
  Reading meaning;                  // show excepted
};

/// The lines of a file, each an object with `name`, `show`, and what is known of `season`, `episodes`, `absolute`,
/// `date`, `year`, `country`, `part`, `special`, `certain`, `other`, `resolution`, `source`, `group`, `episode_title`.
/// A text "?" does not matter.
/// Throws Failure with the line that is no such object.
std::vector<KnownName> known_names(const std::string& path);

bool same_numbers(const KnownName& known, const Reading& reading);

/// Whether the show is right without regard to case, marks, blanks, and a year or country in it.
bool same_show(const KnownName& known, const Reading& reading);

/// For people: the show, the numbers, and what else is compared.
std::string described(const std::string& show, const Reading& reading);

}  // namespace quorvel::testing
