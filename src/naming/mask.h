#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Building names from masks such as "[show] - [s]x[ee] - [title]".
namespace quorvel {

/// What the tokens of a mask stand for.
struct MaskValues {
  std::string show;
  int season = 0;
  int episode = 0;
  std::string title;
  std::vector<int> more_episodes = {};  // when a file holds several
};

/// `mask` with [show], [s], [ss], [e], [ee] and [title] replaced, in this order. Several episodes are all named by [e]
/// and [ee]: "02-E03" behind an "E" or "e", "02-03" elsewhere.
std::string expand_name(std::string_view mask, const MaskValues& values);

/// `path` with [show], [s] and [ss] replaced; the other tokens mean nothing in a folder and stay.
std::string expand_folder(std::string_view path, const MaskValues& values);

}  // namespace quorvel
