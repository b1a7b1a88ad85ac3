#include "naming/reader/numbers.h"

#include <algorithm>
#include <array>

#include "naming/reader/bare_numbers.h"
#include "naming/reader/dates.h"
#include "naming/reader/season_rules.h"

namespace quorvel::reader {
namespace {

using Rule = std::optional<Numbers> (*)(const Search&, std::size_t);

/// One in brackets may be that of the file.
std::optional<Numbers> date(const Search& search, std::size_t i, bool outside) {
  if (i > search.name.named) return {};
  const std::optional<DateMark> found = find_date(search.name);
  if (!found || (outside && (!found->certain || search.name.at(found->first).group >= 0))) return {};
  Numbers numbers;
  numbers.first = found->first;
  numbers.last = found->last;
  numbers.date = found->date;
  numbers.certain = found->certain;
  if (found->other) numbers.other = OtherNumbers{.season = {}, .episodes = {}, .absolute = {}, .date = found->other};
  return numbers;
}

std::optional<Numbers> certain_date(const Search& search, std::size_t i) {
  return date(search, i, true);
}

std::optional<Numbers> likely_date(const Search& search, std::size_t i) {
  return date(search, i, false);
}

/// "Season 1/03 - Chapter 8", "Show/Season 1/Show 03 Part 2": what the name begins with, apart from the show, in a
/// season's folder. All other numbers are the title's.
std::optional<Numbers> leading_in_season(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token &token = name.at(i), &next = name.at(i + 1);
  if (i != name.named || !search.around.season || !token.is_plain_number() || token.size() > 3) return {};
  // "5. Folge", but "05 Folge 5" has a title.
  const Token& third = name.at(i + 2);
  const bool numbered = third.is_plain_number();
  const bool counted =
      next.is(OfWord) || (next.is(EpisodeWord | SeasonWord | VolumeWord) && !numbered && !next.follows_spaced_dash());
  if (!name.stands_alone(i) || counted || token.group >= 0) return {};
  const bool whole = token.size() == 3;
  if (whole && (token.number / 100 != *search.around.season || token.number % 100 == 0)) return {};
  if (next.is_number() && next.gap == Dot) return {};
  if (const std::optional<DateMark> day = find_date(name); day && day->first == i) return {};
  const bool padded = whole || name.is_padded(token);
  const bool apart = next.follows_spaced_dash() || next.gap == (Dot | Blank);
  for (std::size_t other = i + 1; !padded && other < name.count(); ++other) {
    const Token& better = name.at(other);  // "24 - 05 - Title"
    if (better.is_number() && better.follows_spaced_dash() && name.is_padded(better)) return {};
  }
  if (!padded && !apart) return {};
  Numbers numbers = episodes_from(search, i, i + 1, search.around.season, token.number, true);
  const bool title =
      next.is_number() && next.follows_spaced_dash() && next.number != token.number + 1;  // "03 - 10 Days"
  const bool goes_on = whole && numbers.episodes.back() / 100 != token.number / 100;
  if (title || goes_on) {
    numbers.episodes = {token.number};
    numbers.last = i + 1;
  }
  if (whole) {
    for (int& each : numbers.episodes) each %= 100;
  }
  return numbers;
}

/// "- 03 - Episode 5", "- 03 - 2 of 2": what follows a number between dashes is its title.
bool is_title_of_number(const Name& name, std::size_t i) {
  return name.at(i).follows_spaced_dash() && name.at(i - 1).is_plain_number() && name.at(i - 1).follows_spaced_dash() &&
         name.at(i - 1).size() >= 2 && !is_year(name.at(i - 1));
}

/// "2of6", "2 of 6".
std::optional<Numbers> one_of_many(const Search& search, std::size_t i) {
  const Name& name = search.name;
  constexpr int most_parts = 12;  // of a mini-series; others count their episodes, too
  const Token &number = name.at(i), &all = name.at(i + 2);
  if (is_title_of_number(name, i)) return {};
  const bool digits = number.is_number() && all.is_number();
  if ((!digits && !number.is(NumberWord)) || !name.at(i + 1).is(OfWord) || number.number > all.number) return {};
  if ((digits && all.size() > 3) || (name.at(i - 1).is(SeasonWord) && !is_weak(name, i - 1))) return {};
  if (name.at(i - 1).is(PartWord)) --i;  // "Part 2 of 3"
  const std::size_t last = i + (name.at(i).is(PartWord) ? 4 : 3);
  const bool is_series = all.number > most_parts || starts_with_group(name);
  if (is_series) return episodes_from(search, i, last, search.season(), number.number, true);
  Numbers numbers = episodes_from(search, i, last, search.season().value_or(1), number.number, true);
  numbers.part = number.number;
  return numbers;
}

/// "Ep 12", "#12", "第12話"; Spanish names count "Cap.102" in season and episode.
std::optional<Numbers> episode_alone(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const std::optional<Mark> episode = episode_at(name, i);
  if (!episode || is_title_of_number(name, i) || (name.at(i).is(EpisodeLetter) && name.at(i).is_glued())) return {};
  if (std::optional<Numbers> one = one_of_many(search, episode->last - 1)) {
    one->first = i;
    return one;
  }
  std::optional<int> season = search.season();
  int number = episode->number;
  if (name.lowered(name.at(i)).starts_with("cap") && number > 100 && number % 100 != 0) {
    season = number / 100;
    Numbers numbers = episodes_from(search, i, episode->last, {}, number, true);
    const Token& to = name.at(episode->last);  // "[Cap.101_103]"
    if (to.is_number() && to.group >= 0 && to.group == name.at(i).group && to.number > numbers.absolute.back() &&
        to.number / 100 == number / 100) {
      for (int next = numbers.absolute.back() + 1; next <= to.number; ++next) numbers.absolute.push_back(next);
      ++numbers.last;
    }
    const std::size_t beyond = std::erase_if(numbers.absolute, [&](int each) { return each / 100 != number / 100; });
    numbers.certain = beyond == 0;  // a range does not go on in the next season
    for (int& each : numbers.absolute) each %= 100;
    numbers.episodes.swap(numbers.absolute);
    numbers.season = season;
    return numbers;
  }
  // "Show Episode 4 (1977)" may be a film's.
  const Token& next = name.at(episode->last);
  const bool dated = is_year(next) && !next.technical && name.at(i).is_word() && name.at(i).size() > 3 && !season;
  Numbers numbers = episodes_from(search, i, episode->last, season, number, !dated || starts_with_group(name));
  // "Show.2016.E04": the year is the show's, or that of a season.
  const Token& before = name.at(i - 1);
  if (!season && i > name.named + 1 && is_year(before) && before.group < 0 && !before.technical) {
    numbers.certain = false;
    numbers.other = OtherNumbers{.season = before.number, .episodes = numbers.absolute, .absolute = {}, .date = {}};
  }
  return numbers;
}

/// "Part 2", "Pt.II", "Part Two".
std::optional<Numbers> part(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token& number = name.at(i + 1);
  if (!name.at(i).is(PartWord) || number.technical) return {};
  if ((!number.is_number() && !number.is(NumberWord)) || number.number == 0 || number.number > 99) return {};
  if ((number.gap & ~(Blank | Dot | Dash)) != 0 || !name.stands_alone(i + 1)) return {};
  if (i < search.last_year) return {};      // a film's
  const Token& before_it = name.at(i - 1);  // "Show 03 Part 2"
  const bool behind_number = before_it.is_plain_number() && !before_it.is_glued() && !is_year(before_it);
  if (behind_number && (name.is_padded(before_it) || starts_with_group(name))) return {};
  for (std::size_t before = 0; before < i; ++before) {
    if (name.at(before).is(ExtraWord)) return {};  // "Deleted Scenes Part 2"
  }
  if (name.at(i).group >= 0 && !search.in_brackets) return {};  // of a title, where a better number stands
  const int season = search.around.season.value_or(1);
  // "Specials/Making Of Part 2", "Show 103 Part 2" may mean something else.
  Numbers numbers =
      episodes_from(search, i, i + 2, season, number.number, season > 0 && !(behind_number && before_it.size() == 3));
  numbers.part = number.number;
  return numbers;
}

/// "SP2", "OVA 1".
std::optional<Numbers> special(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token& number = name.at(i + 1);
  if (!name.at(i).is(SpecialWord) || !number.is_plain_number() || number.size() > 3) return {};
  if (!name.stands_alone(i + 1) || number.follows(Open | Close)) return {};
  // Fan groups count them by themselves; elsewhere they are season 0.
  const std::optional<int> season = starts_with_group(name) ? std::nullopt : std::optional(0);
  Numbers numbers = episodes_from(search, i, i + 2, season, number.number, !number.follows(Dash) && !find_season(name));
  numbers.special = true;
  return numbers;
}

/// "(Part 2)".
std::optional<Numbers> part_in_brackets(const Search& search, std::size_t i) {
  return part({search.name, search.around, search.last_year, true}, i);
}

std::optional<Numbers> standing_out(const Search& search, std::size_t i) {
  return i == search.name.named ? bare_number(search.name, search.around.season, true) : std::nullopt;
}

std::optional<Numbers> bare(const Search& search, std::size_t i) {
  return i == search.name.named ? bare_number(search.name, search.around.season, false) : std::nullopt;
}

/// The first row that fits anywhere in the name wins, and of its places the first.
constexpr Rule rules[] = {
    season_and_episode,
    glued_to_the_show,
    crossed,
    packed,
    dotted,
    episode_and_season,
    season_and_number,
    said_twice,
    leading_in_season,
    certain_date,
    episode_alone,
    one_of_many,
    standing_out,
    special,
    part,
    barely_crossed,
    likely_date,
    run_together,
    bare,
    part_in_brackets,
};

}  // namespace

namespace {

/// "S02E05.5": between two episodes; "S02E05.9.Lives" has a title.
bool is_half(const Name& name, std::size_t next) {
  const Token& half = name.at(next);
  return half.is_plain_number() && half.gap == Dot && half.size() == 1 && name.at(next + 1).gap != Dot;
}

/// "S05E06 (112)", "S01E01-02 (001-002)": as many numbers in brackets, which count over all seasons.
void absolute_behind(const Name& name, Numbers& numbers) {
  const Token& number = name.at(numbers.last);
  if (numbers.episodes.empty() || !number.is_plain_number() || !number.follows(Open) || is_year(number)) return;
  std::vector<int> list{number.number};
  const std::size_t next = more_episodes(name, numbers.last + 1, {}, list);
  if (!name.at(next).follows(Close) || list.size() != numbers.episodes.size()) return;
  numbers.absolute = list;
  numbers.last = next;
  if (numbers.other) numbers.certain = true;  // which of both was meant
}

}  // namespace

Numbers find_numbers(const Name& name, const Surroundings& surroundings) {
  const Search search{name, surroundings, last_year_of(name), false};
  for (const Rule rule : rules) {
    for (std::size_t i = name.named; i < name.count(); ++i) {
      std::optional<Numbers> found = rule(search, i);
      if (!found) continue;
      Numbers& numbers = *found;
      numbers.special = numbers.special || numbers.season == 0 || name.at(numbers.first - 1).is(SpecialWord) ||
                        (numbers.date && surroundings.season == 0);
      absolute_behind(name, numbers);
      if (is_half(name, numbers.last)) numbers.certain = false;
      return numbers;
    }
  }
  return {};
}

}  // namespace quorvel::reader
