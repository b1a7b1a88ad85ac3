#include "naming/episode_patterns.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "text/characters.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/title.h"

namespace quorvel {
namespace {

enum class Where : std::uint8_t { FileAndFolder, FileOnly };
enum class Scan : std::uint8_t { Forward, BackwardSkippingP };

/// A run of digits, counted from the start of the probe.
struct Digits {
  std::uint8_t offset;
  std::uint8_t count;
};

struct Pattern {
  std::string_view probe;  // "#" is a digit, anything else itself; it fits a name that holds it anywhere
  Where where;
  Scan scan;
  Digits season;
  Digits episode;
  int id;
};

using enum Where;
using enum Scan;

// The order decides: the first probe that a name holds is used, even when the scan then accepts none of its places.
// The ids are what users know from their logs; 6 stands twice, and before 5.
constexpr auto patterns = std::to_array<Pattern>({
    {".s##e##.", FileAndFolder, Forward, {2, 2}, {5, 2}, 1},
    {".###.", FileAndFolder, Forward, {1, 1}, {2, 2}, 2},
    {" - ##x## - ", FileAndFolder, Forward, {3, 2}, {6, 2}, 3},
    {" - #x## - ", FileAndFolder, Forward, {3, 1}, {5, 2}, 4},
    {".#x0##.", FileAndFolder, Forward, {1, 1}, {4, 2}, 6},
    {".##x##.", FileAndFolder, Forward, {1, 2}, {4, 2}, 5},
    {".#x##.", FileAndFolder, Forward, {1, 1}, {3, 2}, 6},
    {".s##.e##.", FileAndFolder, Forward, {2, 2}, {6, 2}, 7},
    {".s#e##.", FileAndFolder, Forward, {2, 1}, {4, 2}, 8},
    {".s##e#.", FileAndFolder, Forward, {2, 2}, {5, 1}, 9},
    {".s#e#.", FileAndFolder, Forward, {2, 1}, {4, 1}, 10},
    {" #x## ", FileAndFolder, Forward, {1, 1}, {3, 2}, 11},
    {" ##x## ", FileAndFolder, Forward, {1, 2}, {4, 2}, 12},
    {"s##e##", FileOnly, Forward, {1, 2}, {4, 2}, 13},
    {"##x##", FileAndFolder, Forward, {0, 2}, {3, 2}, 14},
    {"#x##", FileAndFolder, Forward, {0, 1}, {2, 2}, 15},
    {"##.##", FileOnly, Forward, {0, 2}, {3, 2}, 16},
    {"####", FileOnly, BackwardSkippingP, {0, 2}, {2, 2}, 17},
    {"###", FileOnly, BackwardSkippingP, {0, 1}, {1, 2}, 18},
});

bool probe_fits(std::string_view name, std::size_t at, std::string_view probe) {
  const auto fits = [](char wanted, char given) { return wanted == '#' ? is_digit(given) : wanted == given; };
  return std::ranges::equal(probe, name.substr(at, probe.size()), fits);
}

/// A resolution such as "1080p" is no episode.
bool is_accepted(const Pattern& pattern, std::string_view name, std::size_t at) {
  if (pattern.scan == Forward) return true;
  const std::size_t after = at + pattern.probe.size();
  return after == name.size() || name[after] != 'p';
}

struct Place {
  bool probe_found = false;
  std::size_t at = std::string_view::npos;  // of the rightmost accepted occurrence
};

/// Every probe holds a digit, so only places around the digits of the name are looked at.
Place find_place(const Pattern& pattern, std::string_view name) {
  const std::size_t first_digit = pattern.probe.find('#');
  Place place;
  for (std::size_t digit = name.size(); digit-- > first_digit;) {
    const std::size_t at = digit - first_digit;
    if (!is_digit(name[digit]) || !probe_fits(name, at, pattern.probe)) continue;
    place.probe_found = true;
    if (!is_accepted(pattern, name, at)) continue;
    place.at = at;
    break;
  }
  return place;
}

int number_at(std::string_view name, std::size_t start, Digits digits) {
  int number = 0;
  for (const char digit : name.substr(start + digits.offset, digits.count)) number = number * 10 + (digit - '0');
  return number;
}

std::optional<Detection> detect(std::string_view name, bool is_folder) {
  for (const Pattern& pattern : patterns) {
    if (is_folder && pattern.where == FileOnly) continue;
    const Place place = find_place(pattern, name);
    if (!place.probe_found) continue;
    if (place.at == std::string_view::npos) return Detection{.is_refused = true};
    std::string show(name.substr(0, place.at));
    std::replace(show.begin(), show.end(), '.', ' ');
    return Detection{cleantitle(show), number_at(name, place.at, pattern.season),
                     number_at(name, place.at, pattern.episode), pattern.id};
  }
  return {};
}

}  // namespace

std::optional<Detection> detect_in_file(std::string_view name) {
  return detect(name, false);
}

std::optional<Detection> detect_in_folder(std::string_view name) {
  return detect(name, true);
}

std::string_view parent_folder_name(std::string_view path, char separator) {
  const std::size_t last = path.rfind(separator);
  if (last == std::string_view::npos) throw Failure("\"" + std::string(path) + "\" names no folder");
  const std::string_view folder = path.substr(0, last);
  return folder.substr(folder.rfind(separator) + 1);
}

}  // namespace quorvel
