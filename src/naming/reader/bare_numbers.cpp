#include "naming/reader/bare_numbers.h"

#include <utility>

#include "naming/reader/dates.h"
#include "naming/reader/marks.h"
#include "text/characters.h"

namespace quorvel::reader {
namespace {

// How much a place looks like an episode's number.
constexpr int none = 0, glued = 20, within = 30, leading = 45, trailing = 60, titled = 64, before_dash = 65,
              set_apart = 80, in_list = 82, bracketed = 90, dashed = 100;
constexpr int stands_out = set_apart;

bool is_decimal(const Name& name, std::size_t i) {
  const Token& next = name.at(i + 1);
  return next.is_number() && next.gap == Dot && next.size() == 1 && name.at(i).size() <= 3 && name.at(i + 2).gap != Dot;
}

/// Whether nothing but this number stands in its brackets.
bool fills_group(const Name& name, std::size_t i) {
  const int id = name.at(i).group;
  if (id < 0) return false;
  const Group& group = name.groups[static_cast<std::size_t>(id)];
  if (group.first != i) return false;
  for (std::size_t other = i + 1; other < group.last; ++other) {
    if (!name.at(other).technical && !name.at(other).is(EndWord | Release) && !name.at(other).is_number()) return false;
  }
  return true;
}

/// "2014-32-45" is neither a date nor an episode.
bool is_impossible_date(const Name& name, std::size_t month) {
  const Token &token = name.at(month), &next = name.at(month + 1);
  return is_year(name.at(month - 1)) && token.is_number() && next.is_number() && token.gap == next.gap &&
         token.size() == 2 && next.size() == 2;
}

/// "30.10.13"
bool is_like_date(const Name& name, std::size_t i) {
  const Token &next = name.at(i + 1), &third = name.at(i + 2);
  return next.is_number() && next.gap == Dot && next.size() == 2 && third.is_number() && third.gap == Dot &&
         third.size() == 2;
}

bool is_candidate(const Name& name, std::size_t i) {
  const Token& token = name.at(i);
  if (i < name.named || !token.is_plain_number() || token.size() > 4 || is_year(token)) return false;
  const Token& next = name.at(i + 1);
  const bool letter = next.is_word() && next.size() == 1 && (name.at(i + 2).is_end() || !name.at(i + 2).is_glued());
  if (!name.stands_alone(i) && !letter) return false;
  if (letter && name.is_word(i + 1, "d") && token.number <= 3) return false;  // "3D"
  if (is_total(name, i) || (is_decimal(name, i) && !token.follows_spaced_dash())) return false;
  const bool of_group =
      starts_with_group(name) && i < name.groups.front().last && name.groups.front().last < name.count();
  if (of_group || is_like_date(name, i)) return false;
  if (i == 0) return true;
  const Token& before = name.at(i - 1);
  if (before.is_number() && is_decimal(name, i - 1)) return false;
  const bool month = is_year(before) && token.gap == Dash && token.size() == 2;  // "2019-07"
  if (month || is_impossible_date(name, i) || is_impossible_date(name, i - 1)) return false;
  return !(before.is(VolumeWord | ExtraWord | FilmWord) && !token.follows(Dash)) &&
         !(before.is(SeasonWord) && !is_weak(name, i - 1) && !token.follows(Dash)) &&
         !(before.is(PartWord | MonthName) && !token.follows(Dash | Open)) && !next.is(OfWord);
}

/// What follows the number at `i` and those it is joined with: "01-03", "01+02"; `list` gets them all.
std::size_t range_end(const Name& name, std::size_t i, std::vector<int>& list) {
  list = {name.at(i).number};
  if (is_decimal(name, i)) return i + 2;
  const Token& next = name.at(i + 1);
  if (next.is_word() && next.is_glued() && next.size() == 1 && !next.technical) return i + 2;  // "12a"
  const bool pair = next.is_plain_number() && next.size() >= 3 && next.number == list.front() + 1 &&
                    !next.follows_spaced_dash();  // "102.103"
  if (pair) {
    std::size_t last = i + 1;
    for (; name.at(last).is_number() && name.at(last).gap == next.gap && name.at(last).number == list.back() + 1;
         ++last)
      list.push_back(name.at(last).number);
    return last;
  }
  // "Show - 05 - 06" is a range, "Show 2 - 05" is none.
  const Token& behind = name.at(i + 2);
  const bool row = next.is_number() && next.number == list.front() + 1 && next.follows_spaced_dash() &&
                   name.at(i).follows_spaced_dash() && (behind.is_end() || behind.technical || behind.follows(Open));
  if (row) {
    list.push_back(next.number);
    return i + 2;
  }
  if (!next.is_number() || (next.gap != Dash && !next.follows(Tilde | Plus | Comma))) return i + 1;
  return more_episodes(name, i + 1, {}, list);
}

/// Whether a number can be a season and an episode in one: "102", "1013".
bool can_split(const Token& token) {
  return token.number > 100 && token.number % 100 != 0;
}

/// `last` is what follows it.
int score(const Name& name, std::size_t i, std::size_t last, bool in_season, bool of_the_scene) {
  const Token& token = name.at(i);
  const Token& next = name.at(last);
  if (token.is_glued()) {
    const Token& before = name.at(i - 1);  // scripts without blanks end in the number
    const bool padded =
        token.size() == 2 && name.is_padded(token) && (before.size() > 2 || (in_season && !before.is(SeasonLetter)));
    return !before.is_word() ? none : is_ascii(name.written(before)) && !padded ? glued : within;
  }
  const bool ends = next.is_end() || next.technical || next.follows(Open | Close) || next.is(Release | EndWord);
  const bool dash_follows = next.follows(Dash) && !next.is_end();
  const bool wide = token.size() >= 2;
  int value = within;
  // "Part 2 - 100 Days"
  const bool of_title = name.at(i - 2).is(PartWord) && next.gap == Blank && next.is_word() && !next.technical;
  if (of_title && !starts_with_group(name)) return none;
  if (fills_group(name, i)) {
    const bool square = name.groups[static_cast<std::size_t>(token.group)].square;
    value = square ? (wide ? bracketed : set_apart) : wide ? trailing : none;
  } else if (token.group >= 0) {
    value = none;
  } else if (token.follows(Dash) && token.follows(Blank | Dot | Close)) {
    value = ends || dash_follows ? dashed : !next.follows(Blank | Dot) ? within : wide ? set_apart : titled;
  } else if (token.follows(Dash)) {
    value = !wide ? none : ends || dash_follows ? trailing : within;
  } else if (i == 0) {
    const bool spaced = dash_follows && next.follows(Blank | Dot);
    value = !dash_follows ? leading + 20 * in_season : in_season && spaced ? in_list : before_dash;
  } else if (token.follows(Close)) {
    value = dash_follows ? before_dash : trailing;
  } else if (dash_follows) {
    value = before_dash;
  } else if (ends) {
    value = trailing;
  }
  const bool padded = wide && name.is_padded(token);
  if (padded || (of_the_scene && value == within && can_split(token))) value += 5;  // "show.102.24.hours"
  if (!wide && value < set_apart && !(in_season && i == 0)) value -= 25;
  return value;
}

/// Whether words stand between dots, or the name tells of a broadcast that was recorded: there "102" is a season and an
/// episode, elsewhere it may as well count over all seasons.
bool is_of_the_scene(const Name& name) {
  bool recorded = false, blanks = false;
  for (std::size_t i = 0; i < name.count(); ++i) {
    const Token& token = name.at(i);
    if (token.gap == Dot && !token.technical && !name.at(i - 1).technical) return true;
    blanks = blanks || token.follows(Blank);
    recorded = recorded || (token.technical && token.group < 0 && token.is(Source) && !token.is(Weak));
  }
  return recorded || !blanks;
}

struct Place {
  std::size_t first = 0;
  int score = none;
};

Place best_place(const Name& name, bool in_season, int least, bool of_the_scene) {
  Place best{0, least};
  std::vector<int> list;
  for (std::size_t i = 0, next = 0; i < name.count(); i = next) {
    next = i + 1;
    if (!is_candidate(name, i)) continue;
    next = range_end(name, i, list);
    const int value = score(name, i, next, in_season, of_the_scene);
    // Of equals the first between dashes, else the last: shows have numbers too, titles as well.
    if (value > best.score || (value == best.score && value < stands_out && value > none)) best = {i, value};
  }
  return best;
}

OtherNumbers counted(const std::vector<int>& list) {
  return {.season = {}, .episodes = {}, .absolute = list, .date = {}};
}

OtherNumbers split(std::vector<int> list) {
  const int season = list.front() / 100;
  for (int& each : list) each %= 100;
  return {.season = season, .episodes = std::move(list), .absolute = {}, .date = {}};
}

/// "Show 01-05 Title": hardly five episodes of one title.
bool is_titled_range(const Name& name, const Numbers& numbers, const std::vector<int>& list) {
  const Token& behind = name.at(numbers.last);
  const bool titled = behind.is_word() && !behind.technical && behind.gap == Blank && !behind.is(EndWord | Release);
  return list.size() > 2 && titled && name.at(numbers.first).size() <= 2 && name.at(numbers.first + 1).gap == Dash;
}

/// "Show 12-05", "Show 12-05 Title": the first may be the season.
std::optional<OtherNumbers> joined_by_dash(const Name& name, std::size_t place) {
  for (const std::size_t i : {place, place + 1}) {
    const Token &season = name.at(i - 1), &episode = name.at(i);
    if (episode.is_number() && episode.gap == Dash && season.is_number() && season.size() <= 2 && !season.is_glued()) {
      return OtherNumbers{.season = season.number, .episodes = {episode.number}, .absolute = {}, .date = {}};
    }
  }
  return {};
}

}  // namespace

std::size_t last_year_of(const Name& name) {
  for (std::size_t i = name.count(); i-- > 1;) {
    const Token& token = name.at(i);
    if (is_year(token) && !token.technical &&
        (token.follows(Open) || name.at(i + 1).technical || name.at(i + 1).is_end()))
      return i;
  }
  return 0;
}

bool starts_with_group(const Name& name) {
  return !name.groups.empty() && name.groups.front().square && name.groups.front().begin == 0 &&
         !(name.groups.front().last == 1 && name.at(0).is_number());
}

std::optional<Numbers> bare_number(const Name& name, std::optional<int> folder_season, bool standing_out) {
  const bool of_the_scene = is_of_the_scene(name);
  const int least = standing_out ? stands_out - 1 : none;
  const Place place = best_place(name, folder_season.has_value(), least, of_the_scene);
  if (place.score <= least) return {};
  const Token& token = name.at(place.first);
  const bool fansub = starts_with_group(name) && place.first > 0;
  if (!fansub && place.score < dashed && place.first < last_year_of(name)) return {};
  if (!fansub && place.score < leading - 20 && token.size() < 3) return {};

  Numbers numbers;
  std::vector<int> list;
  numbers.first = place.first;
  numbers.last = range_end(name, place.first, list);
  const std::optional<Mark> said = find_season(name);
  std::optional<int> season = said ? std::optional(said->number) : folder_season;
  const bool padded = token.size() >= 2 && name.is_padded(token);
  const bool range = list.size() > 1 && name.at(place.first + 1).gap == Dash && token.follows(Dash);  // " - 476-479"
  const bool may_split = !fansub && can_split(token) && list.back() / 100 == token.number / 100;
  const bool likely =
      fansub || season ? place.score >= leading : place.score > trailing && (padded || token.size() == 2);
  numbers.certain =
      likely || place.score >= dashed ? token.size() <= 2 || fansub || padded || season || range : list.size() > 1;
  const bool rather_split = season ? token.number / 100 == *season : of_the_scene;
  if (may_split && !range && rather_split) {
    numbers.other = counted(list);
    season = token.number / 100;
    list = split(list).episodes;
    numbers.certain = folder_season == season;
  } else if (may_split && !season && !padded && (list.size() == 1 || name.groups.empty())) {
    numbers.other = split(list);  // "Show - 210-211"; brackets are fan groups', which count over all seasons
    numbers.certain = false;
  } else if (may_split && folder_season && !said && list.size() == 1) {
    numbers.other = of_the_scene ? split(list) : counted(list);  // "Season 1/show.205.avi", "Season 8/Show - 205.mkv"
    numbers.certain = false;
  } else if (!season && !fansub && is_titled_range(name, numbers, list)) {
    numbers.other = OtherNumbers{.season = token.number, .episodes = {list.back()}, .absolute = {}, .date = {}};
    numbers.certain = false;
  } else if (const std::optional<OtherNumbers> crossed = joined_by_dash(name, place.first);
             crossed && list.size() == 1) {
    numbers.other = crossed;
    numbers.certain = false;
  } else if (is_decimal(name, place.first)) {  // a special between two episodes
    numbers.special = true;
    numbers.certain = false;
  }
  numbers.season = season;
  (season ? numbers.episodes : numbers.absolute) = list;
  return numbers;
}

}  // namespace quorvel::reader
