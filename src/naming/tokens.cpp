#include "naming/tokens.h"

#include <algorithm>

#include "text/case.h"
#include "text/characters.h"

namespace quorvel {
namespace {

using enum TokenKind;

constexpr Token all_tokens[] = {
    {"[show]", "the name of the show", Always},
    {"[s]", "the season", Always},
    {"[ss]", "the season with at least two digits", Always},
    {"[e]", "the episode", Always, false, true},
    {"[ee]", "the episode with at least two digits", Always, false, true},
    {"[title]", "the title of the episode", Always, false, true},
    {"[year]", "the year in which the show began", Show},
    {"[country]", "the show's country", Show},
    {"[id]", "the show's number at TVmaze", Show},
    {"[date]", "the day of the broadcast", Episode, true, true},
    {"[dated]", "the day of the broadcast, where the file's name goes by it", Episode, true, true},
    {"[dated-year]", "the year of that day", Episode},
    {"[abs]", "the episode's number, counted over all seasons", Episode, true, true},
    {"[S]", "the season with as many digits as the longest one has", Episode},
    {"[E]", "the episode with as many digits as the longest one has", Episode, false, true},
    {"[ee-]", "the first and the last of several episodes", Episode, false, true},
    {"[ee+]", "each of several episodes, behind an E without a dash", Episode, false, true},
    {"[resolution]", "the resolution", FileName},
    {"[source]", "the source", FileName},
    {"[group]", "who released it", FileName},
    {"[part]", "the part, of a mini-series", FileName, true, true},
    {"[old]", "the file's name as it was, without its ending", FileName, true, true},
};

const Token* token_named(std::string_view text) {
  const auto* const found = std::ranges::find(all_tokens, text, &Token::text);
  return found == std::end(all_tokens) ? nullptr : found;
}

std::string quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

/// A word in brackets; figures, blanks and dots in them are what people put into names.
bool is_like_a_token(std::string_view word) {
  return word.size() > 2 && std::ranges::all_of(word.substr(1, word.size() - 2), [](char character) {
           return is_ascii_letter(character) || character == '-' || character == '+';
         });
}

void remark_on_words(std::string_view text, bool in_folder, std::vector<std::string>& remarks) {
  for (std::size_t at = 0; (at = text.find('[', at)) != std::string_view::npos; ++at) {
    const std::size_t end = text.find_first_of("[]", at + 1);
    if (end == std::string_view::npos || text[end] == '[') continue;
    const std::string_view word = text.substr(at, end + 1 - at);
    const Token* const token = token_named(word);
    if (token != nullptr && in_folder && !token->in_folder) {
      remarks.push_back(quoted(word) + " means nothing in a folder and stays as it is.");
    }
    if (token != nullptr || !is_like_a_token(word)) continue;
    const Token* const meant = token_named(lower_case(word));
    remarks.push_back(quoted(word) + " is no token and stays as it is." +
                      (meant == nullptr ? "" : " Is " + quoted(meant->text) + " meant?"));
  }
}

/// A separator ends what is in braces.
void remark_on_braces(std::string_view text, std::vector<std::string>& remarks) {
  int open = 0;
  bool closes_nothing = false, stays_open = false;
  for (const char character : text) {
    if (character == '{') ++open;
    if (character == '}' && --open < 0) closes_nothing = true, open = 0;
    if (character == '/' || character == '\\') stays_open = stays_open || open > 0, open = 0;
  }
  if (stays_open || open > 0) remarks.emplace_back("A \"{\" has no \"}\" behind it and stays as it is.");
  if (closes_nothing) remarks.emplace_back("A \"}\" has no \"{\" before it and stays as it is.");
}

}  // namespace

const std::span<const Token> tokens = all_tokens;

std::vector<std::string> remarks_on_folder(std::string_view folder) {
  std::vector<std::string> remarks;
  remark_on_words(folder, true, remarks);
  remark_on_braces(folder, remarks);
  return remarks;
}

std::vector<std::string> remarks_on_mask(std::string_view mask) {
  std::vector<std::string> remarks;
  remark_on_words(mask, false, remarks);
  remark_on_braces(mask, remarks);
  if (std::ranges::none_of(
          all_tokens, [&](const Token& token) { return token.tells_episode && mask.find(token.text) != mask.npos; })) {
    remarks.emplace_back(
        "No token tells the episode: all would get the same name, and only the first file can have it.");
  }
  return remarks;
}

}  // namespace quorvel
