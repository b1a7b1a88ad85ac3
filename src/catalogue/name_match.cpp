#include "catalogue/name_match.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

#include "text/characters.h"
#include "text/cut.h"
#include "text/unicode_forms.h"

namespace quorvel {
namespace {

/// Beyond that no name is compared letter by letter.
constexpr std::size_t max_compared = 200;

constexpr auto articles = std::to_array<std::string_view>(
    {"the", "a", "an", "der", "die", "das", "le", "la", "les", "el", "los", "las", "il", "lo"});

/// Within a word, where it changes nothing: "Marvel's", "S.H.I.E.L.D." keep their letters together.
bool is_silent(char32_t character) {
  return character == U'\'' || character == U'\u2019' || character == U'\u2018' || character == U'`';
}

std::vector<std::string_view> words_of(std::string_view key) {
  return split(key, " ");
}

std::string without_articles(std::string_view key) {
  std::string rest;
  for (const std::string_view word : words_of(key)) {
    if (std::find(articles.begin(), articles.end(), word) == articles.end()) rest.append(word).append(" ");
  }
  return rest.empty() ? std::string(key) : rest;
}

std::string without_blanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

/// How many letters must be put in, left out, changed, or exchanged with the next one.
std::size_t changes_between(std::u32string_view one, std::u32string_view other) {
  std::vector<std::size_t> before_last, last(other.size() + 1), row(other.size() + 1);
  std::iota(last.begin(), last.end(), 0U);
  for (std::size_t i = 1; i <= one.size(); ++i) {
    row[0] = i;
    for (std::size_t k = 1; k <= other.size(); ++k) {
      row[k] = std::min({last[k] + 1, row[k - 1] + 1, last[k - 1] + (one[i - 1] == other[k - 1] ? 0U : 1U)});
      const bool exchanged = i > 1 && k > 1 && one[i - 1] == other[k - 2] && one[i - 2] == other[k - 1];
      if (exchanged) row[k] = std::min(row[k], before_last[k - 2] + 1);
    }
    before_last = last;
    std::swap(last, row);
  }
  return last[other.size()];
}

bool holds_in_order(std::string_view all, std::string_view some) {
  const std::vector<std::string_view> wanted = words_of(some);
  std::size_t next = 0;
  for (const std::string_view word : words_of(all)) {
    if (next < wanted.size() && word == wanted[next]) ++next;
  }
  return next == wanted.size();
}

}  // namespace

std::string match_key(std::string_view name) {
  std::string key;
  bool in_word = false;
  const auto begin_word = [&] {
    if (!in_word && !key.empty()) key += ' ';
    in_word = true;
  };
  for (const char32_t character : decode(folded(name))) {
    if (character == U'&' || character == U'+') {
      in_word = false;
      begin_word();
      key += "and";
      in_word = false;
    } else if (is_letter_or_digit(character)) {
      begin_word();
      append(key, character);
    } else if (!is_silent(character)) {
      in_word = false;
    }
  }
  return key;
}

int likeness(const std::string& key, const std::string& other) {
  if (key.empty() || other.empty()) return 0;
  if (key == other) return 100;
  const std::string one = without_articles(key), two = without_articles(other);
  if (one == two) return 95;
  const std::string glued = without_blanks(one), glued_other = without_blanks(two);
  if (glued == glued_other) return 90;
  const std::u32string letters = decode(glued), other_letters = decode(glued_other);
  const std::size_t longer = std::max(letters.size(), other_letters.size());
  const bool has_digits = glued.find_first_of("0123456789") != std::string::npos ||
                          glued_other.find_first_of("0123456789") != std::string::npos;
  // A changed digit is another show; a changed letter in a short name too.
  if (longer <= max_compared && !has_digits) {
    const std::size_t changes = changes_between(letters, other_letters);
    if (changes * 6 <= longer) return std::max(60, 85 - static_cast<int>(changes) * 5);
  }
  return holds_in_order(one, two) || holds_in_order(two, one) ? 50 : 0;
}

}  // namespace quorvel
