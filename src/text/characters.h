#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts are UTF-8, but a file name may hold any bytes. A byte that is no part of a valid sequence is one character of
/// its own, U+DC00 plus the byte, so that decoding and encoding again gives back every byte.
namespace quorvel {

inline constexpr char32_t stray_byte_base = 0xDC00;

std::u32string decode(std::string_view text);
std::string encode(std::u32string_view characters);

/// Appends the UTF-8 form of one character; a stray byte as that byte.
void append(std::string& text, char32_t character);

/// The number of characters.
std::size_t length(std::string_view text);

bool is_ascii(std::string_view text);

// Of ASCII alone: no byte of a longer character is any of these.

constexpr bool is_digit(char32_t character) {
  return character >= '0' && character <= '9';
}

constexpr bool is_capital(char32_t character) {
  return character >= 'A' && character <= 'Z';
}

constexpr bool is_ascii_letter(char32_t character) {
  return is_capital(character & ~U' ');
}

/// In lower case as far as it is ASCII: every place in it stays what it was.
std::string lower_ascii(std::string_view text);

}  // namespace quorvel
