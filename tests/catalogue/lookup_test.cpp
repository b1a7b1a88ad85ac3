#include "catalogue/lookup.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "catalogue/name_match.h"
#include "fake_ports.h"
#include "fake_web.h"
#include "platform/system.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

std::string show_json(int id, const std::string& name, int year, const std::string& country) {
  return R"({"id":)" + std::to_string(id) + R"(,"url":"https://x/)" + std::to_string(id) + R"(","name":")" + name +
         R"(","premiered":")" + std::to_string(year) +
         R"(-01-02","network":null,"webChannel":{"name":"W","country":{"code":")" + country + R"("}}})";
}

/// Two shows of one name, of which only the second has a third season, a third one that is new, and one with specials.
struct LookupTest : ::testing::Test {
  const TemporaryFolder folder;
  const std::string work = folder / "";
  Events events;
  FakeClock clock{events};
  FakeUi ui{events};
  Lines log;
  FakeWeb web;
  const std::unique_ptr<Files> files = system_files();
  Pace pace{clock, *files, work};
  AnswerStore store{*files, log, work};
  CatalogueService service{web, store, pace, clock, ui, log, "http://service"};
  Lookup lookup{service, store};

  LookupTest() {
    search("the bureau", {show_json(1, "The Bureau", 2001, "GB"), show_json(2, "The Bureau", 2005, "US"),
                          show_json(3, "The Bureau of Magic", 2018, "US")});
    episodes(1, R"({"number":1,"name":"of none"},{"season":1,"number":1,"name":"Work","airdate":"2001-07-09"})");
    episodes(2, R"j({"season":1,"number":1,"name":"Pilot","airdate":"2005-03-24"},
                    {"season":3,"number":1,"name":"Again (1)","airdate":"2006-01-01"},
                    {"season":3,"number":2,"name":"Again (2)","airdate":"2006-01-01"},{"season":3,"name":null})j");
    episodes(3, R"({"season":1,"number":1,"name":"Wand","airdate":""})");
    web.bodies["/shows/2/episodes?specials=1"] =
        R"([{"season":1,"number":null,"name":"Behind It","airdate":"2005-02-01"},
            {"season":1,"number":1,"name":"Pilot","airdate":"2005-03-24"},
            {"season":2,"number":null,"name":"Christmas","airdate":"2005-12-24"}])";
    lookup.begin_pass();
  }
  void search(const std::string& name, const std::vector<std::string>& shows) {
    std::string list, query = name;
    for (const std::string& show : shows) list += (list.empty() ? "" : ",") + (R"({"score":1,"show":)" + show + "}");
    std::ranges::replace(query, ' ', '+');
    web.bodies["/search/shows?q=" + query] = "[" + list + "]";
  }
  void episodes(int show, const std::string& list) {
    web.bodies["/shows/" + std::to_string(show) + "/episodes"] = "[" + list + "]";
  }
  /// "id:title of each episode", or why not.
  std::string found(const std::string& path) {
    try {
      const Reading reading = read_name(path);
      const CatalogueShow show = lookup.show(reading.show, reading).show;
      std::string text = std::to_string(show.id);
      const FoundEpisodes found = lookup.episodes(show, reading);
      for (const CatalogueEpisode& episode : found.episodes) text += ":" + episode.title;
      return text + (found.other_title.empty() ? "" : " or " + found.other_title);
    } catch (const Failure& failure) {
      return failure.what();
    }
  }
};

TEST_F(LookupTest, AShowIsChosenByNameYearCountryAndWhatItHasAndNeverGuessed) {
  const std::pair<const char*, const char*> rows[] = {
      {"The.Bureau.S01E01.mkv",
       "More than one show fits: The Bureau (2001, GB, tvmaze:1), The Bureau (2005, US, tvmaze:2)"},
      {"The.Bureau.2005.S01E01.mkv", "2:Pilot"},
      {"The.Bureau.UK.S01E01.mkv", "1:Work"},
      {"The Bureau (US) - 1x01.mkv", "2:Pilot"},
      {"The.Bureau.S03E01E02.mkv", "2:Again (1):Again (2)"},
      {"The.Bureau.2005.S09E01.mkv", "The listings of The Bureau have no episode 9x1"},
      {"Nobody.Knows.This.S01E01.mkv", "The service knows no show \"Nobody Knows This\""},
      {"The.Bureau.2005.03.24.mkv", "2:Pilot"},
      {"The.Bureau.2006.01.01.mkv", "More than one episode was shown on 2006-01-01"},
      {"The.Bureau.2007.01.01.mkv",
       "More than one show fits: The Bureau (2001, GB, tvmaze:1), The Bureau (2005, US, tvmaze:2)"},
      {"The.Bureau.2006.01.01.Again.2.mkv", "2:Again (2)"},
      {"The.Bureau.US.2007.01.01.mkv", "The listings have no episode of 2007-01-01"},
      {"The.Bureau.US.S00E02.mkv", "2:Christmas"},
      {"The.Bureau.US.S00E03.mkv", "The listings have no special 3"},
      {"The.Bureau.US.S00E01.Christmas.mkv", "2:Christmas"},
      {"The Bureau (US)/Specials/2005-12-24.mkv", "2:Christmas"},
      {"The.Bureau.US.2005.12.24.mkv", "2:Christmas"},
      {"The Bureau (US)/Specials/Nothing.mkv", "The listings have no special of this title"},
      {"The Bureau (US)/Specials/Behind It.mkv", "2:Behind It"}};
  for (const auto& [path, expected] : rows) EXPECT_EQ(found(path), expected) << path;
  web.bodies["/shows/1"] = show_json(1, "The Bureau", 2001, "GB");
  EXPECT_EQ(lookup.show_of_id(1).year, 2001);
  web.bodies["/shows/4"] = R"({"name":"without its number"})";
  EXPECT_THROW(lookup.show_of_id(4), Failure);
}

TEST_F(LookupTest, YearAndCountryMayBelongToTheNameAndOtherNamesAndMeaningsAreTried) {
  search("moon base", {show_json(5, "Moon Base Alpha", 1990, "US")});
  search("moon base 1999", {show_json(6, "Moon Base: 1999", 1975, "GB")});
  search("nachtzug", {show_json(7, "Night Train", 2011, "DE"), show_json(8, "Nacht und Zug", 2001, "DE")});
  search("brighter", {show_json(9, "Righter", 2011, "US")});
  web.bodies["/shows/7/akas"] = R"([{"name":"Ночной поезд"},{"name":"Nachtzug","country":null}])";
  episodes(6, R"({"season":1,"number":1,"name":"Leaving &amp; &quot;Left&quot;"})");
  episodes(7, R"({"season":1,"number":1,"name":"A"},{"season":1,"name":"?"},)"
              R"({"season":1,"number":2,"name":"B"},{"season":2,"number":1,"name":"C"})");
  episodes(9, R"({"season":1,"number":1,"name":"A"})");
  EXPECT_EQ(found("Moon.Base.1999.S01E01.mkv"), "6:Leaving & \"Left\"");
  EXPECT_EQ(found("Nachtzug.S01E02.mkv"), "7:B");
  search("abendzug", {show_json(8, "Nacht und Zug", 2001, "DE"), show_json(10, "Evening Train", 2001, "DE")});
  web.bodies["/shows/10/akas"] = R"([{"name":"Abendzug"}])";
  episodes(10, R"({"season":1,"number":1,"name":"A","airdate":"2001-02-031"})");
  EXPECT_EQ(found("Abendzug.S01E01.mkv"), "10:A") << "the first has no other names";
  EXPECT_EQ(found("Abendzug.2001.02.03.mkv"), "The listings have no episode of 2001-02-03") << "which is no day";
  EXPECT_EQ(lookup.show("Nachtzug (DE)", read_name("Night.S01E02.mkv")).why, "by its other name \"Nachtzug\"");
  EXPECT_EQ(found("Nachtzug 201.mkv"), "7:C") << "there are no 201 episodes";
  EXPECT_EQ(found("Nachtzug 901.mkv"), "The listings of Night Train have no episode 901, and no season 9, episode 1");
  EXPECT_TRUE(lookup.show("Brighter", read_name("Brighter.S01E01.mkv")).is_alike);
  Reading reading = read_name("Nachtzug.S01E02.mkv");
  reading.other = OtherNumbers{.season = {}, .episodes = {}, .absolute = {3}, .date = {}};
  const CatalogueShow show = lookup.show("Nachtzug", reading).show;
  EXPECT_EQ(lookup.episodes(show, reading).other_title, "C");
  reading.episode_title = "c";
  EXPECT_EQ(lookup.episodes(show, reading).episodes.front().title, "C") << "the name says so";
}

TEST_F(LookupTest, ANumberBehindASeasonMayCountOverAllOfThem) {
  std::string list;
  for (int i = 1; i <= 17; ++i) {  // eight, and nine
    const int season = i <= 8 ? 1 : 2, number = i <= 8 ? i : i - 8;
    list += std::string(i > 1 ? "," : "") + R"({"season":)" + std::to_string(season) + R"(,"number":)" +
            std::to_string(number) + R"(,"name":"E)" + std::to_string(i) + "\"}";
  }
  episodes(7, list);
  CatalogueShow show;
  show.id = 7;
  const auto titles = [&](const char* name) {
    const FoundEpisodes found = lookup.episodes(show, read_name(name));
    return found.episodes.front().title + " " + found.other_title;
  };
  EXPECT_EQ(titles("Night Train S2 - 12.mkv"), "E12 ") << "the second season has no twelfth";
  EXPECT_EQ(titles("Night Train S2 - 09.mkv"), "E17 E9") << "it has a ninth";
  EXPECT_EQ(titles("Night Train S2 - 08.mkv"), "E16 ") << "the eighth of all is in the first season";
}

TEST_F(LookupTest, NeitherAnAnswerThatFailsNorAnOldOneDecides) {
  EXPECT_EQ(found("The.Bureau.2005.S01E01.mkv"), "2:Pilot");
  web.refusals = {0};
  EXPECT_EQ(found("The.Bureau.S03E01.mkv"), "No connection to the service");
  lookup.begin_pass();
  EXPECT_EQ(found("The.Bureau.S03E01.mkv"), "2:Again (1)");
  store.keep_answer("/search/shows?q=late+show", {"[]", {}});
  search("late show", {show_json(4, "Late Show", 2020, "US")});
  episodes(4, R"({"season":1,"number":1,"name":"At Last"})");
  EXPECT_EQ(found("Late.Show.S01E01.mkv"), "4:At Last");
}

TEST_F(LookupTest, AChoiceIsRememberedForItsNameAloneAndForgottenAgain) {
  const Reading reading = read_name("The.Bureau.S01E01.mkv");
  web.bodies["/shows/1"] = show_json(1, "The Bureau", 2001, "GB");
  const std::string key = Lookup::choice_key(reading.show, reading);
  lookup.choose(key, 1, true);
  EXPECT_EQ(found("the bureau 1x01.mkv"), "1:Work");
  EXPECT_EQ(found("The.Bureau.2005.S01E01.mkv"), "2:Pilot");
  lookup.forget(key);
  EXPECT_TRUE(found("The.Bureau.S01E01.mkv").starts_with("More than one"));
  lookup.choose(key, 1, false);
  EXPECT_EQ(found("The.Bureau.S01E01.mkv"), "1:Work");
  EXPECT_TRUE(Lookup(service, store).choice(key) == std::nullopt) << "for this run alone";
  EXPECT_EQ(lookup.show("tvmaze:1", reading).show.name, "The Bureau");
  EXPECT_THROW(lookup.show("tvmaze:one", read_name("Other.S01E01.mkv")), Failure);
}

TEST_F(LookupTest, AnswersAreKeptAskedForAgainWhenOldAndRefusalsAreWaitedFor) {
  web.refusals = {429, 503};
  EXPECT_EQ(found("The.Bureau.2005.S01E01.mkv"), "2:Pilot");
  EXPECT_EQ(web.requests.size(), 4u) << "two were refused";
  EXPECT_EQ(clock.now.time_since_epoch(), std::chrono::seconds(6));
  lookup.begin_pass();
  EXPECT_EQ(found("The.Bureau.2005.S01E01.mkv"), "2:Pilot");
  EXPECT_TRUE(found("The.Bureau.2005.S01E02.mkv").ends_with("no episode 1x2"));
  EXPECT_EQ(web.requests.size(), 4u) << "the list is of today";
  store.keep_answer("/shows/2/episodes", {"[]", {}});
  lookup.begin_pass();
  for (int again = 0; again < 2; ++again) EXPECT_EQ(found("The.Bureau.2005.S01E01.mkv"), "2:Pilot");
  EXPECT_EQ(web.requests.size(), 5u);
  lookup.begin_pass();
  lookup.begin_item(true);
  web.refusals = {0};
  EXPECT_EQ(found("The.Bureau.2005.S01E01.mkv"), "2:Pilot") << "what is known from earlier will do";
  EXPECT_EQ(web.requests.size(), 7u);
  web.bodies["/search/shows?q=broken"] = "[{";
  web.refusals = {0};
  web.before_answer = [this] {  // a dialog is open for longer than the connection lasts
    ui.on_events = [this] { clock.wait(std::chrono::minutes(5)); };
    web.on_wait();
    ui.on_events = [] {};
  };
  EXPECT_TRUE(found("Broken.S01E01.mkv").starts_with("The listings service's answer cannot be understood"));
}

TEST_F(LookupTest, WhatAnotherCopyHasRememberedIsKnownFromTheNextPassOn) {
  const std::string key = Lookup::choice_key("The Bureau", {});
  EXPECT_FALSE(lookup.choice(key));
  store.keep_choice(key, 1);
  EXPECT_FALSE(lookup.choice(key));
  lookup.begin_pass();
  EXPECT_EQ(lookup.choice(key), 1);
  web.bodies["/shows/1"] = show_json(1, "The Bureau", 2001, "GB");
  EXPECT_EQ(found("The.Bureau.S01E01.mkv"), "1:Work");
}

TEST(NameMatch, NamesAreAsAlikeAsPeopleWriteThem) {
  const std::tuple<const char*, const char*, int> rows[] = {
      {"Marvel's Agents of S.H.I.E.L.D.", "marvels agents of shield", 90},
      {"Marvel’s Ocean's `Five`", "marvels oceans five", 100},
      {"Pokémon", "pokemon", 100},
      {"Tom & Sons", "tom and sons", 100},
      {"The Office", "office", 95},
      {"9-1-1", "911", 90},
      {"9-1-1", "912", 0},
      {"The Harbour Lights", "harbor lights", 80},
      {"Ночной поезд", "ночнои ПОЕЗД", 100},
      {"The Harbour Lights", "the harbour lihgts", 80},
      {"The Harbour Lights", "harbour lights by night", 50},
      {"The Harbour Lights", "by night harbour", 0},
      {"Ladder", "laddre", 80},
      {"Ladder", "ldader", 80},
      {"Ladder", "bladder", 80},
      {"Ladder", "ladde", 80},
      {"Ladder", "lodder", 80},
      {"Ladder", "loddet", 0},
      {"Ladder", "ladderas", 0},
      {"Lost", "last", 0},
      {"Star Trek: Picard", "picard", 50},
      {"", "", 0}};
  for (const auto& [name, other, expected] : rows) {
    EXPECT_EQ(likeness(match_key(name), match_key(other)), expected) << name << " " << other;
  }
  const std::string many(500, 'a');
  EXPECT_EQ(likeness(many + "b", many + "c"), 0) << "that would take too long";
}

}  // namespace
}  // namespace quorvel::testing
