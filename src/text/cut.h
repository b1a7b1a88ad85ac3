#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Splitting and replacing text.
namespace quorvel {

/// The pieces between the separators, views into `text`; one piece, `text` itself, when there is no separator.
std::vector<std::string_view> split(std::string_view text, std::string_view separator);

/// Without the spaces at both ends.
std::string_view trim(std::string_view text);

/// Whether an answer is a list from its first bracket to its last. One that lost its start or its end on the way could
/// still hold values, but those of another show or episode, and a file would get a wrong name.
bool is_whole_list(std::string_view answer);

/// Every occurrence, from the left, each searched for after the one before.
void replace_all(std::string& text, std::string_view what, std::string_view with);

}  // namespace quorvel
