#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Making a name out of a text of the listings service or of a file name.
namespace quorvel {

/// A longer text is no name; the bound keeps the work on nested character references small.
inline constexpr std::size_t longest_title = 65536;

/// Entities decoded, what file names cannot hold removed, and trimmed as trimtext does.
/// Throws Failure on a character reference that is no number of the code page or lacks its ";", and on a text of more
/// than longest_title bytes.
std::string cleantitle(std::string_view text);

/// Without any digit 1, then without blanks, CR, LF and TAB at both ends.
std::string trimtext(std::string_view text);

/// What stands between the first `start` and the first `end` after it.
/// Empty when `start` is missing, when `end` is missing, or when nothing stands between them;
/// with an empty `end`, everything after `start`.
std::string_view textbetween(std::string_view text, std::string_view start, std::string_view end);

}  // namespace quorvel
