#include "text/characters.h"

#include <algorithm>

namespace quorvel {
namespace {

bool is_continuation(unsigned char byte) {
  return (byte & 0xC0) == 0x80;
}

/// The bytes of the valid sequence that starts at `at`, 0 when there is none.
std::size_t sequence_length(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[at + i]); };
  const std::size_t wanted = byte(0) < 0x80   ? 1
                             : byte(0) < 0xC2 ? 0
                             : byte(0) < 0xE0 ? 2
                             : byte(0) < 0xF0 ? 3
                             : byte(0) < 0xF5 ? 4
                                              : 0;
  if (wanted == 0 || at + wanted > text.size()) return 0;
  for (std::size_t i = 1; i < wanted; ++i) {
    if (!is_continuation(byte(i))) return 0;
  }
  const bool overlong = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xF0 && byte(1) < 0x90);
  const bool surrogate = byte(0) == 0xED && byte(1) >= 0xA0;
  const bool too_large = byte(0) == 0xF4 && byte(1) >= 0x90;
  return wanted > 1 && (overlong || surrogate || too_large) ? 0 : wanted;
}

template <typename Take>
void each_character(std::string_view text, Take take) {
  for (std::size_t at = 0; at < text.size();) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t bytes = lead < 0x80 ? 1 : sequence_length(text, at);
    if (bytes <= 1) {
      take(bytes == 1 ? lead : stray_byte_base + lead);
      ++at;
      continue;
    }
    char32_t character = lead & (0x7F >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
      character = character << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3F);
    }
    take(character);
    at += bytes;
  }
}

}  // namespace

std::u32string decode(std::string_view text) {
  std::u32string characters;
  characters.reserve(text.size());
  each_character(text, [&](char32_t character) { characters += character; });
  return characters;
}

std::string encode(std::u32string_view characters) {
  std::string text;
  text.reserve(characters.size());
  for (const char32_t character : characters) append(text, character);
  return text;
}

void append(std::string& text, char32_t character) {
  const auto continuation = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    text += static_cast<char>(character);
  } else if (character >= stray_byte_base + 0x80 && character <= stray_byte_base + 0xFF) {
    text += static_cast<char>(character - stray_byte_base);
  } else if (character < 0x800) {
    text += static_cast<char>(0xC0 | character >> 6);
    continuation(0);
  } else if (character < 0x10000) {
    text += static_cast<char>(0xE0 | character >> 12);
    continuation(6);
    continuation(0);
  } else {
    text += static_cast<char>(0xF0 | character >> 18);
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

std::size_t length(std::string_view text) {
  std::size_t count = 0;
  each_character(text, [&](char32_t) { ++count; });
  return count;
}

bool is_ascii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
}

std::string lower_ascii(std::string_view text) {
  std::string lowered(text);
  for (char& byte : lowered) {
    if (is_capital(byte)) byte = static_cast<char>(byte | ' ');
  }
  return lowered;
}

}  // namespace quorvel
