#include "fuzz_support.h"
#include "listings/answer.h"
#include "naming/service_names.h"
#include "text/characters.h"
#include "text/code_page.h"

using namespace quorvel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = from_code_page(fuzz::text_of(data, size));
  fuzz::NoLog log;
  const std::string decoded = UTF8Decode(text, log);
  for (const char32_t character : decode(decoded)) {
    fuzz::check(character < 0xD800 || character > 0xDFFF, "the result is good UTF-8");
    if (character >= 0x80) continue;
    fuzz::check(text.find(static_cast<char>(character)) != std::string::npos, "no ASCII character is made");
  }
  const std::string cleaned = without_control_characters(decoded, log);
  for (const char* mark : {"\x1B", "\x7F", "\u202E", "\u2066"}) {
    fuzz::check(cleaned.find(mark) == std::string::npos, "no mark that misleads is left");
  }
  return 0;
}
