#include "text/json_text.h"

#include "text/characters.h"

namespace quorvel {

void append_json(std::string& json, std::string_view value) {
  constexpr std::string_view digits = "0123456789abcdef";
  constexpr char32_t replacement = 0xFFFD;
  json += '"';
  for (const char32_t character : decode(value)) {
    if (character == '"' || character == '\\') {
      json += '\\';
      append(json, character);
    } else if (character < 0x20) {
      json.append("\\u00").append(1, digits[character >> 4]).append(1, digits[character & 0xF]);
    } else {
      const bool stray = character >= stray_byte_base && character <= stray_byte_base + 0xFF;
      append(json, stray ? replacement : character);
    }
  }
  json += '"';
}

}  // namespace quorvel
