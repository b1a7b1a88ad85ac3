#include "naming/reader/marks.h"

#include <algorithm>
#include <iterator>

#include "naming/reader/dates.h"
#include "text/characters.h"

namespace quorvel::reader {
namespace {

constexpr int longest_range = 200;

bool is_cross(const Name& name, std::size_t i) {
  return name.is_word(i, "x") || name.is_word(i, "×") || name.is_word(i, "х") || name.is_word(i, "Х");
}

bool is_ordinal_mark(const Name& name, std::size_t i) {
  return name.is_word(i, "第") || name.is_word(i, "제");
}

}  // namespace

bool is_weak(const Name& name, std::size_t i) {
  constexpr std::string_view weak[] = {"series", "serie", "série", "séries", "se", "book", "livre", "buch", "libro"};
  return std::ranges::find(weak, name.lowered(name.at(i))) != std::end(weak);
}

bool is_total(const Name& name, std::size_t i) {
  const Token& behind = name.at(i + 2);
  return (name.at(i).is_glued() && name.lowered(name.at(i - 1)).ends_with("全")) ||
         (name.at(i + 1).is(CounterWord) && behind.is_glued() && name.lowered(behind).starts_with("全"));
}

std::optional<Mark> season_at(const Name& name, std::size_t i) {
  const Token& token = name.at(i);
  const Token& next = name.at(i + 1);
  if (token.is_end()) return {};
  if (token.is(SeasonLetter) && next.is_number() && next.is_glued() && next.size() <= 4) {
    return Mark{i, i + 2, next.number, !name.is_word(i, "s")};
  }
  if (token.is(SeasonWord) && (next.is_plain_number() || (next.is(NumberWord) && next.follows(Blank | Dot))) &&
      (next.size() <= 2 || next.is(NumberWord) || is_year(next)) &&
      (next.gap & ~(Blank | Dot | Dash | Open | Hash | Other)) == 0 && !next.follows_spaced_dash()) {
    // "2 сезон 5 серия" counts behind the numbers, "2014 Сезон 2 Серия 5" in front of them.
    const bool year_before =
        is_year(name.at(i - 1)) && (!name.at(i + 2).is(EpisodeWord) || name.at(i + 3).is_plain_number());
    const bool counted_behind = !is_ascii(name.lowered(token)) && name.at(i - 1).is_number() && !year_before;
    if (!counted_behind) return Mark{i, i + 2, next.number, is_weak(name, i)};
  }
  // The number in front of the word.
  if (token.is(NumberWord) && token.is(OrdinalEnd) && next.is(SeasonWord)) return Mark{i, i + 2, token.number, false};
  std::size_t at = i;
  const bool counted = is_ordinal_mark(name, i);
  if (counted) ++at;
  const Token& number = name.at(at);
  if (!number.is_plain_number() || number.size() > (counted ? 6U : 2U) || (counted && !number.is_glued())) return {};
  const bool ordinal = name.at(at + 1).is_glued() && name.at(at + 1).is(OrdinalEnd) && !name.at(at + 1).is(SeasonWord);
  if (ordinal) ++at;
  const Token& word = name.at(at + 1);
  const bool part = name.is_word(at + 1, "部") && name.is_word(at + 2, "分");
  if (!word.is(SeasonWord) || part || (word.gap & ~(Blank | Dot)) != 0) return {};
  const bool foreign = !is_ascii(name.lowered(word));
  // "24 Season 5 Episode 2", but "1.Sezon 5.Bölüm"
  const Token& last = name.at(at + 4);
  const bool both_in_front = name.at(at + 3).is(EpisodeWord) && !last.is_plain_number();
  const bool number_follows = name.at(at + 2).is_number() && name.at(at + 2).follows(Blank | Dot) &&
                              !name.at(at + 2).follows(Dash | Open) && !both_in_front;
  if (!ordinal && !counted && !foreign && word.gap != (Dot | Blank) && (number_follows || is_weak(name, at + 1)))
    return {};
  return Mark{i, at + 2, number.number, is_weak(name, at + 1)};
}

std::optional<Mark> episode_at(const Name& name, std::size_t i) {
  const Token& token = name.at(i);
  const Token& next = name.at(i + 1);
  if (token.is(EpisodeLetter) && next.is_plain_number() && next.is_glued() && next.size() <= 5) {
    return Mark{i, i + 2, next.number};
  }
  const bool in_digits = next.is_plain_number() && next.size() <= 5;
  const bool in_words = next.is(NumberWord) && !next.is(OrdinalEnd) && token.size() > 3 && next.size() > 1;
  if (token.is(EpisodeWord) && !token.is(CounterWord) && (in_digits || in_words) &&
      (next.gap & ~(Blank | Dot | Hash | Other | Dash)) == 0 && !next.follows_spaced_dash()) {
    return Mark{i, i + 2, next.number};
  }
  if (token.is_plain_number() && token.follows(Hash) && token.size() <= 4) return Mark{i, i + 1, token.number};
  std::size_t at = i;
  const bool counted = is_ordinal_mark(name, i);
  if (counted) ++at;
  const Token& number = name.at(at);
  if (!number.is_plain_number() || number.number > 9999 || (counted && (number.gap & ~Blank) != 0)) return {};
  const Token& word = name.at(at + 1);
  if (is_total(name, at) || (name.at(at - 1).is(OfWord) && name.at(at).is_glued())) return {};
  if (word.is(CounterWord) && (word.gap & ~Blank) == 0) return Mark{i, at + 2, number.number};
  if (counted && !word.is(SeasonWord)) return Mark{i, at + 1, number.number};
  const bool ordinal = word.is_glued() && word.is(OrdinalEnd);
  const Token& behind = ordinal ? name.at(at + 2) : word;
  const bool foreign = !behind.is_end() && !is_ascii(name.lowered(behind));
  const Token& after = name.at(at + 2);
  const bool number_behind = after.is_number() && !after.follows(Open);  // "24.Ep.12"
  if (behind.is(EpisodeWord) && (foreign || !number.follows(Dot)) && (behind.gap & ~(Blank | Dot)) == 0 &&
      (foreign || ordinal || behind.gap == (Dot | Blank) || (behind.follows(Dot) && !number_behind))) {
    return Mark{i, at + (ordinal ? 3 : 2), number.number};
  }
  return {};
}

std::optional<Mark> crossed_at(const Name& name, std::size_t i) {
  const Token& season = name.at(i);
  const Token& episode = name.at(i + 2);
  if (!season.is_plain_number()) return {};
  // "grp-sr1x02"
  const bool behind_word = season.is_glued();
  if (behind_word && (!name.at(i - 1).is_word() || episode.size() != 2)) return {};
  if (season.size() > 2 && !is_year(season)) return {};
  const bool glued = name.at(i + 1).is_glued();
  const bool marked = name.at(i + 1).is(EpisodeLetter) && name.at(i + 1).size() > 1;  // "1xE02"
  const bool letter = name.is_word(i + 1, "e") && name.at(i + 1).is_glued() && episode.is_glued() &&
                      episode.size() == 2 && season.size() <= 2;  // "2e05"
  if (letter && episode.is_number()) return Mark{i, i + 3, season.number, true};
  if ((!is_cross(name, i + 1) && !marked) || !episode.is_plain_number() || episode.size() > 4) return {};
  if (glued && episode.is_glued()) return Mark{i, i + 3, season.number, episode.size() == 1 || behind_word};
  if (name.at(i + 1).gap == Blank && episode.gap == Blank && episode.size() == 2)
    return Mark{i, i + 3, season.number, true};
  return {};
}

std::optional<Mark> find_season(const Name& name) {
  for (std::size_t i = 0; i < name.count(); ++i) {
    const std::optional<Mark> found = season_at(name, i);
    if (found && !found->weak) return found;
  }
  return {};
}

namespace {

/// One further episode.
struct More {
  std::size_t next = 0;  // what follows it
  int episode = 0;
  bool range = false;  // all up to it
};

std::optional<More> one_more(const Name& name, std::size_t i, std::optional<int> season, int last) {
  std::size_t at = i;
  const Token& first = name.at(at);
  if (first.is_end() || first.technical) return {};
  std::uint16_t gap = first.gap;
  bool joined = first.follows(Plus | Comma), range = first.follows(Dash | Tilde);
  if (first.is(AndWord | ToWord) && first.is_word() && !first.is(EpisodeLetter) && first.follows(Blank | Dot | Dash)) {
    joined = true;
    range = first.is(ToWord);
    ++at;
    gap = name.at(at).gap;
  }
  const Token& token = name.at(at);
  if (season) {
    const std::optional<Mark> again = season_at(name, at);
    if (again && again->number == *season) {
      const std::optional<Mark> episode = episode_at(name, again->last);
      if (episode) return More{episode->last, episode->number, range};
    }
    const std::optional<Mark> crossed = crossed_at(name, at);
    if (crossed && crossed->number == *season) return More{crossed->last, name.at(crossed->last - 1).number, range};
  }
  const Token& next = name.at(at + 1);
  if (joined && token.is(PartWord) && next.is_number() && name.at(i - 2).is(PartWord))
    return More{at + 2, next.number, range};
  if (next.is_plain_number()) {
    const bool letter = token.is(EpisodeLetter) && next.is_glued();
    // "S02E31 - Ep. 55" has a title, "Ep31 - Ep55" has not.
    const bool said = name.at(i - 2).is(EpisodeWord);
    const bool again = said && next.is_glued();
    const bool word =
        token.is(EpisodeWord) && !token.is(CounterWord) &&
        (joined || (range && ((gap == Dash && !next.follows(Dash)) || again)) || (said && next.number == last + 1));
    // "E01E03" holds what is between them, too.
    if (letter || word) return More{at + 2, next.number, range || (letter && gap == 0)};
  }
  const bool in_a_row = gap == Blank && next.number == last + 1;  // "1x03 x04"
  if ((gap == 0 || (gap & ~Blank) == Dash || in_a_row) && is_cross(name, at) && next.is_plain_number() &&
      next.is_glued()) {
    return More{at + 2, next.number, range};
  }
  if (!token.is_plain_number() || token.size() > 4 || !name.stands_alone(at) || is_year(token)) return {};
  const Token& before = name.at(i - 1);
  const bool spaced = (gap & (Blank | Dot)) != 0;
  const Token& behind = name.at(at + 1);
  const bool title = behind.is_word() && !behind.technical && !behind.is(EpisodeWord | OfWord) &&
                     (behind.gap == Blank || behind.gap == Dot || behind.gap == Dash);
  if (title && range && joined) return {};  // "S01E02 To 10 and Back"
  if (joined || first.follows(Tilde)) return More{at + 1, token.number, range};
  constexpr int longest_with_title = 6;  // "S01E02-24 Hours"
  if (gap == Dash && (token.size() > 1 || before.size() == 1)) {
    if (title && !before.follows(Dash) && token.number - last > longest_with_title) return {};
    return More{at + 1, token.number, true};
  }
  if (behind.is_number() && is_year(name.at(at + 2)) && behind.gap == name.at(at + 2).gap) return {};  // a date
  const bool said = name.at(i - 2).is(EpisodeWord) && token.number == last + 1;  // "Episode 5 - 6"
  if ((gap & ~(Blank | Dot)) == Dash && gap != Dash && (token.size() > 1 || said) && token.size() == before.size()) {
    const bool near = token.number - last <= longest_with_title;  // "Ep05 - 10 - 9 - 8"
    if ((behind.follows(Dash) && near) || behind.is_end() || behind.technical || behind.follows(Open | Close))
      return More{at + 1, token.number, true};
  }
  // "S01E09.10.Things" has a title, "8x01_02 Title" has one that begins later.
  const bool same_gaps = at + 1 < name.count() && name.text[token.begin - 1] == name.text[token.end];
  if (spaced && !(title && same_gaps) && (gap == Dot || gap == Blank) && token.size() >= 2 &&
      token.size() == before.size() && token.number == last + 1) {
    return More{at + 1, token.number, false};
  }
  return {};
}

}  // namespace

std::size_t more_episodes(const Name& name, std::size_t next, std::optional<int> season, std::vector<int>& episodes) {
  const auto following = [&](int last) {
    const std::optional<More> more = one_more(name, next, season, last);
    const bool fits = more && more->episode > last && more->episode - last <= longest_range;
    return fits && episodes.size() <= static_cast<std::size_t>(longest_range) ? more : std::nullopt;
  };
  bool listed = false;  // "3-4-15" is three episodes, "3-15" is thirteen
  for (std::optional<More> more = following(episodes.back()); more;) {
    next = more->next;
    const std::optional<More> after = following(more->episode);
    const bool to_be_listed = after && after->range;
    if (more->range && !listed && !to_be_listed) {
      for (int between = episodes.back() + 1; between < more->episode; ++between) episodes.push_back(between);
    }
    listed = more->range;
    episodes.push_back(more->episode);
    more = after;
  }
  return next;
}

}  // namespace quorvel::reader
