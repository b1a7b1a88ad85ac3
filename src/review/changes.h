#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvel {

/// A part of a new name, and whether the old name lacks it.
struct NamePart {
  std::string text;
  bool is_new = false;
  bool operator==(const NamePart&) const = default;
};

/// The new name in parts that follow one another. Words and numbers count, in their order; case and what stands between
/// them do not. Time: the product of the names' numbers of words.
std::vector<NamePart> changes(std::string_view old_name, std::string_view new_name);

}  // namespace quorvel
