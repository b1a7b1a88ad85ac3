#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Windows-1252, the single-byte code page of the rule and cache files, of HTTP bodies and of the query of an address.
/// The five bytes that it leaves open (81 8D 8F 90 9D) stand for the code points of the same number, so that every
/// byte survives the way into a text and back. Table: Unicode's mapping file CP1252.TXT.
namespace quorvel {

char32_t code_page_character(std::uint8_t code);

std::string from_code_page(std::string_view bytes);

/// One byte per character; "?" for a character that the code page does not hold. A stray byte of a file name stands
/// for itself.
std::string to_code_page(std::string_view text);

/// Whether from_code_page(to_code_page(text)) is `text` again.
bool fits_code_page(std::string_view text);

}  // namespace quorvel
