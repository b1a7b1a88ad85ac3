#include <gtest/gtest.h>

#include "naming/reader/reading.h"
#include "support/known_names.h"

namespace quorvel {
namespace {

bool same(const testing::KnownName& known, const Reading& read) {
  Reading meaning = known.meaning;
  meaning.show = known.show.value_or("?");
  for (std::string Reading::*const text :
       {&Reading::show, &Reading::resolution, &Reading::source, &Reading::group, &Reading::episode_title}) {
    if (meaning.*text == "?") meaning.*text = read.*text;  // it does not matter
  }
  return read == meaning;
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
