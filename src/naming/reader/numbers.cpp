#include "naming/reader/numbers.h"

#include <algorithm>
#include <array>

#include "naming/reader/bare_numbers.h"
#include "naming/reader/dates.h"
#include "naming/reader/marks.h"

namespace quorvel::reader {
namespace {

struct Search {
  const Name& name;
  const Surroundings& around;
  std::size_t last_year = 0;
  bool in_brackets = false;  // whether a part may stand there

  /// What the name itself says of the season, else what the folders say.
  std::optional<int> season() const {
    const std::optional<Mark> said = find_season(name);
    return said ? said->number : around.season;
  }
};

using Rule = bool (*)(const Search&, std::size_t, Numbers&);

/// Sets season and episodes, with all further episodes that follow.
bool set(const Search& search, Numbers& numbers, std::size_t first, std::size_t next, std::optional<int> season,
         int episode, bool certain) {
  std::vector<int>& list = season ? numbers.episodes : numbers.absolute;
  list = {episode};
  numbers.first = first;
  numbers.last = more_episodes(search.name, next, season, list);
  numbers.season = season;
  numbers.certain = certain;
  return true;
}

/// "S01E02", "Season 1 Episode 2", "S01xE02", "s01x02".
bool season_and_episode(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  if (name.is_word(i, "s") && name.at(i + 1).is_number() && name.is_word(i + 2, "e") && name.at(i + 3).is_number() &&
      name.at(i + 1).follows(Blank | Dot) && name.at(i + 3).follows(Blank | Dot)) {  // "S 01 E 02"
    return set(search, numbers, i, i + 4, name.at(i + 1).number, name.at(i + 3).number, true);
  }
  if (name.is_word(i, "s") && name.at(i + 1).is_number() && name.at(i + 1).size() <= 2 &&
      name.at(i + 2).is(EpisodeWord)) {
    const std::optional<Mark> episode = episode_at(name, i + 2);  // "S 1 - Ep 02"
    if (episode) return set(search, numbers, i, episode->last, name.at(i + 1).number, episode->number, true);
  }
  const std::optional<Mark> season = season_at(name, i);
  if (!season || (season->weak && name.at(i + 1).follows(Dash))) return false;
  std::size_t next = season->last;
  const bool cross = name.is_word(next, "x");
  if (cross && season->weak) return false;
  if (cross) ++next;
  if (name.at(next).is(AndWord) && !name.at(next).is(EpisodeLetter)) ++next;
  const std::optional<Mark> episode = episode_at(name, next);
  if (episode) {
    if (season->weak && name.at(i).is(SeasonLetter) && name.at(next).is(EpisodeLetter) && !name.at(next).is_glued())
      return false;
    return set(search, numbers, i, episode->last, season->number, episode->number, true);
  }
  const Token& number = name.at(next);
  // "1 сезон: 1-8 серии"
  if (!season->weak && number.is_number() && name.at(next + 1).is_number() && name.at(next + 1).gap == Dash &&
      name.at(next + 2).is(EpisodeWord)) {
    return set(search, numbers, i, next + 1, season->number, number.number, true);
  }
  // "S01F02" is German, "T1C2" Spanish.
  const bool letters =
      (name.is_word(i, "s") && name.is_word(next, "f")) || (name.is_word(i, "t") && name.is_word(next, "c"));
  if (letters && name.at(next).is_glued() && name.at(next + 1).is_number() && name.at(next + 1).is_glued() &&
      name.at(next + 1).size() <= 3) {
    return set(search, numbers, i, next + 2, season->number, name.at(next + 1).number, true);
  }
  if (!cross || !number.is_number() || !number.is_glued() || number.size() > 4) return false;
  return set(search, numbers, i, next + 1, season->number, number.number, true);
}

/// "Shows01e02": the letter stands glued to the show.
bool glued_to_the_show(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const Token& season = name.at(i);
  if (i == 0 || !season.is_number() || !season.is_glued() || season.size() > 2) return false;
  const Token& before = name.at(i - 1);
  if (!before.is_word() || !name.lowered(before).ends_with('s')) return false;
  const std::optional<Mark> episode = episode_at(name, i + 1);
  if (!episode || !name.at(i + 1).is_glued() || !name.at(i + 1).is(EpisodeLetter)) return false;
  set(search, numbers, i, episode->last, season.number, episode->number, true);
  numbers.letters_before = 1;
  return true;
}

/// "1x02", "[1x02]", "1 x 02".
bool crossed(const Search& search, std::size_t i, Numbers& numbers) {
  const std::optional<Mark> mark = crossed_at(search.name, i);
  if (!mark || mark->weak) return false;
  const Token& day = search.name.at(mark->last);  // "2011x04.18"
  const Date shown{mark->number, search.name.at(mark->last - 1).number, day.number};
  if (is_year(search.name.at(i)) && day.is_number() && day.gap == Dot && day.size() == 2 && is_date(shown)) {
    numbers.first = i;
    numbers.last = mark->last + 1;
    numbers.date = shown;
    numbers.certain = true;
    return true;
  }
  return set(search, numbers, i, mark->last, mark->number, search.name.at(mark->last - 1).number, true);
}

/// "- 1.02 -", "[1.02]", "- 1 - 02 -".
bool dotted(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const Token &season = name.at(i), &episode = name.at(i + 1), &next = name.at(i + 2);
  // "Season 2/2.05 Title"
  const bool in_season = i == 0 && season.is_number() && search.around.season == season.number && season.size() <= 2;
  if (in_season && episode.is_number() && episode.gap == Dot && episode.size() == 2 && name.stands_alone(1))
    return set(search, numbers, 0, 2, season.number, episode.number, true);
  const bool short_season = season.is_number() && !season.technical && season.size() <= 2;
  // "Episode #1.5"
  if (short_season && season.follows(Hash) && episode.is_number() && episode.gap == Dot && episode.size() <= 2)
    return set(search, numbers, i > 0 && name.at(i - 1).is(EpisodeWord) ? i - 1 : i, i + 2, season.number,
               episode.number, true);
  // "Show 1.02 Title", where dots do not stand for blanks.
  if (short_season && (i == 0 || season.gap == Blank) && episode.is_number() && !episode.technical &&
      episode.gap == Dot && episode.size() == 2 && name.stands_alone(i + 1) &&
      (next.follows(Blank) || (next.is_end() && i > 0))) {
    return set(search, numbers, i, i + 2, season.number, episode.number, false);
  }
  const bool dashed = i > 0 && season.is_number() && season.size() == 1 && season.follows_spaced_dash() &&
                      episode.is_number() && episode.size() == 2 && episode.follows_spaced_dash() &&
                      next.follows_spaced_dash() && !next.is_end();
  if (dashed && !starts_with_group(name)) return set(search, numbers, i, i + 2, season.number, episode.number, false);
  if (!season.is_number() || season.technical || season.size() > 2 || !season.follows(Dash | Open)) return false;
  if (!episode.is_number() || episode.technical || episode.gap != Dot || episode.size() != 2) return false;
  if (starts_with_group(name) || (!next.follows(Dash | Close) && !next.is_end()) || !name.stands_alone(i + 1))
    return false;
  return set(search, numbers, i, i + 2, season.number, episode.number, false);
}

/// "1x2" may be anything.
bool barely_crossed(const Search& search, std::size_t i, Numbers& numbers) {
  const std::optional<Mark> mark = crossed_at(search.name, i);
  if (!mark || !search.name.stands_alone(mark->last - 1)) return false;
  return set(search, numbers, i, mark->last, mark->number, search.name.at(mark->last - 1).number, false);
}

/// "S0102".
bool packed(const Search& search, std::size_t i, Numbers& numbers) {
  const Token& number = search.name.at(i + 1);
  if (!search.name.is_word(i, "s") || !number.is_number() || !number.is_glued() || number.size() != 4 ||
      is_year(number)) {
    return false;
  }
  return set(search, numbers, i, i + 2, number.number / 100, number.number % 100, true);
}

/// "Episode 2 Season 1", "Ep 2 (S01)".
bool episode_and_season(const Search& search, std::size_t i, Numbers& numbers) {
  const std::optional<Mark> episode = episode_at(search.name, i);
  if (!episode) return false;
  std::size_t next = episode->last;
  if (search.name.at(next).is(OfWord)) ++next;
  const std::optional<Mark> season = season_at(search.name, next);
  if (!season) return false;
  set(search, numbers, i, season->last, season->number, episode->number, true);
  return true;
}

/// "S01 - 02", "Season 1 02", "S2 [05]".
bool season_and_number(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const std::optional<Mark> season = season_at(name, i);
  if (!season || (season->weak && (name.at(i).is(SeasonLetter) || starts_with_group(name)))) return false;
  const Token& number = name.at(season->last);
  if (!number.is_number() || number.technical || number.is_glued() || is_year(number) || number.size() > 4)
    return false;
  // "Season 1-3" is three seasons.
  const bool apart = number.follows(Dash | Open) && number.gap != Dash;
  if (!name.stands_alone(season->last) || (number.size() == 1 && !apart)) return false;
  if (name.at(season->last + 1).is(OfWord)) return false;
  const bool spaced_dash = number.follows_spaced_dash();
  if (number.size() == 4 && !spaced_dash)
    return set(search, numbers, season->last, season->last + 1, {}, number.number, false);
  if (season->weak && (!spaced_dash || !name.at(i + 1).follows(Blank | Dot))) return false;
  return set(search, numbers, i, season->last + 1, season->number, number.number, true);
}

/// One in brackets may be that of the file.
bool date(const Search& search, std::size_t i, Numbers& numbers, bool outside) {
  if (i > search.name.named) return false;
  const std::optional<DateMark> found = find_date(search.name);
  if (!found || (outside && (!found->certain || search.name.at(found->first).group >= 0))) return false;
  numbers.first = found->first;
  numbers.last = found->last;
  numbers.date = found->date;
  numbers.certain = found->certain;
  if (found->other) numbers.other = OtherNumbers{.season = {}, .episodes = {}, .absolute = {}, .date = found->other};
  return true;
}

bool certain_date(const Search& search, std::size_t i, Numbers& numbers) {
  return date(search, i, numbers, true);
}

bool likely_date(const Search& search, std::size_t i, Numbers& numbers) {
  return date(search, i, numbers, false);
}

/// "- 110 (10)": season and episode in one, and the episode again.
bool said_twice(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const Token &number = name.at(i), &again = name.at(i + 1);
  if (!number.is_number() || number.technical || number.number < 100 || number.size() > 4) return false;
  if (!again.is_number() || !again.follows(Open) || !name.at(i + 2).follows(Close) || again.size() != 2) return false;
  if (number.number % 100 != again.number || is_year(number)) return false;
  return set(search, numbers, i, i + 2, number.number / 100, again.number, true);
}

/// "2of6", "2 of 6".
bool one_of_many(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  constexpr int most_parts = 12;  // of a mini-series; others count their episodes, too
  const Token &number = name.at(i), &all = name.at(i + 2);
  const bool digits = number.is_number() && all.is_number();
  const bool words = number.is(NumberWord) && all.is(NumberWord) && number.size() > 2 && all.size() > 2;
  if ((!digits && !words) || !name.at(i + 1).is(OfWord) || number.number > all.number) return false;
  if ((digits && (number.size() > 3 || all.size() > 3)) ||
      (i > 0 && name.at(i - 1).is(SeasonWord) && !is_weak(name, i - 1)))
    return false;
  if (i > 0 && name.at(i - 1).is(PartWord)) --i;  // "Part 2 of 3"
  const std::size_t last = i + (name.at(i).is(PartWord) ? 4 : 3);
  const bool is_series = all.number > most_parts || starts_with_group(name);
  if (is_series) return set(search, numbers, i, last, search.season(), number.number, true);
  set(search, numbers, i, last, search.season().value_or(1), number.number, true);
  numbers.part = number.number;
  return true;
}

/// "Ep 12", "#12", "第12話"; Spanish names count "Cap.102" in season and episode.
bool episode_alone(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const std::optional<Mark> episode = episode_at(name, i);
  if (!episode || (name.at(i).is(EpisodeLetter) && name.at(i).is_glued() && i > 0)) return false;
  if (one_of_many(search, episode->last - 1, numbers)) {
    numbers.first = i;
    return true;
  }
  std::optional<int> season = search.season();
  int number = episode->number;
  if (name.lowered(name.at(i)).starts_with("cap") && number >= 100) {
    season = number / 100;
    set(search, numbers, i, episode->last, {}, number, true);
    const Token& to = name.at(episode->last);  // "[Cap.101_103]"
    if (to.is_number() && to.gap == Blank && to.group >= 0 && to.group == name.at(i).group &&
        to.number > numbers.absolute.back() && to.number / 100 == number / 100) {
      for (int next = numbers.absolute.back() + 1; next <= to.number; ++next) numbers.absolute.push_back(next);
      ++numbers.last;
    }
    for (int& each : numbers.absolute) each %= 100;
    numbers.episodes.swap(numbers.absolute);
    numbers.season = season;
    return true;
  }
  set(search, numbers, i, episode->last, season, number, true);
  return true;
}

/// "Part 2", "Pt.II", "Part Two".
bool part(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const Token& number = name.at(i + 1);
  if (!name.at(i).is(PartWord) || number.is_end() || number.technical || number.size() > 9) return false;
  if ((!number.is_number() && !number.is(NumberWord)) || number.number == 0 || number.number > 99) return false;
  if ((number.gap & ~(Blank | Dot | Dash)) != 0 || !name.stands_alone(i + 1)) return false;
  if (i < search.last_year) return false;                          // a film's
  if (name.at(i).group >= 0 && !search.in_brackets) return false;  // of a title, where a better number stands
  set(search, numbers, i, i + 2, search.around.season.value_or(1), number.number, true);
  numbers.part = number.number;
  return true;
}

/// "SP2", "OVA 1".
bool special(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const Token& number = name.at(i + 1);
  if (!name.at(i).is(SpecialWord) || !number.is_number() || number.technical || number.size() > 3) return false;
  if (!name.stands_alone(i + 1) || number.follows(Open | Close)) return false;
  // Fan groups count them by themselves; elsewhere they are season 0.
  const std::optional<int> season = starts_with_group(name) ? std::nullopt : std::optional(0);
  set(search, numbers, i, i + 2, season, number.number, !number.follows(Dash) && !find_season(name));
  numbers.special = true;
  return true;
}

/// "20304": two episodes in a row written as one number; "2-05", and "12-05" at the start: a season and an episode.
bool run_together(const Search& search, std::size_t i, Numbers& numbers) {
  const Name& name = search.name;
  const Token &number = name.at(i), &next = name.at(i + 1);
  if (!number.is_number() || number.technical) return false;
  const int first = number.number / 100 % 100, second = number.number % 100;
  if (number.size() == 5 && i > 0 && !number.is_glued() && second == first + 1 && name.stands_alone(i)) {
    numbers.first = i;
    numbers.last = i + 1;
    numbers.season = number.number / 10000;
    numbers.episodes = {first, second};
    return true;
  }
  const bool padded = number.size() == 1 && next.size() == 2 && name.written(next).front() == '0';
  const bool starts = i == 0 || !number.is_glued();
  const bool fits = search.around.season.value_or(number.number) == number.number;
  if (padded && next.is_number() && next.gap == Dash && starts && fits && !starts_with_group(name)) {
    return set(search, numbers, i, i + 2, number.number, next.number, search.around.season.has_value());
  }
  if (i > 0 || number.size() != 2 || next.gap != Dash || !next.is_number() || next.technical || next.size() != 2)
    return false;
  if (number.number <= next.number || search.around.season || !name.stands_alone(1)) return false;
  numbers.last = 2;
  numbers.season = number.number;
  numbers.episodes = {next.number};
  return true;
}

/// "(Part 2)".
bool part_in_brackets(const Search& search, std::size_t i, Numbers& numbers) {
  return part({search.name, search.around, search.last_year, true}, i, numbers);
}

bool standing_out(const Search& search, std::size_t i, Numbers& numbers) {
  return i == search.name.named && bare_number(search.name, search.around.season, true, numbers);
}

bool bare(const Search& search, std::size_t i, Numbers& numbers) {
  return i == search.name.named && bare_number(search.name, search.around.season, false, numbers);
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
  return half.is_number() && half.gap == Dot && half.size() == 1 && !half.technical && name.at(next + 1).gap != Dot;
}

/// "S05E06 (112)", "S01E01-02 (001-002)": as many numbers in brackets, which count over all seasons.
void absolute_behind(const Name& name, Numbers& numbers) {
  const Token& number = name.at(numbers.last);
  if (numbers.episodes.empty() || !number.is_number() || number.technical || !number.follows(Open) || is_year(number))
    return;
  std::vector<int> list{number.number};
  const std::size_t next = more_episodes(name, numbers.last + 1, {}, list);
  if (!name.at(next).follows(Close) || list.size() != numbers.episodes.size()) return;
  numbers.absolute = list;
  numbers.last = next;
}

}  // namespace

Numbers find_numbers(const Name& name, const Surroundings& surroundings) {
  const Search search{name, surroundings, last_year_of(name), false};
  Numbers numbers;
  for (const Rule rule : rules) {
    for (std::size_t i = name.named; i < name.count(); ++i) {
      if (!rule(search, i, numbers)) continue;
      numbers.special =
          numbers.special || numbers.season == 0 || (numbers.first > 0 && name.at(numbers.first - 1).is(SpecialWord));
      absolute_behind(name, numbers);
      if (is_half(name, numbers.last)) numbers.certain = false;
      return numbers;
    }
  }
  return numbers;
}

}  // namespace quorvel::reader
