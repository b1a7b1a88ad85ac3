#include "text/wildcard.h"

#include <string>

#include "text/characters.h"

namespace quorvel {
namespace {

bool in_list(char32_t character, std::u32string_view list) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    const bool is_range = i + 2 < list.size() && list[i + 1] == U'-';
    if (is_range ? list[i] <= character && character <= list[i + 2] : list[i] == character) return true;
    if (is_range) i += 2;
  }
  return false;
}

/// Whether the pattern element at `at` describes `character`; `at` then points past it.
bool element_matches(char32_t character, std::u32string_view pattern, std::size_t& at) {
  const char32_t element = pattern[at++];
  if (element == U'?') return true;
  if (element == U'#') return character >= U'0' && character <= U'9';
  const std::size_t end = element == U'[' ? pattern.find(U']', at) : std::u32string_view::npos;
  if (end == std::u32string_view::npos) return element == character;
  const std::u32string_view list = pattern.substr(at, end - at);
  at = end + 1;
  return in_list(character, list);
}

}  // namespace

bool matches(std::string_view subject, std::string_view pattern) {
  if (pattern == "*") return true;
  const std::u32string characters = decode(subject);
  const std::u32string elements = decode(pattern);
  // When a comparison fails, only the last "*" needs to take in one more character: an earlier one could not do better.
  std::size_t at = 0, element = 0, star = std::u32string::npos, star_at = 0;
  while (at < characters.size()) {
    if (element < elements.size() && elements[element] == U'*') {
      star = ++element;
      star_at = at;
      continue;
    }
    std::size_t next = element;
    if (element < elements.size() && element_matches(characters[at], elements, next)) {
      element = next;
      ++at;
    } else if (star != std::u32string::npos) {
      element = star;
      at = ++star_at;
    } else {
      return false;
    }
  }
  return elements.find_first_not_of(U'*', element) == std::u32string::npos;
}

}  // namespace quorvel
