#include <gtest/gtest.h>

#include "fake_ports.h"
#include "file_tools.h"
#include "naming/episode_patterns.h"
#include "naming/file_names.h"
#include "naming/mask.h"
#include "naming/service_names.h"
#include "naming/tokens.h"
#include "queue/rule_preview.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

TEST(EpisodePatterns, EachFindsShowSeasonAndEpisode) {
  // The last marker in a name wins, a resolution alone is none and ends the search, and foreign bytes are kept.
  const std::pair<const char*, Detection> cases[] = {{"the.show.s02e05.720p.mkv", {"the show", 2, 5, 1}},
                                                     {"the.show.205.hdtv.avi", {"the show", 2, 5, 2}},
                                                     {"the show - 12x03 - pilot.avi", {"the show", 12, 3, 3}},
                                                     {"the show - 2x03 - pilot.avi", {"the show", 2, 3, 4}},
                                                     {"show.1x012.avi", {"show", 1, 12, 6}},
                                                     {"show.12x34.avi", {"show", 12, 34, 5}},
                                                     {"show.s02.e34.avi", {"show", 2, 34, 7}},
                                                     {"show.s2e34.avi", {"show", 2, 34, 8}},
                                                     {"show.s02e4.avi", {"show", 2, 4, 9}},
                                                     {"show.s2e4.avi", {"show", 2, 4, 10}},
                                                     {"the show 2x34 x.avi", {"the show", 2, 34, 11}},
                                                     {"the show 12x34 x.avi", {"the show", 12, 34, 12}},
                                                     {"show.s02e05", {"show", 2, 5, 13}},
                                                     {"show_12x34.avi", {"show_", 12, 34, 14}},
                                                     {"the show 2x03.avi", {"the show", 2, 3, 15}},
                                                     {"show 02.34 x.avi", {"show", 2, 34, 16}},
                                                     {"movie 2010.avi", {"movie", 20, 10, 17}},
                                                     {"show 205 720p.avi", {"show", 2, 5, 18}},
                                                     {"caf\xE9.s02e03.s02e04.avi", {"caf\xE9 s02e03", 2, 4, 1}},
                                                     {"the show 1205 1080p.mkv", {"the show", 12, 5, 17}}};
  for (const auto& [name, found] : cases) EXPECT_TRUE(detect_in_file(name) == found) << name;
  EXPECT_TRUE(detect_in_file("the show 205 1080p.mkv")->is_refused);
  EXPECT_THROW(detect_in_file("a&#x;b.s02e05.avi"), Failure);
  // Folders are read more strictly.
  EXPECT_EQ(detect_in_folder("film 1920x1080"), (Detection{"film 9", 20, 10, 14}));
  for (const char* name : {"show 103", "show s01e02", "show 01.02", "show 2010"}) EXPECT_FALSE(detect_in_folder(name));
  EXPECT_EQ(parent_folder_name("C:\\tv\\Show 1x02\\a.avi", '\\'), "Show 1x02");
  EXPECT_EQ(parent_folder_name("/a.avi", '/'), "");
  EXPECT_THROW(parent_folder_name("a.avi", '/'), Failure);
}

TEST(FileNames, AreTakenApartAtTheLastSeparator) {
  EXPECT_EQ(getextension("Show.S01E02.MKV") + getextension("dot.") + remextension("a.b.avi"), "mkva.b");
  EXPECT_THROW(remextension("noext"), Failure);
  EXPECT_EQ(getshowname("x/y/The Show") + getfname("C:\\tv\\a.avi", '\\'), "the showa.avi");
  EXPECT_EQ(getpath("C:\\tv\\show\\a.avi", 0, '\\') + getpath("/tv/show/a.avi", 1, '/'), "C:\\tv\\show\\/tv/");
  EXPECT_EQ(with_native_separators("D:/TV\\", '\\') + with_native_separators("/a\\b", '/'), "D:\\TV\\/a\\b");
  EXPECT_EQ(getpath("/a.avi", 0, '/') + getpath("a.avi", 0, '/') + getpath("/a.avi", 1, '/'), "/");
}

TEST(Names, FoldersAreFullPathsFromTheRootTheDriveOrTheHomeFolderOn) {
  for (const char* const path : {"/tv", "~", "~/tv", "C:\\tv", "c:/", "\\\\server\\share"}) {
    EXPECT_TRUE(is_full_path(path, '\\')) << path;
  }
  for (const char* const path : {"", "tv", "C:", "C:tv", "~anna/tv"}) EXPECT_FALSE(is_full_path(path, '\\')) << path;
  EXPECT_FALSE(is_full_path("C:/tv", '/') || is_full_path("\\tv", '/'));
  EXPECT_EQ(with_home("~anna") + with_home("~"), "~anna" + native::home_folder());
}

TEST(Masks, ReplaceTheirTokensInOrder) {
  const MaskValues values{"Show", 1, 5, "Pilot"};
  EXPECT_EQ(expand_name("[show] - [s]x[ee] - [title].avi", values), "Show - 1x05 - Pilot.avi");
  EXPECT_EQ(expand_name("[s] [ss] [e] [ee] [SS] [show]", {"[title]", 0, 123, "x"}), "0 00 123 123 [SS] [title]");
  EXPECT_EQ(expand_name("S[ss]E[ee] e[e] [s]x[ee]", {"", 1, 2, "", {3, 4}}), "S01E02-E03-E04 e2-e3-e4 1x02-03-04");
  EXPECT_EQ(expand_folder("D:\\TV\\[show]\\Season [s] [ee][title]", values), "D:\\TV\\Show\\Season 1 [ee][title]");
}

TEST(Masks, WhatIsInBracesIsThereWhenItsTokensHaveAValue) {
  MaskValues known{"Show", 2, 3, "Title", {4, 5}};
  NameFacts& facts = known.facts;
  facts.year = "2010", facts.id = "7", facts.old_name = "old [id]", facts.episode_digits = 3;
  facts.date = facts.named_date = "2011-04-18";
  MaskValues numbers = known, nothing{"Show", 0, 0, "Title"};
  numbers.facts.named_date.clear();
  const std::string mask = "[show]{ ([year])} -{ [dated]| s[ss]e[ee-]} - [title]{ [[group]]}";
  EXPECT_EQ(expand_name(mask, known), "Show (2010) - 2011-04-18 - Title");
  EXPECT_EQ(expand_name(mask, numbers), "Show (2010) - s02e03-e05 - Title");
  EXPECT_EQ(expand_name(mask, nothing), "Show - - Title");
  EXPECT_EQ(expand_name("S[S]E[ee+] [E] [ee+] [old][year]", numbers), "S02E03E04E05 003-004-005 03-04-05 old [id]2010");
  EXPECT_EQ(expand_name("{[show]} {a|b} } {{tvmaze-[id]}} {[id]/}", known), "{Show} {a|b} } {tvmaze-7} {7/}");
  EXPECT_EQ(expand_folder("/tv/{[group]}/[show]{ ([year])}/{[ee-]|x}[ee]", known), "/tv/Show (2010)/[ee-][ee]");
}

TEST(Masks, EachTokenMeansWhatTheHelpSays) {
  const std::filesystem::path tests = path_of(QUORVEL_NAMES).parent_path().parent_path();
  const std::string help = contents(text_of(tests.parent_path() / "docs/help/new-names.md"));
  const QueueItem item = example_item(true);
  MaskValues one{item.show_name, item.season, item.episode, item.episode_title, {}, item.facts};
  NameFacts& facts = one.facts;
  facts.id = "101", facts.old_name = remextension(item.filename), facts.part = "2";
  facts.named_date = facts.date, facts.named_year = "2015";
  MaskValues other = one;
  other.episode = 3, other.title = "x";
  for (const auto fact :
       {&NameFacts::date, &NameFacts::named_date, &NameFacts::absolute, &NameFacts::old_name, &NameFacts::part}) {
    other.facts.*fact = "x";
  }
  for (const Token& token : tokens) {
    const std::string text(token.text), made = expand_name(text, one);
    const std::string row = "| `" + text + "` | " + std::string(token.meaning) + " | " + made;
    EXPECT_NE(help.find(row), std::string::npos) << row;
    EXPECT_EQ(made != expand_name(text, other), token.tells_episode) << text;
    EXPECT_EQ(expand_folder(text, one) != text, token.in_folder) << text;
  }
}

TEST(Masks, WhatIsLikelyToBeAMistakeIsSaid) {
  const auto said = [](const std::vector<std::string>& remarks) {
    std::string all;
    for (const std::string& remark : remarks) all += remark + "|";
    return all;
  };
  const std::string one_name =
      "No token tells the episode: all would get the same name, and only the first file can have it.|";
  EXPECT_EQ(said(remarks_on_mask("[show] - {[dated]|[s]x[ee-]} [1080p] [[group]] {x} [web rip] []")), "");
  EXPECT_EQ(said(remarks_on_mask("[Show] [tilte] x")),
            "\"[Show]\" is no token and stays as it is. Is \"[show]\" meant?|"
            "\"[tilte]\" is no token and stays as it is.|" +
                one_name);
  EXPECT_EQ(said(remarks_on_mask("[title]{ ([year])")), "A \"{\" has no \"}\" behind it and stays as it is.|");
  EXPECT_EQ(said(remarks_on_folder("/tv/}[title]{[year]/[show]}")),
            "\"[title]\" means nothing in a folder and stays as it is.|"
            "A \"{\" has no \"}\" behind it and stays as it is.|"
            "A \"}\" has no \"{\" before it and stays as it is.|");
}

TEST(ExactNames, KeepAllThatAFileSystemCanHold) {
  const std::pair<const char*, const char*> rows[] = {
      {"Star Trek: Picard", "Star Trek - Picard"}, {"Face/Off \\o/", "Face-Off o-"},
      {"Why? \"So\" <1|2>*", "Why So 12"},         {"  1883\t Part  1 ", "1883 Part 1"},
      {"Cafe\u0301 [x]", "Caf\u00e9 [x]"},         {"a\u202eb\nc\x7f", "ab c"},
      {"Ночной поезд...", "Ночной поезд..."},      {"???", ""}};
  for (const auto& [name, expected] : rows) EXPECT_EQ(exact_name(name), expected) << name;
}

TEST(ServiceNames, MisleadNeitherTheEyeNorTheSystem) {
  Lines log;
  // What is decoded badly is kept, and so are the lone marks of right-to-left scripts.
  const std::string name = "Ð\u009D - 1x01 - א\u200Fx.avi\u2029\u202F\u2065\u206A \u0080";
  EXPECT_EQ(without_control_characters(name, log), name);
  EXPECT_EQ(without_control_characters("A\x1B[2J\x01\x1F\x7F\u202A\u202E\u2066\u2069b", log), "A[2Jb");
  EXPECT_EQ(log.list, std::vector<std::string>{"Removed 8 control characters from the service's name \"A[2Jb\""});
  // What the system takes for something else is refused.
  for (const char* name : {"CON", "Con.s01.avi", "nul .txt", "LPT1.a", "com\u00B2", "CONOUT$", "...", ". ."}) {
    EXPECT_TRUE(name_trouble(name, '\\')) << name;
    EXPECT_FALSE(name_trouble(name, '/')) << name;
  }
  for (const char* name : {"Conan", "com12.avi", "", "S.H.I.E.L.D.", ".avi"}) EXPECT_FALSE(name_trouble(name, '\\'));
  EXPECT_TRUE(name_trouble(".", '/'));
  const MaskValues values{"Con", 1, 2, ".."};
  EXPECT_EQ(mask_trouble("D:\\..\\[show]\\x", values, expand_folder, '\\'), "\"Con\" is the name of a device");
  EXPECT_EQ(mask_trouble("[show] - [title]", values, expand_name, '\\'), std::nullopt);
  EXPECT_EQ(mask_trouble("../a/[title]", values, expand_name, '/'), "\"..\" stands for a folder");
  EXPECT_EQ(mask_trouble("../con/[s]", values, expand_folder, '/'), std::nullopt);
  EXPECT_EQ(without_ends("\\\\nas.\\TV. \\.\\..\\S.H.I.E.L.D.\\ Season 1 .", '\\'),
            "\\\\nas.\\TV\\.\\..\\S.H.I.E.L.D\\ Season 1");
  EXPECT_EQ(without_ends("D:\\A.\\", '\\') + without_ends("/A./", '/'), "D:\\A\\/A./");
}

}  // namespace
}  // namespace quorvel::testing
