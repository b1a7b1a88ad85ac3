#pragma once

#include "naming/reader/marks.h"
#include "naming/reader/numbers.h"

/// The rules for a season and an episode, which numbers.cpp ranks with the others. Each tells whether it fits at the
/// token `i`, and if so what the numbers are.
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

/// Sets season and episodes, with all further episodes that follow.
bool set(const Search& search, Numbers& numbers, std::size_t first, std::size_t next, std::optional<int> season,
         int episode, bool certain);

/// "S01E02", "Season 1 Episode 2", "S01xE02", "s01x02".
bool season_and_episode(const Search& search, std::size_t i, Numbers& numbers);

/// "Shows01e02": the letter stands glued to the show.
bool glued_to_the_show(const Search& search, std::size_t i, Numbers& numbers);

/// "1x02", "[1x02]", "1 x 02".
bool crossed(const Search& search, std::size_t i, Numbers& numbers);

/// "- 1.02 -", "[1.02]", "- 1 - 02 -".
bool dotted(const Search& search, std::size_t i, Numbers& numbers);

/// "1x2" may be anything.
bool barely_crossed(const Search& search, std::size_t i, Numbers& numbers);

/// "S0102".
bool packed(const Search& search, std::size_t i, Numbers& numbers);

/// "Episode 2 Season 1", "Ep 2 (S01)".
bool episode_and_season(const Search& search, std::size_t i, Numbers& numbers);

/// "S01 - 02", "Season 1 02", "S2 [05]".
bool season_and_number(const Search& search, std::size_t i, Numbers& numbers);

/// "- 110 (10)": season and episode in one, and the episode again.
bool said_twice(const Search& search, std::size_t i, Numbers& numbers);

/// "20304": two episodes in a row written as one number; "2-05", and "12-05" at the start: a season and an episode.
bool run_together(const Search& search, std::size_t i, Numbers& numbers);

}  // namespace quorvel::reader
