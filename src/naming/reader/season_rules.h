#pragma once

#include "naming/reader/marks.h"
#include "naming/reader/numbers.h"

/// The rules for a season and an episode, which numbers.cpp ranks with the others. Each gives the numbers that the name
/// has at the token `i`, or none where it does not fit.
namespace quorvel::reader {

struct Search {
  const Name& name;
  const Surroundings& around;
  std::size_t last_year = 0;
  bool in_brackets = false;  // whether a part may stand there

  /// "Season 2/Episode 5 - Season 3"
  bool is_title(const Mark& season) const {
    return around.season.value_or(season.number) != season.number && name.at(season.first).follows_spaced_dash();
  }

  /// What the name itself says of the season, else what the folders say.
  std::optional<int> season() const {
    const std::optional<Mark> said = find_season(name);
    return said && !is_title(*said) ? said->number : around.season;
  }
};

/// The episode that the tokens up to `next` say, with all further ones that follow; without a season it counts over
/// all.
Numbers episodes_from(const Search& search, std::size_t first, std::size_t next, std::optional<int> season, int episode,
                      bool certain);

/// "S01E02", "Season 1 Episode 2", "S01xE02", "s01x02".
std::optional<Numbers> season_and_episode(const Search& search, std::size_t i);

/// "Shows01e02": the letter stands glued to the show.
std::optional<Numbers> glued_to_the_show(const Search& search, std::size_t i);

/// "1x02", "[1x02]", "1 x 02".
std::optional<Numbers> crossed(const Search& search, std::size_t i);

/// "- 1.02 -", "[1.02]", "- 1 - 02 -".
std::optional<Numbers> dotted(const Search& search, std::size_t i);

/// "1x2" may be anything.
std::optional<Numbers> barely_crossed(const Search& search, std::size_t i);

/// "S0102".
std::optional<Numbers> packed(const Search& search, std::size_t i);

/// "Episode 2 Season 1", "Ep 2 (S01)".
std::optional<Numbers> episode_and_season(const Search& search, std::size_t i);

/// "S01 - 02", "Season 1 02", "S2 [05]".
std::optional<Numbers> season_and_number(const Search& search, std::size_t i);

/// "- 110 (10)": season and episode in one, and the episode again.
std::optional<Numbers> said_twice(const Search& search, std::size_t i);

/// "20304": two episodes in a row written as one number; "2-05", and "12-05" at the start: a season and an episode.
std::optional<Numbers> run_together(const Search& search, std::size_t i);

}  // namespace quorvel::reader
