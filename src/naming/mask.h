#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Building names from masks such as "[show] - [s]x[ee] - [title]".
namespace quorvel {

/// What can be in a name beside show, numbers and title; empty where it is not known.
struct NameFacts {
  std::string year, country, id;                // of the show
  std::string date;                             // of the broadcast: "2011-04-18"
  std::string named_date, named_year;           // of it, where the file's name goes by it
  std::string absolute;                         // counted over all seasons
  std::string resolution, source, group, part;  // as the file's name says them
  std::string old_name;                         // without its extension
  int season_digits = 2, episode_digits = 2;    // as many as the longest in the show and in the season has
  bool operator==(const NameFacts&) const = default;
};

/// What the tokens of a mask stand for.
struct MaskValues {
  std::string show;
  int season = 0;
  int episode = 0;
  std::string title;
  std::vector<int> more_episodes = {};  // when a file holds several
  NameFacts facts = {};
};

/// `mask` with [show], [s], [ss], [e], [ee] and [title] replaced, in this order. Several episodes are all named by [e]
/// and [ee]: "02-E03" behind an "E" or "e", "02-03" elsewhere.
///
/// Before these, the tokens that a name need not have a value for: [year], [country], [id], [date], [dated],
/// [dated-year], [abs], [resolution], [source], [group], [part], [old]; [S] and [E], which are as long as the longest
/// of their kind; [ee-] and [ee+], which name the first and the last of several episodes, or each of them: "02-E04",
/// "02E03E04". A part in braces that holds one of these, and no separator, is there only when all of them in it have a
/// value; behind a "|" in it stands what else is there. Other braces are letters. [ee-] and [ee+] have no value where
/// there is no number.
std::string expand_name(std::string_view mask, const MaskValues& values);

/// `path` with [show], [s], [ss], [S] and the other tokens of braces replaced; those of episodes and titles mean
/// nothing in a folder and stay. A folder of which nothing is left is left out.
std::string expand_folder(std::string_view path, const MaskValues& values);

}  // namespace quorvel
