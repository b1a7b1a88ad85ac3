#include "naming/reader/season_rules.h"

#include "naming/reader/bare_numbers.h"
#include "naming/reader/dates.h"
#include "text/characters.h"

namespace quorvel::reader {

Numbers episodes_from(const Search& search, std::size_t first, std::size_t next, std::optional<int> season, int episode,
                      bool certain) {
  Numbers numbers;
  std::vector<int>& list = season ? numbers.episodes : numbers.absolute;
  list = {episode};
  numbers.first = first;
  numbers.last = more_episodes(search.name, next, season, list);
  numbers.season = season;
  numbers.certain = certain;
  return numbers;
}

std::optional<Numbers> season_and_episode(const Search& search, std::size_t i) {
  const Name& name = search.name;
  if (name.is_word(i, "s") && name.at(i + 1).is_number() && name.is_word(i + 2, "e") && name.at(i + 3).is_number() &&
      name.at(i + 1).follows(Blank | Dot)) {  // "S 01 E 02"
    return episodes_from(search, i, i + 4, name.at(i + 1).number, name.at(i + 3).number, true);
  }
  if (name.is_word(i, "s") && name.at(i + 1).is_number() && name.at(i + 2).is(EpisodeWord)) {
    const std::optional<Mark> episode = episode_at(name, i + 2);  // "S 1 - Ep 02"
    if (episode) return episodes_from(search, i, episode->last, name.at(i + 1).number, episode->number, true);
  }
  const std::optional<Mark> season = season_at(name, i);
  if (!season) return {};
  std::size_t next = season->last;
  const bool cross = name.is_word(next, "x");
  if (cross && season->weak) return {};
  if (cross) ++next;
  if (name.at(next).is(AndWord) && !name.at(next).is(EpisodeLetter)) ++next;
  const std::optional<Mark> episode = episode_at(name, next);
  if (episode) {
    if (season->weak && name.at(i).is(SeasonLetter) && name.at(next).is(EpisodeLetter) && !name.at(next).is_glued())
      return {};
    return episodes_from(search, i, episode->last, season->number, episode->number, true);
  }
  const Token& number = name.at(next);
  // "1 сезон: 1-8 серии"
  if (number.is_number() && name.at(next + 1).is_number() && name.at(next + 1).gap == Dash &&
      name.at(next + 2).is(EpisodeWord)) {
    return episodes_from(search, i, next + 1, season->number, number.number, true);
  }
  // "S01F02" is German, "T1C2" Spanish.
  const bool letters =
      (name.is_word(i, "s") && name.is_word(next, "f")) || (name.is_word(i, "t") && name.is_word(next, "c"));
  if (letters && name.at(next).is_glued() && name.at(next + 1).is_number()) {
    return episodes_from(search, i, next + 2, season->number, name.at(next + 1).number, true);
  }
  if (!cross || !number.is_number() || !number.is_glued() || number.size() > 4) return {};
  return episodes_from(search, i, next + 1, season->number, number.number, true);
}

std::optional<Numbers> glued_to_the_show(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token& season = name.at(i);
  if (!season.is_number() || !season.is_glued() || season.size() > 2) return {};
  const Token& before = name.at(i - 1);
  if (!before.is_word() || !name.lowered(before).ends_with('s')) return {};
  const std::optional<Mark> episode = episode_at(name, i + 1);
  if (!episode || !name.at(i + 1).is_glued() || !name.at(i + 1).is(EpisodeLetter)) return {};
  Numbers numbers = episodes_from(search, i, episode->last, season.number, episode->number, true);
  numbers.letters_before = 1;
  return numbers;
}

std::optional<Numbers> crossed(const Search& search, std::size_t i) {
  const std::optional<Mark> mark = crossed_at(search.name, i);
  if (!mark || mark->weak) return {};
  const Token& day = search.name.at(mark->last);  // "2011x04.18"
  const Date shown{mark->number, search.name.at(mark->last - 1).number, day.number};
  if (is_year(search.name.at(i)) && day.is_number() && day.gap == Dot && day.size() == 2 && is_date(shown)) {
    Numbers numbers;
    numbers.first = i;
    numbers.last = mark->last + 1;
    numbers.date = shown;
    numbers.certain = true;
    return numbers;
  }
  return episodes_from(search, i, mark->last, mark->number, search.name.at(mark->last - 1).number, true);
}

std::optional<Numbers> dotted(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token &season = name.at(i), &episode = name.at(i + 1), &next = name.at(i + 2);
  if (season.follows(Other) || search.around.season.value_or(season.number) != season.number) return {};  // "$9.99"
  // "Season 2/2.05 Title"
  const bool in_season = i == 0 && season.is_number() && search.around.season == season.number;
  if (in_season && episode.is_number() && episode.gap == Dot && episode.size() == 2 && name.stands_alone(1))
    return episodes_from(search, 0, 2, season.number, episode.number, true);
  // "Season 1/1_05 Title"
  if (in_season && season.size() == 1 && episode.is_number() && episode.gap == Blank && name.is_padded(episode)) {
    return episodes_from(search, 0, 2, season.number, episode.number, true);
  }
  // "Season 12/12 - 02 Title", but not "Season 2/02-03 Title"
  const bool both = in_season && season.size() == 2 && episode.is_number() && episode.size() == 2 &&
                    !episode.technical && (episode.gap & ~Blank) == Dash && episode.number != season.number + 1;
  if (both) {
    Numbers numbers;
    numbers.certain = episode.number < season.number;
    numbers.last = 2;
    numbers.season = season.number;
    numbers.episodes = {episode.number};
    return numbers;
  }
  const bool short_season = season.is_plain_number() && season.size() <= 2;
  // "Episode #1.5"
  if (short_season && season.follows(Hash) && episode.is_number() && episode.gap == Dot && episode.size() <= 2)
    return episodes_from(search, name.at(i - 1).is(EpisodeWord) ? i - 1 : i, i + 2, season.number, episode.number,
                         true);
  // "Show 1.02 Title", where dots do not stand for blanks.
  if (short_season && (i == 0 || season.gap == Blank) && episode.is_plain_number() && episode.gap == Dot &&
      episode.size() == 2 && (next.follows(Blank) || next.is_end())) {
    return episodes_from(search, i, i + 2, season.number, episode.number, false);
  }
  const bool dashed = season.is_number() && season.size() == 1 && season.follows_spaced_dash() && episode.is_number() &&
                      episode.size() == 2 && episode.follows_spaced_dash() && next.follows_spaced_dash() &&
                      !next.is_end();
  if (dashed && !starts_with_group(name)) return episodes_from(search, i, i + 2, season.number, episode.number, false);
  if (!season.is_plain_number() || season.size() > 2 || !season.follows(Dash | Open)) return {};
  if (!episode.is_plain_number() || episode.gap != Dot || episode.size() != 2) return {};
  if (starts_with_group(name) || (!next.follows(Dash | Close) && !next.is_end())) return {};
  return episodes_from(search, i, i + 2, season.number, episode.number, false);
}

std::optional<Numbers> barely_crossed(const Search& search, std::size_t i) {
  const std::optional<Mark> mark = crossed_at(search.name, i);
  if (!mark || !search.name.stands_alone(mark->last - 1)) return {};
  const Token& next = search.name.at(mark->last);
  const bool apart = next.is_end() || next.technical || next.follows(Dash | Open | Close);
  const bool certain = (apart && !search.name.at(i).is_glued()) || search.around.season == mark->number;
  return episodes_from(search, i, mark->last, mark->number, search.name.at(mark->last - 1).number, certain);
}

std::optional<Numbers> packed(const Search& search, std::size_t i) {
  const Token& number = search.name.at(i + 1);
  if (!search.name.is_word(i, "s") || !number.is_number() || !number.is_glued() || number.size() != 4 ||
      is_year(number)) {
    return {};
  }
  return episodes_from(search, i, i + 2, number.number / 100, number.number % 100, true);
}

std::optional<Numbers> episode_and_season(const Search& search, std::size_t i) {
  const std::optional<Mark> episode = episode_at(search.name, i);
  if (!episode) return {};
  std::size_t next = episode->last;
  if (search.name.at(next).is(OfWord)) ++next;
  const std::optional<Mark> season = season_at(search.name, next);
  if (!season || search.is_title(*season)) return {};
  return episodes_from(search, i, season->last, season->number, episode->number, true);
}

std::optional<Numbers> season_and_number(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const std::optional<Mark> season = season_at(name, i);
  if (!season || (season->weak && starts_with_group(name))) return {};
  const Token& number = name.at(season->last);
  const bool counted = !is_ascii(name.written(name.at(season->last - 1)));  // "第2季05"
  if (!number.is_plain_number() || (number.is_glued() && !counted) || is_year(number) || number.size() > 4) return {};
  // "Season 1-3" is three seasons.
  const bool apart = number.follows(Dash | Open) && number.gap != Dash;
  if (!name.stands_alone(season->last) || (number.size() == 1 && !apart)) return {};
  if (name.at(season->last + 1).is(OfWord)) return {};
  const bool spaced_dash = number.follows_spaced_dash();
  if (number.size() == 4 && !spaced_dash)
    return episodes_from(search, season->last, season->last + 1, {}, number.number, false);
  if (season->weak && (!spaced_dash || !name.at(i + 1).follows(Blank | Dot))) return {};
  Numbers numbers = episodes_from(search, i, season->last + 1, season->number, number.number, true);
  // Fan groups count some "S3 - 15" over all seasons; no earlier one was shorter than this.
  constexpr int shortest_season = 6;
  if (name.at(i).is(SeasonLetter) && spaced_dash && number.number > (season->number - 1) * shortest_season &&
      season->number > 1) {
    numbers.certain = false;
    numbers.other = OtherNumbers{.season = season->number, .episodes = {}, .absolute = numbers.episodes, .date = {}};
  }
  return numbers;
}

std::optional<Numbers> said_twice(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token &number = name.at(i), &again = name.at(i + 1);
  if (!number.is_plain_number() || number.number < 100 || number.size() > 4) return {};
  if (!again.is_number() || !again.follows(Open) || !name.at(i + 2).follows(Close) || again.size() != 2) return {};
  if (number.number % 100 != again.number || is_year(number)) return {};
  return episodes_from(search, i, i + 2, number.number / 100, again.number, true);
}

std::optional<Numbers> run_together(const Search& search, std::size_t i) {
  const Name& name = search.name;
  const Token &number = name.at(i), &next = name.at(i + 1);
  if (!number.is_plain_number()) return {};
  const int first = number.number / 100 % 100, second = number.number % 100;
  if (number.size() == 5 && i > 0 && !number.is_glued() && second == first + 1 && name.stands_alone(i)) {
    Numbers numbers;
    numbers.first = i;
    numbers.last = i + 1;
    numbers.season = number.number / 10000;
    numbers.episodes = {first, second};
    return numbers;
  }
  const bool padded = number.size() == 1 && next.size() == 2 && name.is_padded(next);
  const bool fits = search.around.season.value_or(number.number) == number.number;
  if (padded && next.is_number() && next.gap == Dash && !number.is_glued() && fits && !starts_with_group(name)) {
    return episodes_from(search, i, i + 2, number.number, next.number, search.around.season.has_value());
  }
  if (i > 0 || number.size() != 2 || next.gap != Dash || !next.is_plain_number() || next.size() != 2) return {};
  if (number.number <= next.number || search.around.season || !name.stands_alone(1)) return {};
  Numbers numbers;
  numbers.last = 2;
  numbers.season = number.number;
  numbers.episodes = {next.number};
  return numbers;
}

}  // namespace quorvel::reader
