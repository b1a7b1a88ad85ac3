#include "naming/reader/reading.h"
#include "fuzz_support.h"

using namespace quorvel;

namespace {

bool ascends(const std::vector<int>& numbers) {
  return std::adjacent_find(numbers.begin(), numbers.end(), std::greater_equal<>()) == numbers.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string path(fuzz::text_of(data, size));
  const Reading reading = read_name(path);
  fuzz::check(reading.episodes.empty() || reading.season.has_value(), "episodes belong to a season");
  fuzz::check(ascends(reading.episodes) && ascends(reading.absolute), "numbers ascend");
  fuzz::check(reading.episodes.size() <= 1000 && reading.absolute.size() <= 1000, "no name holds endless episodes");
  fuzz::check(!reading.certain || reading.has_numbers(), "nothing is certain where nothing is read");
  fuzz::check(!reading.other || !reading.certain, "what may be something else is not certain");
  fuzz::check(!reading.part || !reading.episodes.empty(), "a part is an episode, too");
  fuzz::check(!reading.date || (reading.date->month >= 1 && reading.date->month <= 12 && reading.date->day >= 1 &&
                                reading.date->day <= 31),
              "a date is one");
  fuzz::check(reading.show.size() <= path.size() && reading.episode_title.size() <= path.size(), "no text grows");
  return 0;
}
