#include "naming/reader/reading.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

#include "naming/reader/dates.h"
#include "naming/reader/marks.h"
#include "naming/reader/numbers.h"
#include "naming/reader/show.h"
#include "naming/reader/specials.h"
#include "naming/reader/technical.h"
#include "text/characters.h"

namespace quorvel {
namespace {

using namespace reader;

constexpr std::size_t looked_at = 4;  // folders above a file that may help to read it

/// Where folders are separated. A slash between blanks or within brackets belongs to a name, for releases are named so;
/// no folder's name ends in a blank, nor opens a bracket that a file's name closes.
std::vector<std::size_t> separators(std::string_view path) {
  std::vector<std::size_t> slashes, brackets;
  for (std::size_t i = 0; i < path.size(); ++i) {
    const char byte = path[i];
    if (byte == '(' || byte == '[') {
      brackets.push_back(i);
    } else if (!brackets.empty() && byte == (path[brackets.back()] == '(' ? ')' : ']')) {
      while (!slashes.empty() && slashes.back() > brackets.back()) slashes.pop_back();
      brackets.pop_back();
    } else if (byte == '/' || byte == '\\') {
      const bool spaced = path.substr(0, i).ends_with(' ') && path.substr(i + 1).starts_with(' ');
      if (!spaced) slashes.push_back(i);
    }
  }
  return slashes;
}

/// The components from the last one up, at most one file and the folders that are looked at.
std::vector<std::string_view> components(std::string_view path) {
  std::vector<std::string_view> found;
  std::vector<std::size_t> slashes = separators(path);
  std::size_t end = path.size();
  while (found.size() <= looked_at) {
    const std::size_t begin = slashes.empty() ? 0 : slashes.back() + 1;
    if (end > begin) found.push_back(path.substr(begin, end - begin));
    if (slashes.empty()) break;
    end = slashes.back();
    slashes.pop_back();
  }
  return found;
}

/// What the table says of the word behind the name's last dot; nothing where none may be an extension.
std::uint32_t last_kinds(std::string_view name, std::size_t dot) {
  if (dot == std::string_view::npos || dot == 0) return 0;
  const std::string word = lower_ascii(name.substr(dot + 1));
  const std::size_t region = word.find('-');  // "pt-BR"
  return find_word(region == 2 ? std::string_view(word).substr(0, region) : word).kinds;
}

std::string_view without_extension(std::string_view name) {
  bool subtitles = false;
  while (true) {
    const std::size_t dot = name.rfind('.');
    const std::uint32_t kinds = last_kinds(name, dot);
    if ((kinds & (Extension | (subtitles ? SubtitleWord | Language : 0U))) == 0) return name;
    subtitles = subtitles || (kinds & SubtitleWord) != 0;
    name.remove_suffix(name.size() - dot);
  }
}

Name prepared(std::string_view text) {
  Name name(text);
  mark_technical(name);
  return name;
}

bool is_sample(const Name& name) {
  for (std::size_t i = 0; i < name.count(); ++i) {
    if (!name.at(i).is(SampleWord)) continue;
    if (i + 1 == name.count() || (i == 0 && name.at(1).follows(Dash))) return true;
  }
  return false;
}

/// What the numbers and the text around them say.
void take(const Name& name, const Numbers& numbers, Reading& reading) {
  reading.season = numbers.season;
  reading.episodes = numbers.episodes;
  reading.absolute = numbers.absolute;
  reading.date = numbers.date;
  reading.part = numbers.part;
  reading.special = numbers.special;
  reading.certain = numbers.certain;
  if (!numbers.certain) reading.other = numbers.other;
  read_surroundings(name, numbers, reading);
}

/// Whether a folder's name says nothing of the show.
bool is_generic(const Name& name) {
  for (std::size_t i = 0; i < name.count(); ++i) {
    const Token& token = name.at(i);
    const bool says_something =
        token.is_number() ? i == 0 && !token.technical : !token.is(FolderWord | SeasonWord | SpecialWord | VolumeWord);
    if (says_something) return false;
  }
  return true;
}

std::string reversed(std::string_view text) {
  return {text.rbegin(), text.rend()};
}

/// "vkm.p027.20E10S.wohS": what only makes sense when read from the end.
bool is_backward(const Name& name) {
  for (std::size_t i = 0; i + 3 < name.count(); ++i) {
    const bool forward = name.is_word(i - 1, "s");  // "S01E02S01E03"
    if (!forward && name.at(i).is_number() && name.at(i + 1).is(EpisodeLetter) && name.at(i + 1).is_glued() &&
        name.at(i + 2).is_number() && name.at(i + 2).is_glued() && name.is_word(i + 3, "s") &&
        name.at(i + 3).is_glued()) {
      return true;
    }
    if (name.is_word(i, "p") && name.at(i + 1).is_glued() &&
        (name.written(name.at(i + 1)) == "027" || name.written(name.at(i + 1)) == "0801"))
      return true;
  }
  return false;
}

/// What the name of the file's own folder says of an episode.
Reading read_folder(const std::vector<std::string_view>& parts) {
  if (parts.size() < 2) return {};
  Reading reading;
  Name name = prepared(parts[1]);
  std::string turned;
  if (is_backward(name)) {
    turned = reversed(name.text);
    name = prepared(turned);
  }
  const Numbers numbers = find_numbers(name, {});
  if (numbers.found()) take(name, numbers, reading);
  return reading;
}

/// Names such as "abl-sr205" that a release gives its files; the folder has the words.
bool is_short_for_more(std::string_view show) {
  return std::ranges::none_of(show, is_capital);
}

/// Whether the folder's certain reading says more than the file's: that one says no numbers, or unsure ones, or the
/// same.
bool speaks_for(const Reading& folder, const Reading& file) {
  constexpr std::size_t most = 4;         // a folder that says more holds a file for each
  if (folder.show.empty()) return false;  // "24 Season 2" holds more than an episode
  if (folder.episodes.size() > most || folder.absolute.size() > most) return false;
  if (!file.has_numbers() || !file.certain) return true;
  return folder.season == file.season && folder.episodes == file.episodes && folder.show.size() > file.show.size();
}

/// A folder "Specials", or a bare number below a folder that can be the show's: "Show/2/05.mkv", but not
/// "TV/24/05.mkv".
std::optional<Mark> bare_season(const Token& token, const std::vector<std::string_view>& parts, std::size_t i) {
  if (token.is(SpecialWord)) return Mark{0, 1, 0};
  if (!token.is_number() || token.size() > 2 || i + 1 == parts.size() || is_generic(prepared(parts[i + 1]))) return {};
  return Mark{0, 1, token.number};
}

struct Folder {
  Name name;
  std::optional<Mark> season;
};

/// "Season 1", "Season 1 - Beginnings", "S01 [1080p]", "S01E02": a folder that says nothing of the show
bool is_season_alone(const Folder& folder) {
  if (!folder.season || folder.season->first > 0) return false;
  const Token& next = folder.name.at(folder.season->last);
  return next.is_end() || next.technical || next.follows_spaced_dash() || next.follows(Open) ||
         episode_at(folder.name, folder.season->last);
}

/// A folder of a season or a year.
bool is_part_of_show(const Folder& folder) {
  return is_season_alone(folder) || (folder.name.count() == 1 && is_year(folder.name.at(0)));
}

/// The show, with year and country, of the nearest folder that is named after one.
Reading show_of(std::span<const Folder> folders) {
  Reading reading;
  for (const Folder& folder : folders) {
    if (!reading.show.empty()) break;
    if (!is_season_alone(folder) && !is_generic(folder.name)) read_show_folder(folder.name, reading);
  }
  return reading;
}

/// Whether the last word of a file's show is made of the first letters of the folder's: "sr", "able sr".
bool abbreviates(std::string_view show, std::string_view whole) {
  std::string letters;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    if (i == 0 || whole[i - 1] == ' ') letters += whole[i];
  }
  return letters.size() > 1 && is_short_for_more(show) && show.substr(show.rfind(' ') + 1) == lower_ascii(letters);
}

/// How many tokens of the file's name repeat the name of a folder up to its year or season:
/// "11.22.63/11.22.63.102.avi".
std::size_t repeated(const Folder& folder, const Name& file) {
  if (const std::optional<DateMark> day = find_date(folder.name); day && day->certain) return 0;
  if (is_year(folder.name.at(0)) && folder.name.count() == 1) return 0;  // "2011/2011-04-18"
  std::size_t i = 0;
  for (; i < folder.name.count(); ++i) {
    const Token& token = folder.name.at(i);
    const bool dated =
        token.follows(Open) && is_year(token) && is_year(file.at(i)) && token.number == file.at(i).number;
    if (i > 0 && dated) {
      ++i;
      break;
    }
    if (i > 0 && (token.follows(Open) || token.technical || (folder.season && folder.season->first == i))) break;
    // "Show - 05/Show - 05 - The 2 of Us": the folder is an episode's.
    if (episode_at(folder.name, i) || (token.is_number() && token.follows_spaced_dash())) return 0;
    if (i >= file.count() || folder.name.lowered(token) != file.lowered(file.at(i))) return 0;
  }
  return !file.at(i).is_end() && !file.at(i).is_glued() ? i : 0;
}

}  // namespace

Reading read_name(std::string_view path) {
  const std::vector<std::string_view> parts = components(path);
  if (parts.empty()) return {};
  Name file = prepared(without_extension(parts.front()));
  if (is_sample(file)) return {};
  std::string turned;
  if (is_backward(file)) {
    turned = reversed(file.text);
    file = prepared(turned);
  }

  std::vector<Folder> folders;
  folders.reserve(parts.size());
  Surroundings around;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    folders.push_back({prepared(parts[i]), {}});
    Folder& folder = folders.back();
    folder.season = find_season(folder.name);
    if (!folder.season && folder.name.count() == 2) folder.season = season_at(folder.name, 0);  // "Series 2"
    if (!folder.season && folder.name.count() == 1) folder.season = bare_season(folder.name.at(0), parts, i);
    if (folder.season && !around.season) around.season = folder.season->number;
  }

  Reading reading;
  Numbers numbers;
  if (!is_meaningless(file)) {
    for (const Folder& folder : folders) file.named = std::max(file.named, repeated(folder, file));
    numbers = find_numbers(file, around);
    if (!numbers.found() && std::exchange(file.named, 0) > 0) numbers = find_numbers(file, around);
  }
  if (numbers.found()) take(file, numbers, reading);
  if (!reading.certain || is_short_for_more(reading.show)) {
    if (const Reading of_folder = read_folder(parts); of_folder.certain && speaks_for(of_folder, reading))
      reading = of_folder;
  }
  if (!reading.has_numbers()) {
    reading = {};
    if (!is_meaningless(file)) read_special(file, around.season == 0, reading);
    if (!reading.special) return {};
  }
  // "Show/2011/2011-04-18 - Title"
  const bool date_first = numbers.date && reading.date == numbers.date && numbers.first == 0;
  const bool only_title = date_first && !folders.empty() && is_part_of_show(folders.front());
  const Reading above = show_of(std::span(folders).subspan(only_title ? 1 : 0));
  if (only_title && !above.show.empty()) reading.episode_title = std::exchange(reading.show, {});
  if (reading.show.empty() || abbreviates(reading.show, above.show)) {
    reading.show = above.show;
    if (above.year) reading.year = above.year;
    if (!above.country.empty()) reading.country = above.country;
  }
  return reading;
}

}  // namespace quorvel
