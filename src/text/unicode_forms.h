#pragma once

#include <string>
#include <string_view>

/// Unicode's normal forms; bytes that are no UTF-8 stay as they are, with the whole text.
namespace quorvel {

/// Letters and their marks as one character where there is one (NFC).
std::string composed(std::string_view text);

/// Without case, marks and other differences that only the eye sees (NFKD, folded).
std::string folded(std::string_view text);

/// Whether Unicode counts the character among the letters, the digits, or the marks on them.
bool is_letter_or_digit(char32_t character);

}  // namespace quorvel
