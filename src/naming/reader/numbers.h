#pragma once

#include <optional>
#include <vector>

#include "naming/reader/reading.h"
#include "naming/reader/tokens.h"

namespace quorvel::reader {

/// What the folders say that helps to read the file's name.
struct Surroundings {
  std::optional<int> season;
};

/// The numbers of one name and the tokens that say them.
struct Numbers {
  std::size_t first = 0, last = 0;  // the last one excluded; without tokens nothing was found
  std::optional<int> season;
  std::vector<int> episodes, absolute;
  std::optional<Date> date;
  std::optional<int> part;
  bool special = false;
  std::uint32_t letters_before = 0;  // that belong to it, of the token before
  bool certain = false;
  std::optional<OtherNumbers> other;

  bool found() const { return last > first; }
};

/// By the first of the ranked rules that fits; technical tokens are marked.
Numbers find_numbers(const Name& name, const Surroundings& surroundings);

}  // namespace quorvel::reader
