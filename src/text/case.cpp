#include "text/case.h"

#include <utf8proc.h>

#include "text/characters.h"

namespace quorvel {

std::string lower_case(std::string_view text) {
  std::string lowered(text);
  bool ascii = true;
  for (char& byte : lowered) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte + ('a' - 'A'));
    ascii = ascii && static_cast<unsigned char>(byte) < 0x80;
  }
  if (ascii) return lowered;
  std::u32string characters = decode(lowered);
  for (char32_t& character : characters) {
    character = static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(character)));
  }
  return encode(characters);
}

}  // namespace quorvel
