#include "text/code_page.h"

#include <algorithm>
#include <array>

#include "text/characters.h"

namespace quorvel {
namespace {

constexpr std::uint8_t first_special = 0x80;
constexpr auto specials =
    std::to_array<char32_t>({0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                             0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                             0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178});

/// The byte of one character; negative when the code page does not hold it.
int code_of(char32_t character) {
  if (character < first_special || (character >= 0xA0 && character <= 0xFF)) return static_cast<int>(character);
  const auto* const special = std::find(specials.begin(), specials.end(), character);
  return special == specials.end() ? -1 : static_cast<int>(first_special + (special - specials.begin()));
}

bool is_stray_byte(char32_t character) {
  return character >= stray_byte_base + 0x80 && character <= stray_byte_base + 0xFF;
}

}  // namespace

char32_t code_page_character(std::uint8_t code) {
  const auto special = static_cast<std::size_t>(code) - first_special;
  return code >= first_special && special < specials.size() ? specials[special] : code;
}

std::string from_code_page(std::string_view bytes) {
  if (is_ascii(bytes)) return std::string(bytes);
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 4);
  for (const char byte : bytes) append(text, code_page_character(static_cast<std::uint8_t>(byte)));
  return text;
}

std::string to_code_page(std::string_view text) {
  if (is_ascii(text)) return std::string(text);
  std::string bytes;
  for (const char32_t character : decode(text)) {
    const int code = is_stray_byte(character) ? static_cast<int>(character - stray_byte_base) : code_of(character);
    bytes += code < 0 ? '?' : static_cast<char>(code);
  }
  return bytes;
}

bool fits_code_page(std::string_view text) {
  if (is_ascii(text)) return true;
  const std::u32string characters = decode(text);
  return std::all_of(characters.begin(), characters.end(), [](char32_t character) { return code_of(character) >= 0; });
}

}  // namespace quorvel
