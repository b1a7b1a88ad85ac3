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

/// Every occurrence, from the left, each searched for after the one before.
void replace_all(std::string& text, std::string_view what, std::string_view with);

}  // namespace quorvel
