#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace quorvel {

/// What a rule does where another file has the new name already.
enum class Existing : std::uint8_t { Ask = 0, KeepBoth = 1, Skip = 2, KeepBetter = 3 };

struct ExistingWords {
  Existing existing;
  std::string_view word;     // in rule files and in the terminal
  std::string_view caption;  // for the user
};

inline constexpr auto existing_words = std::to_array<ExistingWords>({
    {Existing::Ask, "ask", "Ask whether to replace it"},
    {Existing::KeepBoth, "keep-both", "Keep both: a number behind the new name"},
    {Existing::Skip, "skip", "Leave the new file where it is"},
    {Existing::KeepBetter, "better", "Keep the better one, the other goes to the trash"},
});

/// Ask for a word that is none of theirs.
constexpr Existing existing_named(std::string_view word) {
  const auto* const found = std::ranges::find(existing_words, word, &ExistingWords::word);
  return found == existing_words.end() ? Existing::Ask : found->existing;
}

constexpr std::string_view existing_word(Existing existing) {
  return existing_words[static_cast<std::size_t>(existing)].word;
}

}  // namespace quorvel
