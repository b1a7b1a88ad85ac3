#include "naming/mask.h"

#include <algorithm>

#include "text/cut.h"

namespace quorvel {
namespace {

std::string two_digits(int number) {
  const std::string digits = std::to_string(number);
  return digits.size() < 2 ? "0" + digits : digits;
}

/// What a value brings along is no token, even where it looks like one.
constexpr char masked_open = '\x01', masked_close = '\x02';

std::string masked(std::string value) {
  std::ranges::replace(value, '[', masked_open);
  std::ranges::replace(value, ']', masked_close);
  return value;
}

std::string unmasked(std::string text) {
  std::ranges::replace(text, masked_open, '[');
  std::ranges::replace(text, masked_close, ']');
  return text;
}

std::string expand_show_and_season(std::string_view path, const MaskValues& values) {
  std::string text(path);
  replace_all(text, "[show]", masked(values.show));
  replace_all(text, "[s]", std::to_string(values.season));
  replace_all(text, "[ss]", two_digits(values.season));
  return text;
}

/// Replaces an episode's token wherever it stands.
void replace_episodes(std::string& text, std::string_view token, const MaskValues& values, std::string (*digits)(int)) {
  for (std::size_t at = 0; (at = text.find(token, at)) != std::string::npos;) {
    const bool has_mark = at > 0 && (text[at - 1] == 'E' || text[at - 1] == 'e');
    std::string numbers = digits(values.episode);
    for (const int more : values.more_episodes) {
      numbers += '-';
      if (has_mark) numbers += text[at - 1];
      numbers += digits(more);
    }
    text.replace(at, token.size(), numbers);
    at += numbers.size();
  }
}

std::string plain_digits(int number) {
  return std::to_string(number);
}

}  // namespace

std::string expand_folder(std::string_view path, const MaskValues& values) {
  return unmasked(expand_show_and_season(path, values));
}

std::string expand_name(std::string_view mask, const MaskValues& values) {
  std::string text = expand_show_and_season(mask, values);
  replace_episodes(text, "[e]", values, plain_digits);
  replace_episodes(text, "[ee]", values, two_digits);
  replace_all(text, "[title]", masked(values.title));
  return unmasked(text);
}

}  // namespace quorvel
