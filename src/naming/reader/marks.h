#pragma once

#include <optional>

#include "naming/reader/tokens.h"

/// The pieces that rules are made of: a season, an episode, and what continues a list of episodes.
namespace quorvel::reader {

struct Mark {
  std::size_t first = 0, last = 0;  // tokens, the last one excluded
  int number = 0;
  bool weak = false;  // the word is also an ordinary one, such as "series"
};

/// Whether the number at `i` says how many there are: "全12集", "12集全".
bool is_total(const Name& name, std::size_t i);

/// "S02", "Season 2", "2nd Season", "Second Season", "第2季" starting at token `i`.
std::optional<Mark> season_at(const Name& name, std::size_t i);

/// "E02", "Ep. 2", "#2", "2화", "第2話" starting at token `i`.
std::optional<Mark> episode_at(const Name& name, std::size_t i);

/// "1x02" starting at token `i`: the mark's number is the season, the episode is the last token.
std::optional<Mark> crossed_at(const Name& name, std::size_t i);

/// Whether the season's word at `i` is also an ordinary one.
bool is_weak(const Name& name, std::size_t i);

/// The first season that a name says anywhere.
std::optional<Mark> find_season(const Name& name);

/// Appends the further episodes that follow token `next` to `episodes`, which is not empty; returns what follows them.
/// `season` is what a repeated season has to be; none where seasons are not said.
std::size_t more_episodes(const Name& name, std::size_t next, std::optional<int> season, std::vector<int>& episodes);

}  // namespace quorvel::reader
