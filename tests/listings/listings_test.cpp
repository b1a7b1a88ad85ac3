#include <gtest/gtest.h>

#include "listings/utf8_decode.h"
#include "session_fixture.h"
#include "text/code_page.h"

namespace quorvel::testing {
namespace {

struct Listings : ::testing::Test, TestSession {
  Listings() { start(); }
  const Show lights{101, "The Harbour Lights", "\"https://www.tvmaze.com/shows/101/the-harbour-lights\""};

  /// The episode's title, and what was logged on the way.
  std::string title(const Show& show, int season, int number, EpisodeListings::Options options = {}) {
    const std::size_t before = session.log.lines().size();
    std::string title = "(none)";
    try {
      if (const auto found = session.listings.getlistings(show, "searched", season, number, options)) {
        title = found->title;
      }
    } catch (const Failure& failure) {
      title = std::string("(failure) ") + failure.what();
    }
    return title + "|" + log(before);
  }
  std::string search(const std::string& name, bool use_cache = true) {
    const std::size_t before = session.log.lines().size();
    std::string found = "(none)";
    try {
      if (const auto show = session.search.searchtv(name, use_cache)) {
        found = std::to_string(show->id) + " " + show->name + " " + show->url;
      }
    } catch (const Failure&) {
      found = "(failure)";
    }
    return found + "|" + log(before);
  }
};

TEST_F(Listings, AShowIsSearchedOnceAndThenFoundInItsCache) {
  const std::string found = "101 The Harbour Lights " + lights.url;
  EXPECT_EQ(search("the harbour lights"), found + "|Query not in cache|Updating query cache");
  EXPECT_EQ(read("data/Quorvel/cache/the harbour lights.qc"), "101\t" + lights.url + "\tThe Harbour Lights");
  EXPECT_EQ(search("the harbour lights"), found + "|Found query in cache");
  EXPECT_EQ(search("the: harbour? lights"), found + "|Found query in cache") << "the characters that no name holds";
  EXPECT_EQ(service.requests(), std::vector<std::string>{"GET /search/shows?q=the+harbour+lights HTTP/1.0\r\n"
                                                         "Host: 127.0.0.1\r\nAccept: */*\r\n\r\n"});
  EXPECT_EQ(search("café noir"),
            "102 CafÃ© Noir \"https://www.tvmaze.com/shows/102/cafe-noir\"|Query not in cache|"
            "Updating query cache");
}

TEST_F(Listings, WithTheCacheOffTheServiceIsAlwaysAskedAndNothingIsWritten) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(search("the harbour lights", false).ends_with("\"|Query cache disabled"));
    EXPECT_EQ(title(lights, 1, 1, {.use_cache = false}),
              "Slack Water|Ep cache disabled|Getting listings for: The Harbour Lights|Found episode in listings");
  }
  EXPECT_EQ(service.requests().size(), 4u);
  EXPECT_FALSE(exists("data/Quorvel/cache"));
}

TEST_F(Listings, ADamagedQueryCacheIsReplaced) {
  files->create_folder(work_dir() + "cache");
  for (const char* bytes : {"", "no tab", "1\tone tab", "x\ty\tz"}) {
    write("data/Quorvel/cache/the harbour lights.qc", bytes);
    EXPECT_TRUE(search("the harbour lights").starts_with("101 ")) << bytes;
    EXPECT_TRUE(read("data/Quorvel/cache/the harbour lights.qc").starts_with("101\t"));
  }
}

TEST_F(Listings, EveryAnswerEndsInAShowOrInAReason) {
  const struct {
    std::string body, outcome;
  } cases[] = {{"[]", "(none)|Query cache disabled|Site reports no results for: \"x\""},
               {"binary \x01\xFF\n", "(none)|Query cache disabled|Error parsing results (Err 2)"},
               {"[{\"show\":{\"name\":\"X\",}}]", "(failure)|Query cache disabled"},
               {"[{\"show\":{\"id\":null,}}]", "(failure)|Query cache disabled"},
               {"[{\"show\":{\"id\":5,\"name\":\"&#x;\",}}]", "(failure)|Query cache disabled"},
               {"[{\"show\":{\"id\":5,\"url\":\"u\",\"name\":\"cut o",
                "(none)|Query cache disabled|Error parsing results (Err 2)"},
               {":{\"id\":9,\"name\":\"Net\",\"show\"}]", "(none)|Query cache disabled|Error parsing results (Err 2)"},
               {"[{\"show\":{\"id\":5,\"url\":\"u\",\"name\":\"" + std::string(10000, 'x') + "\",}}]",
                "5 " + std::string(10000, 'x') + " \"u\"|Query cache disabled"},
               {"[\"show\"" + std::string(5'000'000, 'x') + "]", "(failure)|Query cache disabled"}};
  for (const auto& c : cases) {
    service.misbehave(scripts::body(c.body));
    EXPECT_EQ(search("x", false), c.outcome) << c.body.substr(0, 80);
  }
  for (const auto& script : {scripts::status(500), scripts::no_blank_line(), scripts::truncated(40)}) {
    service.misbehave(script);
    EXPECT_TRUE(search("harbour lights").starts_with("(none)|Query not in cache"));
  }
  for (std::size_t cut = 1; cut < 120; cut += 7) {
    service.misbehave(scripts::split_at(cut));
    const std::string found = search("the harbour lights", false);
    EXPECT_TRUE(found.starts_with("101 The Harbour Lights") || found.starts_with("(none)")) << cut << found;
  }
}

TEST_F(Listings, AiredEpisodesComeFromTheCacheAndOthersAreFetchedAgain) {
  const std::string fetched = "|No matches found in ep cache|Getting listings for: Tomorrow Street|Updating ep cache";
  const Show street{106, "Tomorrow Street", ""};
  const std::string first = title(street, 1, 1);
  EXPECT_TRUE(first.find(fetched) != std::string::npos && first.ends_with("|Found episode in listings")) << first;
  EXPECT_TRUE(title(street, 1, 1).ends_with("|Found episode in cache"));
  EXPECT_EQ(read("data/Quorvel/cache/Tomorrow Street.epc").find("2999"), std::string::npos);
  for (int number = 1; number <= 3; ++number) {
    EXPECT_TRUE(title(street, 2, number).ends_with("|Found episode in listings")) << number;
  }
  EXPECT_TRUE(title(street, 9, 9).starts_with("(none)|"));
}

TEST_F(Listings, TheCacheIsReadAnewWhenItsFileChanges) {
  title(lights, 1, 1);
  const std::string file = "data/Quorvel/cache/The Harbour Lights.epc";
  EXPECT_TRUE(read(file).starts_with("2015-"));
  write(file, "2015-01-01\t1\t1\turl\tBy Hand\r\n2015-01-01\t1\t1\turl\tSecond\r\n");
  EXPECT_EQ(title(lights, 1, 1), "By Hand|Found episode in cache");
  write(file, "2015-01-01\tx\t1\turl\tBroken\r\n");
  EXPECT_TRUE(title(lights, 1, 1)
                  .starts_with("Slack Water|Error checking ep cache: \"x\" is not a whole number of 32 bits|No matches "
                               "found in ep cache|"));
}

TEST_F(Listings, ADateWithTabsBringsNoOtherEpisodeIntoTheCache) {
  const Show shift{9, "Shift", ""};
  service.misbehave(
      scripts::body("[{\"id\":1,\"url\":\"u\",\"name\":\"Right\",\"season\":1,\"number\":1,"
                    "\"airdate\":\"2015-01-01-\t1\t5\tu\tWrong\",\"x\":0}]"));
  EXPECT_TRUE(title(shift, 1, 1).starts_with("Right|"));
  EXPECT_TRUE(title(shift, 1, 5).starts_with("(none)|"));
}

TEST_F(Listings, TitlesAreDecodedUnlessTheUserTurnsThatOff) {
  const Show noir{102, "CafÃ© Noir", ""};
  EXPECT_TRUE(title(noir, 1, 2).starts_with("Überfall|"));
  EXPECT_TRUE(title(noir, 1, 2).starts_with("Überfall|Found episode in cache"));
  EXPECT_TRUE(title(noir, 1, 2, {.decode_utf8 = false}).starts_with("Ãœberfall|"));
}

TEST_F(Listings, AListThatCannotBeReadToItsEndIsNotTrusted) {
  EXPECT_TRUE(title({107, "Specials", ""}, 1, 1).starts_with("(failure) \"null\" is not a whole number"));
  EXPECT_TRUE(title({108, "Empty Shelf", ""}, 1, 1).ends_with("Site reports no episodes for: \"searched\""));
  EXPECT_TRUE(title({999, "Nobody", ""}, 1, 1).starts_with("(none)|"));
  service.misbehave(scripts::body("{\"name\":\"x\"}"));
  EXPECT_TRUE(title(lights, 1, 1).ends_with("Error parsing listings (Err 5)"));
}

TEST_F(Listings, OnlyAPastCalendarDayCountsAsAired) {
  for (const char* date : {"2026-03-14", "2011-4-7", "1959-10-02"})
    EXPECT_TRUE(session.listings.is_aired(date)) << date;
  for (const char* date : {"2026-03-15", "", "0000-00-00", "0-0-0", "2011-00-05", "2011-05-00", "2011-02-30", "2011-05",
                           "x-y-z", "2011-13-01", "99999-01-01", "2011-257-01"}) {
    EXPECT_FALSE(session.listings.is_aired(date)) << date;
  }
  EXPECT_TRUE(logged("Error checking date"));
}

TEST_F(Listings, Utf8IsDecodedLeniently) {
  const struct {
    std::string bytes, text;
  } cases[] = {{"\xC3\xA9", "é"}, {"x\xE6\x97\xA5", "x日"}, {"x", ""},
               {"", ""},          {"a\xC3", "aÃ"},          {"\xF0\x9F\x98\x80", "ðŸ˜€"},
               {"ab\x80", "ab€"}, {"\xC2zz", "\xC2\xBAz"},  {"..\xE0\x80\xAFx", "..à€¯x"}};
  for (const auto& c : cases) EXPECT_EQ(UTF8Decode(from_code_page(c.bytes), session.log), c.text) << c.bytes;
  EXPECT_TRUE(logged("Error converting string from UTF-8: a character is cut off at the end"));
}

}  // namespace
}  // namespace quorvel::testing
