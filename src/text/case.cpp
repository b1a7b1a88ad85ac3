#include "text/case.h"

#include <utf8proc.h>

#include "text/characters.h"

namespace quorvel {

std::string lower_case(std::string_view text) {
  if (is_ascii(text)) return lower_ascii(text);
  std::u32string characters = decode(text);
  for (char32_t& character : characters) {
    character = static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(character)));
  }
  return encode(characters);
}

}  // namespace quorvel
