#pragma once

#include <string_view>

namespace quorvel {

/// Whether an answer of the service is a list from its first bracket to its last. One that lost its start or its end on
/// the way could still hold values, but those of another show or episode, and a file would get a wrong name.
inline bool is_whole_list(std::string_view answer) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = answer.find_first_not_of(blanks);
  return first != std::string_view::npos && answer[first] == '[' && answer[answer.find_last_not_of(blanks)] == ']';
}

}  // namespace quorvel
