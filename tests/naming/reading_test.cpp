#include <gtest/gtest.h>

#include "naming/reader/reading.h"
#include "support/known_names.h"

namespace quorvel {
namespace {

bool same(const testing::KnownName& known, const Reading& read) {
  const Reading& meaning = known.meaning;
  const auto agrees = [](const std::string& wanted, const std::string& got) { return wanted == "?" || wanted == got; };
  return read.show == known.show && read.season == meaning.season && read.episodes == meaning.episodes &&
         read.absolute == meaning.absolute && read.date == meaning.date && read.year == meaning.year &&
         read.country == meaning.country && read.part == meaning.part && read.special == meaning.special &&
         read.certain == meaning.certain && (!meaning.other || read.other == meaning.other) &&
         agrees(meaning.resolution, read.resolution) && agrees(meaning.source, read.source) &&
         agrees(meaning.group, read.group) && agrees(meaning.episode_title, read.episode_title);
}

TEST(Reading, EveryNameSaysWhatItMeans) {
  const std::vector<testing::KnownName> names = testing::known_names(QUORVEL_NAMES);
  EXPECT_GT(names.size(), 400U);
  for (const testing::KnownName& known : names) {
    const Reading read = read_name(known.name);
    EXPECT_TRUE(same(known, read)) << known.name << "\n  means " << testing::described(*known.show, known.meaning)
                                   << "\n  read  " << testing::described(read.show, read);
  }
}

}  // namespace
}  // namespace quorvel
