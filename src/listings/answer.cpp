#include "listings/answer.h"

#include "text/characters.h"
#include "text/code_page.h"
#include "text/failure.h"

namespace quorvel {
namespace {

std::string decode_bytes(std::string_view bytes) {
  std::string decoded;
  const auto bits = [&](std::size_t at, unsigned mask) -> char32_t {
    if (at >= bytes.size()) throw Failure("a character is cut off at the end");
    return static_cast<unsigned char>(bytes[at]) & mask;
  };
  for (std::size_t at = 0; at < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    if (lead >= 224 && lead <= 239) {
      const char32_t character = bits(at, 15) << 12 | bits(at + 1, 63) << 6 | bits(at + 2, 63);
      if (character < 0x80) throw Failure("an ASCII character stands in three bytes");
      if (character >= 0xD800 && character <= 0xDFFF) throw Failure("half a character stands alone");
      append(decoded, character);
      at += 3;
    } else if (lead >= 194 && lead <= 223) {
      append(decoded, bits(at, 31) << 6 | bits(at + 1, 63));
      at += 2;
    } else {
      append(decoded, code_page_character(lead));
      ++at;
    }
  }
  return decoded;
}

}  // namespace

std::string UTF8Decode(std::string_view text, Log& log) {
  const std::string bytes = to_code_page(text);
  if (bytes.size() < 2) return {};
  try {
    return decode_bytes(bytes);
  } catch (const Failure& failure) {
    log.debug_log(std::string("Error converting string from UTF-8: ") + failure.what(), LogLevel::Normal);
    return std::string(text);
  }
}

}  // namespace quorvel
