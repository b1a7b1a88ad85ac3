#include <gtest/gtest.h>

#include "listings/answer.h"
#include "session_fixture.h"
#include "text/code_page.h"

namespace quorvel::testing {
namespace {

const std::string page = "\"https://www.tvmaze.com/shows/101/the-harbour-lights\"";

std::string listed(const std::string& season, const std::string& number, const std::string& title,
                   const std::string& airdate = "2015-01-01") {
  return R"({"id":1,"url":"u","name":")" + title + R"(","season":)" + season + R"(,"number":)" + number +
         R"(,"airdate":")" + airdate + R"(","x":0})";
}

struct Listings : ::testing::Test, TestSession {
  Listings() { start(); }
  const Show lights{101, "The Harbour Lights", ""}, shift{9, "Shift", ""};

  /// What `look_up` gives or throws, and what it logs.
  std::string outcome(const std::function<std::string()>& look_up) {
    const std::size_t before = session.log.lines().size();
    std::string text;
    try {
      text = look_up();
    } catch (const Failure& failure) {
      text = std::string("(failure) ") + failure.what();
    }
    const std::string lines = log(before);
    return text + (lines.empty() ? "" : "|" + lines);
  }
  std::string title(const Show& show, int season, int number, EpisodeListings::Options options = {}) {
    return outcome([&] {
      const auto found = session.listings.getlistings(show, "searched", season, number, options);
      return found ? found->title + " " + found->url : "(none)";
    });
  }
  std::string search(const std::string& name, bool use_cache = true) {
    return outcome([&] {
      const auto show = session.search.searchtv(name, use_cache);
      return show ? std::to_string(show->id) + " " + show->name + " " + show->url : "(none)";
    });
  }
  void answer(const std::string& body) {
    service.misbehave([=](auto&, auto&) { return FakeListings::ok(body); });
  }
  std::string cached(const std::string& name) const { return read("data/Quorvel/cache/" + name); }
};

TEST_F(Listings, AShowIsSearchedOnceAndThenFoundInItsCache) {
  const std::string found = "101 The Harbour Lights " + page;
  EXPECT_EQ(search("the harbour lights"), found + "|Query not in cache|Updating query cache");
  EXPECT_EQ(cached("the harbour lights.qc"), "101\t" + page + "\tThe Harbour Lights");
  EXPECT_EQ(search("the: harbour? lights"), found + "|Found query in cache") << "the characters that no name holds";
  EXPECT_EQ(service.requests(), std::vector<std::string>{"GET /search/shows?q=the+harbour+lights HTTP/1.0\r\n"
                                                         "Host: 127.0.0.1\r\nAccept: */*\r\n\r\n"});
  EXPECT_EQ(search("café noir"),
            "102 CafÃ© Noir \"https://www.tvmaze.com/shows/102/cafe-noir\"|Query not in cache|"
            "Updating query cache");
  for (const char* damaged : {"", "no tab", "1\tone tab", "x\ty\tz"}) {
    write("data/Quorvel/cache/the harbour lights.qc", damaged);
    EXPECT_EQ(search("the harbour lights"), found + "|Query not in cache|Updating query cache") << damaged;
    EXPECT_EQ(cached("the harbour lights.qc"), "101\t" + page + "\tThe Harbour Lights");
  }
}

TEST_F(Listings, EverySearchEndsInAShowOrInAReason) {
  const std::string longest(65'536, 'x'), error = "|Error parsing results (Err 2)";
  const struct {
    std::string body, result, reason = {};
  } cases[] = {
      {"", "(none)"},
      {"[]", "(none)", "|Site reports no results for: \"x\""},
      {R"([{"id":5,"name":"X",}])", "(none)", error},
      {R"([{"show":{"id":5,"url":u,"name":"cut o)", "(none)", error},
      {R"(:{"id":9,"name":"Net","show"}])", "(none)", error},
      {R"([{"show":{"name":"X",}}])", "(failure) \"\" is not a whole number of 32 bits"},
      {R"([{"show":{"id":5,"name":"&#x;",}}])", "(failure) \"\" is not the number of a character"},
      {R"( [{"show":{"id":5,"url":u,"name":"A",}},{"id":6,"url":v,"name":"B",}}])"
       "\r\n",
       "5 A u"},
      {R"([{"show":{"id":5,"url":)" + longest + R"(,"name":")" + longest + R"(",}}])", "5 " + longest + " " + longest},
      {R"(["show""url":x)" + longest + ",]", "(failure) the address of the show's page is too long"}};
  for (const auto& [body, result, reason] : cases) {
    answer(body);
    EXPECT_EQ(search("x", false), result + "|Query cache disabled" + reason) << body.substr(0, 80);
  }
  EXPECT_FALSE(exists("data/Quorvel/cache"));
  answer("[{\"show\":{\"id\":5,\"url\":\"u\tv\",\"name\":\"A\",}}]");
  EXPECT_EQ(search("x"), "5 A \"u\tv\"|Query not in cache|Updating query cache");
  EXPECT_FALSE(exists("data/Quorvel/cache/x.qc")) << "a tab would become the end of a field";
}

TEST_F(Listings, AnAnswerCutAnywhereGivesTheWholeShowOrNone) {
  const std::string right = listings_answer("GET /search/shows?q=the+harbour+lights ");
  int found = 0;
  for (std::size_t at = 0; at < right.size(); ++at) {
    service.misbehave([&](auto&, auto&) { return FakeListings::Reads{right.substr(0, at)}; });
    const std::optional<Show> show = session.search.searchtv("the harbour lights", false);
    if (!show) continue;
    ++found;
    EXPECT_EQ(*show, (Show{101, "The Harbour Lights", page})) << at;
  }
  EXPECT_EQ(found, 4) << "only a cut after an inner list looks like an end, and that is after the first show's name";
}

TEST_F(Listings, AiredEpisodesComeFromTheCacheAndOthersAreFetchedAgain) {
  const std::string miss = "|No matches found in ep cache|Getting listings for: Shift|Updating ep cache";
  const std::string bad_date = "|Error checking date", listings = "|Found episode in listings";
  answer("[" + listed("1", "1", "One &amp; Only") + "," + listed("1", "1", "Its Twin") + "," +
         listed("1", "2", "Today", "2026-03-14") + "," + listed("1", "3", "Tomorrow", "2026-03-15") + "," +
         listed("1", "4", "Some Day", "") + "," + listed("-2", "5", "\xC3\x9C\xC3\xA9", "2015-01-01-\t1\t6\tu\tWrong") +
         "," + listed("-2", "5", "\xC3\x9C\xC3\xA9", "2015-1-2") + "]");
  EXPECT_EQ(title(shift, 1, 1), "One & Only \"u\"" + miss + bad_date + listings);
  EXPECT_EQ(
      cached("Shift.epc"),
      "2015-01-01\t1\t1\t\"u\"\tOne & Only\r\n2015-01-01\t1\t1\t\"u\"\tIts Twin\r\n2026-03-14\t1\t2\t\"u\"\tToday\r\n"
      "2015-1-2\t-2\t5\t\"u\"\t\xC3\x9C\xC3\xA9\r\n");
  EXPECT_EQ(title(shift, 1, 1), "One & Only \"u\"|Found episode in cache");
  EXPECT_EQ(title(shift, 1, 2), "Today \"u\"|Found episode in cache");
  EXPECT_EQ(title(shift, -2, 5), "Üé \"u\"|Found episode in cache");
  EXPECT_EQ(title(shift, -2, 5, {.decode_utf8 = false}), "ÃœÃ© \"u\"|Found episode in cache");
  EXPECT_EQ(service.requests().size(), 1u);
  EXPECT_EQ(title(shift, 1, 3), "Tomorrow \"u\"" + miss + bad_date + listings);
  EXPECT_EQ(title(shift, 1, 4), "Some Day \"u\"" + miss + bad_date + listings);
  EXPECT_EQ(title(shift, 1, 6), "(none)" + miss + bad_date);
  service.misbehave({});
  EXPECT_EQ(
      title(lights, 1, 1, {.use_cache = false}),
      "Slack Water \"https://www.tvmaze.com/episodes/101001/the-harbour-lights-1x01-slack-water\"|Ep cache disabled|"
      "Getting listings for: The Harbour Lights|Found episode in listings");
  EXPECT_EQ(cached("The Harbour Lights.epc"), "(missing)");
  EXPECT_TRUE(service.requests().back().starts_with("GET /shows/101/episodes HTTP/1.0\r\n"));
}

TEST_F(Listings, TheCacheIsReadAgainWhenItsFileChanges) {
  const std::string file = "data/Quorvel/cache/Shift.epc", line = "2015-01-01\t1\t1\turl\t";
  files->create_folder(work_dir() + "cache");
  answer("[" + listed("1", "1", "Fetched") + "]");
  write(file, line + "By Hand\r\n" + line + "Second\r\nno line");
  EXPECT_EQ(title(shift, 1, 1), "By Hand url|Found episode in cache");
  write(file, line + "By Hand, Longer\tand more\r\n");
  EXPECT_EQ(title(shift, 1, 1), "By Hand, Longer url|Found episode in cache");
  const std::string fetched =
      "No matches found in ep cache|Getting listings for: Shift|Updating ep cache|"
      "Found episode in listings";
  for (const auto& [damaged, reason] : {std::pair(line + "Unended", ""),
                                        {"2015-01-01\tx\t1\turl\tBroken\r\n", "\"x\" is not a whole number of 32 bits"},
                                        {line + "Good\r\n2015-01-01\t1\t2\turl\r\n", "line 2 has 4 of 5 fields"}}) {
    write(file, damaged);
    const std::string logged = *reason == '\0' ? "" : std::string("Error checking ep cache: ") + reason + "|";
    EXPECT_EQ(title(shift, 1, 1), "Fetched \"u\"|" + logged + fetched);
    EXPECT_EQ(title(shift, 1, 1), "Fetched \"u\"|Found episode in cache");
  }
  answer("[" + listed("1", "1", "New") + "]");
  EXPECT_EQ(title(shift, 1, 1, {.use_cache = false}).substr(0, 3), "New");
  EXPECT_EQ(title(shift, 1, 1), "Fetched \"u\"|Found episode in cache") << "not what was fetched since";
}

TEST_F(Listings, AListThatCannotBeReadToItsEndIsNotTrusted) {
  const std::string episode = listed("1", "1", "A"), error = "|Error parsing listings (Err 5)";
  const std::string too_many = "(failure) the service lists more episodes than any show has";
  const std::string found = "|Found episode in listings", no_number = " is not a whole number of 32 bits";
  const auto many = [&](std::size_t count, const std::string& each) {
    std::string body = "[";
    while (count-- > 0) body += each;
    return body + "]";
  };
  const std::string bare = R"("id":1,"season":1,"number":1,)";
  const std::string wide = listed("1", "1", std::string(8'370, 'x'), std::string(10, '2'));  // 8,383 bytes kept
  const struct {
    std::string body, result, reason = {};
  } cases[] = {{"", "(none)"},
               {"[]", "(none)", "|Site reports no episodes for: \"searched\""},
               {"[{\"name\":\"x\"}]", "(none)", error},
               {episode + "]", "(none)", error},
               {"[" + episode, "(none)", error},
               {"[" + episode + listed("1", "null", "B") + "]", "(failure) \"null\"" + no_number},
               {"[" + episode + listed("", "2", "B") + "]", "(failure) \"\"" + no_number},
               {many(100'000, bare), " ", found},
               {many(100'001, bare), too_many},
               {many(1'000, wide), std::string(8'370, 'x') + " \"u\"", found},
               {many(1'001, wide), too_many}};
  for (const auto& [body, result, reason] : cases) {
    answer(body);
    EXPECT_EQ(title(shift, 1, 1, {.use_cache = false}),
              result + "|Ep cache disabled|Getting listings for: Shift" + reason)
        << body.substr(0, 100);
  }
}

TEST_F(Listings, OnlyAPastCalendarDayCountsAsAired) {
  for (const char* date :
       {"2026-03-14", "2011-4-7", "1959-10-02", "0001-01-01", "2024-02-29", "2015-12-31", "2011-05-06-7"})
    EXPECT_TRUE(session.listings.is_aired(date)) << date;
  const std::size_t before = session.log.lines().size();
  for (const char* date : {"2026-03-15", "9999-12-31", "0000-00-00", "0-0-0", "2011-00-05", "2011-05-00"})
    EXPECT_FALSE(session.listings.is_aired(date)) << date;
  EXPECT_EQ(session.log.lines().size(), before) << "these are dates";
  for (const char* date : {"", "2011-02-30", "2011-05", "x-y-z", "2011-13-01", "2011-0-01", "2011-01-0", "2011-01-32",
                           "10000-01-01", "0000-01-01", "-1-01-01", "2011-257-01", "2011-01-257"}) {
    EXPECT_FALSE(session.listings.is_aired(date)) << date;
    EXPECT_EQ(log(session.log.lines().size() - 1), "Error checking date") << date;
  }
}

TEST_F(Listings, Utf8IsDecodedLeniently) {
  const auto decoded = [&](const std::string& bytes) {
    return outcome([&] { return UTF8Decode(from_code_page(bytes), session.log); });
  };
  const std::pair<const char*, const char*> lenient[] = {
      {"", ""}, {"x", ""}, {"\xC1\xBF\xF0\x9F\x98\x80", "Á¿ðŸ˜€"}, {"ab\x80", "ab€"}, {"\xC2zz", "\xC2\xBAz"}};
  for (const auto& [bytes, text] : lenient) EXPECT_EQ(decoded(bytes), text);
  for (const char* good : {"é", "x日", "\u0080", "\u07FF", "\u0800", "\uD7FF", "\uE000", "\uFFFD"})
    EXPECT_EQ(decoded(good), good);
  for (const char* refused : {"a\xC3", "a\xE6\x97", "..\xE0\x81\xBFx", "\xED\xA0\x80", "\xED\xBF\xBF"}) {
    EXPECT_TRUE(decoded(refused).starts_with(from_code_page(refused) + "|Error converting string from UTF-8: "));
  }
}

}  // namespace
}  // namespace quorvel::testing
