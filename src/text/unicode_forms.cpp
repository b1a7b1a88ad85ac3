#include "text/unicode_forms.h"

#include <utf8proc.h>

#include <cstdlib>
#include <memory>

#include "text/case.h"
#include "text/characters.h"

namespace quorvel {
namespace {

std::string mapped(std::string_view text, int options) {
  utf8proc_uint8_t* bytes = nullptr;
  const utf8proc_ssize_t size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()), static_cast<utf8proc_ssize_t>(text.size()),
                   &bytes, static_cast<utf8proc_option_t>(options));
  const std::unique_ptr<utf8proc_uint8_t, void (*)(void*)> owned(bytes, std::free);
  return size < 0 ? std::string(text)
                  : std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

}  // namespace

std::string composed(std::string_view text) {
  if (is_ascii(text)) return std::string(text);
  return mapped(text, UTF8PROC_STABLE | UTF8PROC_COMPOSE);
}

std::string folded(std::string_view text) {
  if (is_ascii(text)) return lower_case(text);
  return mapped(text, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT | UTF8PROC_CASEFOLD | UTF8PROC_STRIPMARK |
                          UTF8PROC_IGNORE);
}

bool is_letter_or_digit(char32_t character) {
  const utf8proc_category_t category = utf8proc_category(static_cast<utf8proc_int32_t>(character));
  return category >= UTF8PROC_CATEGORY_LU && category <= UTF8PROC_CATEGORY_NO;
}

}  // namespace quorvel
