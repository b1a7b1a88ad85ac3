#pragma once

#include <compare>
#include <string_view>

namespace quorvel {

/// How good a picture a file's name promises.
struct Quality {
  int lines = 0;   // of the picture's height; 0 when the name does not say
  int source = 0;  // the better the higher, from a camera in the cinema to the disc itself; 0 when it does not say

  /// By the lines, and where these are the same by the source. Unordered where one of the names does not say what
  /// would have to be compared.
  std::partial_ordering operator<=>(const Quality& other) const;
  bool operator==(const Quality& other) const = default;
};

/// What the name of an episode's file, or its path, says of it.
Quality quality_in(std::string_view path);

}  // namespace quorvel
