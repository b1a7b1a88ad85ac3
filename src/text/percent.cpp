#include "text/percent.h"

#include "text/characters.h"
#include "text/cut.h"

namespace quorvel {

std::string percent_encoded(std::string_view bytes) {
  constexpr std::string_view hexadecimal = "0123456789ABCDEF";
  std::string encoded;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (is_digit(code) || is_ascii_letter(code)) {
      encoded += byte;
    } else {
      encoded += {'%', hexadecimal[code >> 4U], hexadecimal[code & 15U]};
    }
  }
  return encoded;
}

std::string query_encoded(std::string_view bytes) {
  std::string encoded = percent_encoded(bytes);
  replace_all(encoded, "%20", "+");  // a "%" of the text is "%25" by now
  return encoded;
}

}  // namespace quorvel
