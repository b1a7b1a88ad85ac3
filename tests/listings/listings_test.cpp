#include <gtest/gtest.h>

#include "listings/answer.h"
#include "session_fixture.h"
#include "text/code_page.h"

namespace quorvel::testing {
namespace {

const std::string cache = "data/Quorvel/cache/Shift.epc";
const std::string off = "|Ep cache disabled|Getting listings for: Shift";

/// An episode of the service's answer.
std::string listed(const std::string& season, const std::string& title, const std::string& airdate = "2015-01-01") {
  return R"({"id":1,"url":"u","name":")" + title + R"(","season":)" + season + R"(,"number":1,"airdate":")" + airdate +
         R"(","x":0},)";
}

struct Listings : ::testing::Test, TestSession {
  Listings() { start(); }

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
  std::string title(int season, EpisodeListings::Options options = {}) {
    session.listings.forget_unfound();
    return outcome([&] {
      const auto found = session.listings.getlistings({9, "Shift", ""}, "searched", season, 1, options);
      return found ? found->title + " " + found->url : "(none)";
    });
  }
  std::string search(const std::string& name, bool use_cache = true) {
    session.search.forget_unfound();
    return outcome([&] {
      const auto show = session.search.searchtv(name, use_cache);
      return show ? std::to_string(show->id) + " " + show->name + " " + show->url : "(none)";
    });
  }
  void answer(const std::string& body) {
    service.misbehave([=](auto&, auto&) { return FakeListings::ok(body); });
  }
};

TEST_F(Listings, AShowIsSearchedOnceAndThenFoundInItsCache) {
  const std::string page = "\"https://www.tvmaze.com/shows/101/the-harbour-lights\"";
  const std::string found = "101 The Harbour Lights " + page, fetched = "|Query not in cache|Updating query cache";
  for (const char* damaged : {"", "1\tone tab", "x\ty\tz", "1\ty\t../../z"}) {
    EXPECT_EQ(search("the harbour lights"), found + fetched);
    EXPECT_EQ(read("data/Quorvel/cache/the harbour lights.qc"), "101\t" + page + "\tThe Harbour Lights");
    EXPECT_EQ(search("the: harbour? lights"), found + "|Found query in cache") << "the characters that no name holds";
    write("data/Quorvel/cache/the harbour lights.qc", damaged);
  }
  EXPECT_EQ(search("café noir"), "102 CafÃ© Noir \"https://www.tvmaze.com/shows/102/cafe-noir\"" + fetched);
  EXPECT_EQ(service.requests().size(), 5u);
  EXPECT_TRUE(service.requests()[2].starts_with("GET /search/shows?q=the+harbour+lights HTTP/1.0\r\n"));
}

TEST_F(Listings, EverySearchEndsInAShowOrInAReason) {
  const std::string off = "|Query cache disabled", error = "(none)" + off + "|Error parsing results (Err 2)";
  const std::pair<std::string, std::string> cases[] = {
      {"", "(failure) 127.0.0.1 sent an empty answer" + off},
      {"[]", "(none)" + off + "|Site reports no results for: \"x\""},
      {R"([{"id":5,"name":"X",}])", error},
      {R"([{"show":{"id":5,"url":u,"name":"cut o)", error},
      {R"([{"show":{"name":"X",}}])", "(failure) \"\" is not a whole number of 32 bits" + off},
      {"\n[{\"show\":{\"id\":5,\"url\":u,\"name\":\"A\",}},{\"id\":6,\"url\":v,\"name\":\"B\",}}] \r\n", "5 A u" + off},
      {R"(["show""url":)" + std::string(65'537, 'x') + ",]",
       "(failure) the address of the show's page is too long" + off}};
  for (const auto& [body, result] : cases) {
    answer(body);
    EXPECT_EQ(search("x", false), result) << body.substr(0, 80);
  }
  answer("[{\"show\":{\"id\":5,\"url\":\"u\tv\",\"name\":\"A\",}}]");
  EXPECT_EQ(search("x"), "5 A \"u\tv\"|Query not in cache|Updating query cache");
  EXPECT_FALSE(exists("data/Quorvel/cache/x.qc")) << "a tab would become the end of a field";
}

TEST_F(Listings, AiredEpisodesComeFromTheCacheAndOthersAreFetchedAgain) {
  const std::string one = "One & Only \"u\"", in_cache = "|Found episode in cache",
                    bad = one + "|Error checking ep cache: ";
  const std::string fetched =
      "|No matches found in ep cache|Getting listings for: Shift|Updating ep cache|Error checking date|Found episode "
      "in "
      "listings";
  answer("[" + listed("1", "One &amp; Only") + listed("1", "Its Twin") + listed("2", "Today", "2026-03-14") +
         listed("3", "Tomorrow", "2026-03-15") + listed("4", "Some Day", "") + listed("6", "Never", "x") +
         listed("-5", "\xC3\x9C\xC3\xA9", "2015-01-01-\t1\t6\tu\tWrong") +
         listed("-5", "\xC3\x9C\xC3\xA9", "2015-1-2") + "]");
  const std::string whole =
      "2015-01-01\t1\t1\t\"u\"\tOne & Only\r\n2015-01-01\t1\t1\t\"u\"\tIts Twin\r\n2026-03-14\t2\t1\t\"u\"\tToday\r\n"
      "2015-1-2\t-5\t1\t\"u\"\t\xC3\x9C\xC3\xA9\r\n";
  EXPECT_EQ(title(1), one + fetched);
  EXPECT_EQ(read(cache), whole);
  EXPECT_EQ(title(1), one + in_cache);
  EXPECT_EQ(title(-5), "Üé \"u\"" + in_cache);
  EXPECT_EQ(title(-5, {.decode_utf8 = false}), "ÃœÃ© \"u\"" + in_cache);
  EXPECT_EQ(service.requests().size(), 1u);
  EXPECT_EQ(title(4), "Some Day \"u\"" + fetched);

  const std::string old = "2015-01-01\t1\t1\turl\t";
  const std::pair<std::string, std::string> changed[] = {
      {old + "By Hand\r\n" + old + "Second\r\nno line", "By Hand url" + in_cache},
      {old + "Unended", one + fetched},
      {old + "a/b\r\n", bad + "line 1 has a title that is none" + fetched},
      {"2015-01-01\tx\t1\turl\tBroken\r\n", bad + "\"x\" is not a whole number of 32 bits" + fetched},
      {old + "Good\r\n2015-01-01\t1\t2\turl\r\n", bad + "line 2 has 4 of 5 fields" + fetched}};
  for (const auto& [text, found] : changed) {
    write(cache, text);
    EXPECT_EQ(title(1), found);
  }
  answer("[" + listed("1", "New") + "]");
  EXPECT_EQ(title(1, {.use_cache = false}), "New \"u\"" + off + "|Found episode in listings");
  EXPECT_EQ(title(1), one + in_cache) << "not what was fetched since";
  EXPECT_EQ(read(cache), whole);

  write("data/Quorvel/cache/one.qc", "9\tu\tShift");
  EXPECT_EQ(title(1), one + in_cache);
  write("data/Quorvel/cache/two.qc", "8\tu\tSHIFT");
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(title(1).starts_with("New \"u\"|No matches found in ep cache|"));
}

TEST_F(Listings, AListThatCannotBeReadToItsEndIsNotTrusted) {
  const std::string episode = listed("1", "A"), error = "(none)" + off + "|Error parsing listings (Err 5)";
  std::string bare;
  for (int i = 0; i < 100'000; ++i) bare += R"("id":1,"season":1,"number":1,)";
  const std::pair<std::string, std::string> cases[] = {
      {"", "(failure) 127.0.0.1 sent an empty answer" + off},
      {"[]", "(none)" + off + "|Site reports no episodes for: \"searched\""},
      {episode + "]", error},
      {"[" + episode, error},
      {"[" + episode + listed("null", "B") + "]", "(failure) \"null\" is not a whole number of 32 bits" + off},
      {"[" + bare + episode + "]", "(failure) the service lists more episodes than any show has" + off}};
  for (const auto& [body, result] : cases) {
    answer(body);
    EXPECT_EQ(title(1, {.use_cache = false}), result) << body.substr(0, 100);
  }
  EXPECT_FALSE(exists(cache));
}

TEST_F(Listings, OnlyAPastCalendarDayCountsAsAired) {
  std::string aired;
  for (const char* day : {"2026-03-14", "2011-4-7", "0001-01-01", "2024-02-29", "2015-12-31", "2011-05-06-7",
                          "2026-03-15", "9999-12-31", "0000-00-00", "2011-00-05", "2011-05-00"}) {
    aired += session.listings.is_aired(day).value() ? "+" : "-";
  }
  EXPECT_EQ(aired, "++++++-----");
  for (const char* day : {"", "2011-02-30", "2011-05", "x-y-z", "2011-13-01", "10000-01-01", "2011-257-01"}) {
    EXPECT_FALSE(session.listings.is_aired(day)) << day;
  }
}

TEST_F(Listings, Utf8IsDecodedLeniently) {
  const std::string bytes = from_code_page("\xC1\xBF\xF0\x9F\x98\x80 ab\x80 \xC2zzé日\u0080\u07FF\u0800\uFFFD");
  EXPECT_EQ(UTF8Decode(bytes, session.log), "Á¿ðŸ˜€ ab€ \xC2\xBAzé日\u0080\u07FF\u0800\uFFFD");
  for (const char* refused : {"a\xC3", "a\xE6\x97", "..\xE0\x81\xBFx", "\xED\xA0\x80", "\xED\xBF\xBF"}) {
    const std::string kept = from_code_page(refused);
    EXPECT_TRUE(outcome([&] { return UTF8Decode(kept, session.log); }).starts_with(kept + "|Error converting string "));
  }
}

}  // namespace
}  // namespace quorvel::testing
