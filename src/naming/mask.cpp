#include "naming/mask.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "text/cut.h"

namespace quorvel {
namespace {

std::string with_digits(int number, int least) {
  std::string digits = std::to_string(number);
  if (digits.size() < static_cast<std::size_t>(least))
    digits.insert(0, static_cast<std::size_t>(least) - digits.size(), '0');
  return digits;
}

/// What a value brings along is no token and no brace, even where it looks like one.
constexpr std::string_view special = "[]{}", masked_special = "\x01\x02\x03\x04";

std::string exchanged(std::string text, std::string_view from, std::string_view to) {
  for (char& character : text) {
    if (const std::size_t at = from.find(character); at != std::string_view::npos) character = to[at];
  }
  return text;
}

std::string masked(std::string value) {
  return exchanged(std::move(value), special, masked_special);
}

std::string unmasked(std::string text) {
  return exchanged(std::move(text), masked_special, special);
}

/// Each episode's number, the mark in front of the token repeated: "02-E03" behind an "E".
std::string joined(const std::vector<int>& episodes, std::string_view mark, std::string_view between, int digits) {
  std::string text;
  for (const int episode : episodes) {
    if (!text.empty()) text.append(between).append(mark);
    text += with_digits(episode, digits);
  }
  return text;
}

/// Replaces an episode's token wherever it stands.
void replace_episodes(std::string& text, std::string_view token, const std::vector<int>& episodes, int digits,
                      std::string_view between = "-") {
  for (std::size_t at = 0; (at = text.find(token, at)) != std::string::npos;) {
    const bool has_mark = at > 0 && (text[at - 1] == 'E' || text[at - 1] == 'e');
    const std::string mark = has_mark ? text.substr(at - 1, 1) : "";
    // Digits that touch would be one number.
    const std::string numbers = joined(episodes, mark, mark.empty() ? "-" : between, digits);
    text.replace(at, token.size(), numbers);
    at += numbers.size();
  }
}

struct Fact {
  std::string_view token;
  std::string NameFacts::*value;
};
constexpr Fact facts[] = {{"[year]", &NameFacts::year},
                          {"[country]", &NameFacts::country},
                          {"[id]", &NameFacts::id},
                          {"[date]", &NameFacts::date},
                          {"[dated]", &NameFacts::named_date},
                          {"[dated-year]", &NameFacts::named_year},
                          {"[abs]", &NameFacts::absolute},
                          {"[resolution]", &NameFacts::resolution},
                          {"[source]", &NameFacts::source},
                          {"[group]", &NameFacts::group},
                          {"[part]", &NameFacts::part},
                          {"[old]", &NameFacts::old_name}};
constexpr std::string_view first_and_last = "[ee-]", each_of_them = "[ee+]";

/// Whether every such token in the part of a mask has a value; empty when there is none in it.
std::optional<bool> has_values(std::string_view part, const MaskValues& values) {
  std::optional<bool> all;
  const auto look = [&](std::string_view token, bool has_value) {
    if (part.find(token) != std::string_view::npos) all = all.value_or(true) && has_value;
  };
  for (const Fact& fact : facts) look(fact.token, !(values.facts.*fact.value).empty());
  for (const std::string_view token : {first_and_last, each_of_them})
    look(token, values.season > 0 || values.episode > 0);
  return all;
}

std::string with_facts(std::string text, const MaskValues& values) {
  for (const Fact& fact : facts) {
    if (text.find(fact.token) != std::string::npos) replace_all(text, fact.token, masked(values.facts.*fact.value));
  }
  return text;
}

/// The innermost braces that hold such tokens give way to what they hold, or to nothing.
std::string without_braces(std::string_view mask, const MaskValues& values) {
  std::string text(mask);
  for (std::size_t end = 0; (end = text.find('}', end)) != std::string::npos;) {
    const std::size_t start = end == 0 ? std::string::npos : text.find_last_of("{}/\\", end - 1);
    const std::string part = start == std::string::npos ? "" : text.substr(start + 1, end - start - 1);
    if (part.empty() || text[start] != '{' || !has_values(part, values)) {
      ++end;
      continue;
    }
    std::string left;
    for (const std::string_view choice : split(part, "|")) {
      if (!has_values(choice, values).value_or(true)) continue;
      left = with_facts(std::string(choice), values);
      break;
    }
    text.replace(start, end + 1 - start, left);
    end = start + left.size();
  }
  return text;
}

std::string expand_common(std::string_view mask, const MaskValues& values) {
  std::string text = with_facts(without_braces(mask, values), values);
  replace_all(text, "[S]", with_digits(values.season, values.facts.season_digits));
  replace_all(text, "[show]", masked(values.show));
  replace_all(text, "[s]", std::to_string(values.season));
  replace_all(text, "[ss]", with_digits(values.season, 2));
  return text;
}

}  // namespace

std::string expand_folder(std::string_view path, const MaskValues& values) {
  std::string folder;
  for (std::size_t at = 0; at <= path.size();) {
    const std::size_t end = std::min(path.find_first_of("/\\", at), path.size());
    const std::string_view name = path.substr(at, end - at);
    const std::string made = expand_common(name, values);
    if (name.empty() || !made.empty()) folder.append(made).append(path.substr(end, 1));
    at = end + 1;
  }
  return unmasked(folder);
}

std::string expand_name(std::string_view mask, const MaskValues& values) {
  std::vector<int> episodes{values.episode};
  episodes.insert(episodes.end(), values.more_episodes.begin(), values.more_episodes.end());
  std::string text = expand_common(mask, values);
  replace_episodes(text, "[E]", episodes, values.facts.episode_digits);
  replace_episodes(text, each_of_them, episodes, 2, "");
  replace_episodes(text, first_and_last,
                   episodes.size() > 1 ? std::vector{episodes.front(), episodes.back()} : episodes, 2);
  replace_episodes(text, "[e]", episodes, 1);
  replace_episodes(text, "[ee]", episodes, 2);
  replace_all(text, "[title]", masked(values.title));
  return unmasked(text);
}

}  // namespace quorvel
