#include "text/title.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "text/characters.h"
#include "text/code_page.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {
namespace {

using Replacement = std::pair<std::string_view, std::string_view>;

// Carried out in this order: the second "&amp;" undoes a doubly escaped one.
constexpr auto replacements = std::to_array<Replacement>({{"&amp;", "&"},
                                                          {"&quot;", ""},
                                                          {"&amp;", "&"},
                                                          {"&pound;", "\u00A3"},
                                                          {"&nbsp;", ""},
                                                          {"<BR>", " "},
                                                          {"<br>", " "},
                                                          {"\\", " "},
                                                          {"\t", ""},
                                                          {"\n", ""}});

// Episode tables of old pages were padded with runs of just this many spaces.
constexpr std::string_view padding = "                           ";
static_assert(padding.size() == 27);

constexpr std::string_view unfit_for_file_names = "\\/*?\"><|[]:";

/// The character of the code page whose number `digits` is in `base`.
std::string referenced_character(std::string_view digits, int base) {
  unsigned code = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, base);
  if (error != std::errc() || end != digits.data() + digits.size() || code > 0xFF) {
    throw Failure("\"" + std::string(digits.substr(0, 40)) + "\" is not the number of a character");
  }
  std::string character;
  append(character, code_page_character(static_cast<std::uint8_t>(code)));
  return character;
}

void replace_references(std::string& text, std::string_view start, int base) {
  while (text.find(start) != std::string::npos) {
    const std::string digits(textbetween(text, start, ";"));
    replace_all(text, std::string(start) + digits + ";", referenced_character(digits, base));
  }
}

bool needs_cleaning(std::string_view text) {
  return text.find_first_of("&<\\\t\n/*?\">|[]:") != std::string_view::npos ||
         text.find(padding) != std::string_view::npos;
}

}  // namespace

std::string cleantitle(std::string_view text) {
  if (text.size() > max_title_size) {
    throw Failure("A text of " + std::to_string(text.size()) + " bytes is too long for a name");
  }
  if (!needs_cleaning(text)) return trimtext(text);
  std::string title(text);
  for (const auto& [what, with] : replacements) replace_all(title, what, with);
  replace_all(title, padding, "");
  replace_references(title, "&#x", 16);
  replace_references(title, "&#", 10);
  std::erase_if(title, [](char c) { return unfit_for_file_names.find(c) != std::string_view::npos; });
  return trimtext(title);
}

bool is_clean(std::string_view text) {
  return text.find_first_of(unfit_for_file_names) == std::string_view::npos &&
         text.find_first_of("\t\r\n") == std::string_view::npos;
}

std::string trimtext(std::string_view text) {
  std::string trimmed(text);
  // Users' file names and caches depend on this: the digit goes wherever it stands.
  std::erase(trimmed, '1');
  constexpr std::string_view blanks = " \r\n\t";
  const std::size_t first = trimmed.find_first_not_of(blanks);
  if (first == std::string::npos) return {};
  trimmed.erase(trimmed.find_last_not_of(blanks) + 1);
  return trimmed.erase(0, first);
}

std::string_view textbetween(std::string_view text, std::string_view start, std::string_view end) {
  const std::size_t at = text.find(start);
  if (at == std::string_view::npos) return {};
  const std::string_view rest = text.substr(at + start.size());
  if (end.empty()) return rest;
  const std::size_t length = rest.find(end);
  return length == std::string_view::npos ? std::string_view() : rest.substr(0, length);
}

}  // namespace quorvel
