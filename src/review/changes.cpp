#include "review/changes.h"

#include <algorithm>
#include <cstddef>

#include "text/case.h"
#include "text/characters.h"

namespace quorvel {
namespace {

struct Word {
  std::size_t from = 0, to = 0;  // in the name
  std::string text;              // in lower case
};

/// Bytes of letters beyond ASCII belong to words.
bool is_of_word(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 0x80 || is_digit(byte) || is_ascii_letter(byte);
}

std::vector<Word> words_of(std::string_view name) {
  std::vector<Word> words;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t from = at;
    while (at < name.size() && is_of_word(name[at])) ++at;
    if (at > from) words.push_back({from, at, lower_case(std::string(name.substr(from, at - from)))});
    while (at < name.size() && !is_of_word(name[at])) ++at;
  }
  return words;
}

/// Which of `ours` belong to a longest common subsequence with `theirs`.
std::vector<bool> kept_of(const std::vector<Word>& ours, const std::vector<Word>& theirs) {
  const std::size_t width = theirs.size() + 1;
  std::vector<std::size_t> lengths((ours.size() + 1) * width);  // of what follows the places
  for (std::size_t i = ours.size(); i-- > 0;) {
    for (std::size_t j = theirs.size(); j-- > 0;) {
      lengths[i * width + j] = ours[i].text == theirs[j].text
                                   ? lengths[(i + 1) * width + j + 1] + 1
                                   : std::max(lengths[(i + 1) * width + j], lengths[i * width + j + 1]);
    }
  }
  std::vector<bool> kept(ours.size());
  for (std::size_t i = 0, j = 0; i < ours.size() && j < theirs.size();) {
    if (ours[i].text == theirs[j].text) {
      kept[i++] = true;
      ++j;
    } else {
      lengths[(i + 1) * width + j] >= lengths[i * width + j + 1] ? ++i : ++j;
    }
  }
  return kept;
}

}  // namespace

std::vector<NamePart> changes(std::string_view old_name, std::string_view new_name) {
  const std::vector<Word> words = words_of(new_name);
  const std::vector<bool> kept = kept_of(words, words_of(old_name));
  std::vector<NamePart> parts;
  const auto add = [&](std::string_view text, bool is_new) {
    if (text.empty()) return;
    if (parts.empty() || parts.back().is_new != is_new) parts.push_back({"", is_new});
    parts.back().text += text;
  };
  std::size_t at = 0;
  for (std::size_t i = 0; i < words.size(); ++i) {
    // What stands between two new words is part of the change.
    const bool is_inside = i > 0 && !kept[i - 1] && !kept[i];
    add(new_name.substr(at, words[i].from - at), is_inside);
    add(new_name.substr(words[i].from, words[i].to - words[i].from), !kept[i]);
    at = words[i].to;
  }
  add(new_name.substr(at), false);
  return parts;
}

}  // namespace quorvel
