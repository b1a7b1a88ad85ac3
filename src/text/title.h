#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Making a name out of text from the listings service or from a file name.
namespace quorvel {

/// A longer text is no name; the bound keeps the work on nested character references small.
inline constexpr std::size_t max_title_size = 65536;

/// Entities decoded, what file names cannot hold removed, and trimmed as trimtext does.
/// Throws Failure on a character reference that is no number of the code page or lacks its ";", and on a text of more
/// than max_title_size bytes.
std::string cleantitle(std::string_view text);

/// Whether cleantitle would leave all its characters but the digit 1: none that file names cannot hold, no tab and no
/// line break.
bool is_clean(std::string_view text);

/// Without any digit 1, then without spaces, CR, LF and TAB at both ends.
std::string trimtext(std::string_view text);

/// What stands between the first `start` and the first `end` after it.
/// Empty when `start` is missing, when `end` is missing, or when nothing stands between them;
/// with an empty `end`, everything after `start`.
std::string_view textbetween(std::string_view text, std::string_view start, std::string_view end);

}  // namespace quorvel
