#include <array>

#include "fuzz_support.h"
#include "naming/episode_patterns.h"
#include "text/case.h"
#include "text/failure.h"
#include "text/title.h"
#include "text/wildcard.h"

using namespace quorvel;

namespace {

struct Row {
  const char* probe;
  bool folder, backward;
  std::size_t season, season_digits, episode, episode_digits;
  int id;
};
constexpr std::array<Row, 19> rows = {{{".s##e##.", true, false, 2, 2, 5, 2, 1},
                                       {".###.", true, false, 1, 1, 2, 2, 2},
                                       {" - ##x## - ", true, false, 3, 2, 6, 2, 3},
                                       {" - #x## - ", true, false, 3, 1, 5, 2, 4},
                                       {".#x0##.", true, false, 1, 1, 4, 2, 6},
                                       {".##x##.", true, false, 1, 2, 4, 2, 5},
                                       {".#x##.", true, false, 1, 1, 3, 2, 6},
                                       {".s##.e##.", true, false, 2, 2, 6, 2, 7},
                                       {".s#e##.", true, false, 2, 1, 4, 2, 8},
                                       {".s##e#.", true, false, 2, 2, 5, 1, 9},
                                       {".s#e#.", true, false, 2, 1, 4, 1, 10},
                                       {" #x## ", true, false, 1, 1, 3, 2, 11},
                                       {" ##x## ", true, false, 1, 2, 4, 2, 12},
                                       {"s##e##", false, false, 1, 2, 4, 2, 13},
                                       {"##x##", true, false, 0, 2, 3, 2, 14},
                                       {"#x##", true, false, 0, 1, 2, 2, 15},
                                       {"##.##", false, false, 0, 2, 3, 2, 16},
                                       {"####", false, true, 0, 2, 2, 2, 17},
                                       {"###", false, true, 0, 1, 1, 2, 18}}};

/// Row by row and place by place, as the table is read.
std::optional<Detection> slow_detect(const std::string& name, bool folder) {
  for (const Row& row : rows) {
    if ((folder && !row.folder) || !matches(name, "*" + std::string(row.probe) + "*")) continue;
    const std::size_t length = std::string_view(row.probe).size();
    std::optional<std::size_t> place;
    for (std::size_t at = 0; at + length <= name.size(); ++at) {
      const bool resolution = row.backward && name.substr(at + length, 1) == "p";
      if (!resolution && matches(name.substr(at, length), row.probe)) place = at;
    }
    if (!place) return Detection{.is_refused = true};
    std::string show = name.substr(0, *place);
    for (char& letter : show) letter = letter == '.' ? ' ' : letter;
    return Detection{cleantitle(show), std::stoi(name.substr(*place + row.season, row.season_digits)),
                     std::stoi(name.substr(*place + row.episode, row.episode_digits)), row.id};
  }
  return std::nullopt;
}

template <typename Detect>
std::optional<Detection> outcome(Detect detect) {
  try {
    return detect();
  } catch (const Failure&) {
    return Detection{"a failure", -1, -1, -1};
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name = lower_case(fuzz::text_of(data, std::min<std::size_t>(size, 255)));
  fuzz::check(outcome([&] { return detect_in_file(name); }) == outcome([&] { return slow_detect(name, false); }),
              "a file's name is read as the table says");
  fuzz::check(outcome([&] { return detect_in_folder(name); }) == outcome([&] { return slow_detect(name, true); }),
              "a folder's name is read as the table says");
  return 0;
}
