#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Reading names for the exact way: what the path of an episode's file says. The classic way's patterns are in
/// naming/episode_patterns.h.
namespace quorvel {

struct Date {
  int year = 0, month = 0, day = 0;
  bool operator==(const Date&) const = default;
};

/// What figures may mean as well: "205" is the 205th episode, or the fifth of the second season.
struct OtherNumbers {
  std::optional<int> season;  // also one that an absolute number must lie in
  std::vector<int> episodes, absolute;
  std::optional<Date> date;
  bool operator==(const OtherNumbers&) const = default;
};

/// What is not said is empty. A name without season and episodes, absolute numbers and date names no episode, unless it
/// is a special that only its title tells of.
struct Reading {
  std::string show;           // as it is written, with blanks between the words; without year and country
  std::optional<int> year;    // behind the show's name
  std::string country;        // behind the show's name, in capital letters: "US"
  std::optional<int> season;  // 0 for specials
  std::vector<int> episodes;  // in the season, ascending; where they stand, there is a season
  std::vector<int> absolute;  // counted over all seasons, ascending
  std::optional<Date> date;   // of the broadcast
  std::optional<int> part;    // of a mini-series, whose season is 1
  bool special = false;
  std::string resolution, source, group, episode_title;  // as they are written
  bool certain = false;                                  // no other reading of the numbers is likely
  std::optional<OtherNumbers> other;  // where one is, and only one: what to try when these do not fit

  bool operator==(const Reading&) const = default;

  /// Whether there is anything to look an episode up by.
  bool names_episode() const { return has_numbers() || (special && !episode_title.empty()); }
  bool has_numbers() const { return !episodes.empty() || !absolute.empty() || date.has_value(); }
};

/// Reads a path, absolute or not, of a file that need not exist; both "/" and "\" separate folders, since lists of
/// names come from other systems too. Folders fill in what the file's name leaves out.
Reading read_name(std::string_view path);

}  // namespace quorvel
