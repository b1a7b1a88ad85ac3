#include <gtest/gtest.h>

#include "queue/fault_world.h"
#include "rules/presets.h"
#include "rules/reach.h"

namespace quorvel::testing {
namespace {

struct Rules : ::testing::Test, TestSession {
  Rules() { start(); }
  FilterList& filters = session.filters;
  ExceptionList& exceptions = session.exceptions;

  void load_filters(const std::string& bytes) {
    write("data/Quorvel/filters.dat", bytes);
    filters.loadfilters();
  }
};

constexpr const char* mkv_line = "2\tTrue\tmkv\t\t/tv/\t[show]\tFile Type Equals mkv\t1\t0\r\n";
constexpr const char* any_line = "1\tTrue\t\t*\t\t[title]\tShow Name Equals Anything\t0\t1\r\n";

TEST_F(Rules, ThereIsADefaultRuleAndTheFirstOfWhichEitherConditionFitsIsTaken) {
  EXPECT_EQ(ui.filters,
            (std::vector<ListRow>{{"F1", {"Show Name Equals Anything", "Rename", "[show] - [s]x[ee] - [title]", ""}}}));
  EXPECT_FALSE(exists("data/Quorvel/filters.dat"));
  const struct {
    const char *type, *name;
    int type_condition, name_condition;
    const char* fitting;  // of "avi The X", "mkv The X", "avi Y"
    bool enabled = true;
  } rules[] = {{"mkv", "", 1, 0, "-+-"},   {"mkv", "", 2, 0, "+-+"},   {"", "the *", 0, 1, "++-"},
               {"", "the *", 0, 2, "--+"}, {"", "The *", 0, 1, "---"}, {"", "", 2, 2, "---"},
               {"mkv", "y", 1, 1, "-++"},  {"mkv", "y", 7, 1, "+-+"},  {"", "*", 0, 1, "---", false}};
  for (const auto& rule : rules) {
    AFilter& filter = filters.at(1);
    filter.enabled = rule.enabled, filter.showName = rule.name, filter.showNameCondition = rule.name_condition;
    filter.fileType = rule.type, filter.fileTypeCondition = rule.type_condition;
    std::string fitting;
    for (const auto& [type, name] : {std::pair("avi", "The X"), {"mkv", "The X"}, {"avi", "Y"}}) {
      fitting += filters.first_fitting(type, name) ? '+' : '-';
    }
    EXPECT_EQ(fitting, rule.fitting) << rule.type << rule.name << rule.type_condition << rule.name_condition;
  }
  load_filters(std::string(mkv_line) + any_line + any_line);
  EXPECT_TRUE(filters.first_fitting("mkv", "x") == 1 && filters.first_fitting("avi", "x") == 2);
}

TEST_F(Rules, NeverUsedIsOnlyWhatNoFileReaches) {
  const auto rule = [](const std::string& type, int type_condition, const std::string& name, int name_condition) {
    AFilter made;
    made.description = type + name, made.enabled = true;
    made.fileType = type, made.fileTypeCondition = type_condition;
    made.showName = name, made.showNameCondition = name_condition;
    return made;
  };
  const AFilter any = rule("", 0, "*", 1), no_mkv = rule("mkv", 2, "", 0), mkv = rule("mkv", 1, "", 0),
                m = rule("m*", 1, "", 0), either = rule("mkv", 1, "the x", 1), the = rule("", 0, "the *", 1),
                no_avi = rule("avi", 2, "", 0), capital = rule("MKV", 1, "", 0), none = rule("", 1, "", 1);
  AFilter off = any;
  off.enabled = false;
  const std::string taken = " above it takes every file that fits it.";
  const std::tuple<std::vector<AFilter>, std::string, int> rows[] = {
      {{any, mkv}, "\"*\"" + taken, 1},
      {{mkv, any}, "", 2},
      {{off, mkv}, "", 3},
      {{any, off}, "", 1},
      {{m, mkv}, "\"m*\"" + taken, 3},
      {{mkv, m}, "", 3},
      {{mkv, no_mkv, the}, "The rules" + taken, 2},
      {{no_avi, no_mkv, the}, "The rules" + taken, 2},
      {{mkv, the, either}, "The rules" + taken, 4},
      {{m, either}, "", 3},
      {{no_mkv, rule("avi", 1, "", 0)}, "\"mkv\"" + taken, 3},
      {{rule("m*", 2, "", 0), no_mkv}, "", 3},
      {{capital}, "No file fits it.", 2},
      {{none}, "No file fits it.", 2},
      {{rule("MKV", 2, "", 0), mkv}, "\"MKV\"" + taken, 1},
      {{rule("**", 2, "", 0)}, "No file fits it.", 2}};
  for (const auto& [list, why, place] : rows) {
    EXPECT_EQ(why_never_used(list, list.size() - 1), why) << list.back().description;
    EXPECT_EQ(place_for_new(list), place) << list.back().description;
  }
  // All lists of three: what is said to be never used is not once taken.
  std::vector<AFilter> rules;
  for (const char* const pattern : {"*", "mkv", "m*", "?", "[a-m]", "MKV"}) {
    for (const int condition : {1, 2}) {
      rules.push_back(rule(pattern, condition, "", 0));
      rules.push_back(rule(pattern, condition, "m", 1));
      rules.push_back(rule("", 0, pattern, condition));
    }
  }
  for (const AFilter& first : rules) {
    for (const AFilter& second : rules) {
      filters.use_only(first), filters.append(second), filters.append({});
      for (const AFilter& last : rules) {
        filters.at(3) = last;
        if (why_never_used(filters.entries(), 2).empty()) continue;
        for (const char* const type : {"", "mkv", "m", "z", "mz"}) {
          for (const char* const name : {"", "mkv", "m", "z", "mz"}) EXPECT_NE(filters.first_fitting(type, name), 3);
        }
      }
    }
  }
}

TEST_F(Rules, LoadingStopsAtABadLineAndSaysWhich) {
  load_filters(std::string(mkv_line) + "1\tTrue\n\r\n" + any_line + "2\tTrue");
  EXPECT_TRUE(logged("Error loading afilters: line 2 of filters.dat has 2 of 9 fields"));
  EXPECT_EQ(filters.count(), 3) << "what follows the last line end is no rule";
  EXPECT_EQ(filters.at(1).path, "/tv/");
  write("data/Quorvel/man.dat", "no tab\r\n");
  EXPECT_FALSE(exceptions.loadefilters());
  EXPECT_TRUE(logged("Error loading efilters: line 1 of man.dat has 1 of 2 fields"));
}

TEST_F(Rules, SavingWritesJustWhatIsThereAndKeepsWhatWasNotUnderstood) {
  load_filters(std::string(mkv_line) + any_line);
  EXPECT_TRUE(filters.exchange(1, 2));
  EXPECT_EQ(read("data/Quorvel/filters.dat"), std::string(any_line) + mkv_line);
  EXPECT_FALSE(exists("data/Quorvel/filters.dat.bak"));
  EXPECT_FALSE(filters.exchange(2, 3));

  const std::string edited = std::string(mkv_line) + "by hand";
  write("data/Quorvel/filters.dat", edited);
  EXPECT_TRUE(filters.remove(2));
  EXPECT_EQ(read("data/Quorvel/filters.dat"), any_line);
  EXPECT_EQ(read("data/Quorvel/filters.dat.bak"), edited);
  EXPECT_EQ(ui.filters.size(), 1u);
  EXPECT_FALSE(filters.remove(1)) << "the last rule stays";
  EXPECT_EQ(ui.messages, std::vector<std::string>{"Unable to remove filter: You must have at least one filter"});
}

TEST_F(Rules, StayWhatTheyAreWhereTheSavedFileCannotBeSeenOrRead) {
  const std::string kept = "2\tTrue\t\t*\t/tv/\t[show]\tAny\t0\t1\tkeep-both\r\n";
  FaultPlan drive;
  FilterList list(drive, session.log, ui, session.settings.work_dir);
  int after = 0;  // calls since the file was written
  for (const auto& [seen, trouble] :
       {std::pair(0, std::string("the file cannot be found")),
        {2, "The file " + work_dir() + "filters.dat cannot be read; with other rules files would go elsewhere"}}) {
    write("data/Quorvel/filters.dat", mkv_line + kept);
    drive.works = [](auto&&...) { return true; };
    list.loadfilters();
    drive.works = [&, seen = seen](int, const std::string& written) {
      return after += written.empty() ? after > 0 : 1, after <= 1 + seen;
    };
    after = 0;
    EXPECT_TRUE(list.exchange(1, 2) && logged("Error loading afilters: " + trouble)) << log();
    EXPECT_TRUE(list.count() == 2 && list.at(2).fileType == "mkv" && ui.filters.at(0).cells[0] == "Any");
    EXPECT_EQ(read("data/Quorvel/filters.dat"), kept + mkv_line);
  }
  load_filters("2\tmaybe" + kept.substr(6));
  EXPECT_TRUE(logged("Error loading afilters: line 1 of filters.dat: \"maybe\" is neither True nor False")) << log();
}

TEST_F(Rules, EveryCharacterComesBackAndWhatIsNoneIsNotWritten) {
  load_filters(mkv_line);
  for (const char* path : {"/a\tb/", "/a\r\nb/"}) {
    filters.at(1).path = path;
    EXPECT_FALSE(filters.savefilters()) << path;
    EXPECT_TRUE(logged("Error saving afilters: \"" + std::string(path) + "\" holds a tab or a line break"));
    EXPECT_EQ(read("data/Quorvel/filters.dat"), mkv_line);
  }
  const std::pair<const char*, bool> rows[] = {
      {"/caf\u00E9 \u20AC/", false}, {"/\u0424\u0438\u043B\u044C\u043C\u044B/", true}, {"/caf\xE9/", true}};
  for (const auto& [path, is_utf8] : rows) {
    filters.at(1).path = path;
    EXPECT_TRUE(filters.savefilters());
    EXPECT_EQ(read("data/Quorvel/filters.dat").starts_with("\xEF\xBB\xBF"), is_utf8) << path;
    filters.loadfilters();
    EXPECT_EQ(filters.at(1).path, path);
  }
  load_filters(std::string(mkv_line) + any_line);
  filters.at(2).path = "/a\tb/";
  EXPECT_FALSE(filters.exchange(1, 2) || filters.remove(1) || filters.insert(1, {}) || filters.store(1, {}));
  EXPECT_TRUE(filters.count() == 2 && filters.at(1).fileType == "mkv" && !filters.at(1).deleted) << "nothing changed";
  EXPECT_TRUE(exceptions.store(0, {"\u00EF\u00BB\u00BFx", "y"})) << "in the code page it would begin with UTF-8's mark";
  exceptions.loadefilters();
  EXPECT_EQ(exceptions.at(1).detectedName, "\u00EF\u00BB\u00BFx");
  EXPECT_FALSE(exists("data/Quorvel/filters.dat.bak"));
}

TEST(Presets, FitWhatEachServerWants) {
  MaskValues one{"Show", 1, 2, "Title"}, several{"Show", 1, 2, "Title", {3, 4}}, special{"Show", 0, 0, "Special"};
  MaskValues dated{"Show", 3, 7, "Title"};
  one.facts.year = several.facts.year = special.facts.year = "2010";
  dated.facts.named_date = "2011-11-15", dated.facts.named_year = "2011";
  const std::string names[] = {
      "jellyfin: Show (2010)/Season 01/Show S01E02 - Title|"
      "Show (2010)/Season 01/Show S01E02-E04 - Title|Show (2010)/Season 00/Show - Special|"
      "Show/Season 03/Show S03E07 - Title|",
      "plex: Show (2010)/Season 01/Show (2010) - s01e02 - Title|"
      "Show (2010)/Season 01/Show (2010) - s01e02-e04 - Title|"
      "Show (2010)/Season 00/Show (2010) - Special|"
      "Show/Season 2011/Show - 2011-11-15 - Title|",
      "kodi: Show (2010)/Season 01/Show S01E02 - Title|"
      "Show (2010)/Season 01/Show S01E02E03E04 - Title|Show (2010)/Season 00/Show - Special|"
      "Show/Season 03/Show - 2011-11-15 - Title|"};
  for (std::size_t i = 0; i < std::size(presets); ++i) {
    std::string text(presets[i].name);
    text += ": ";
    for (const MaskValues& values : {one, several, special, dated}) {
      text += expand_folder(presets[i].folder, values) + "/" + expand_name(presets[i].mask, values) + "|";
    }
    EXPECT_EQ(text, names[i]);
  }
}

TEST_F(Rules, ExceptionsReplaceOnceAndIgnoreCase) {
  write("data/Quorvel/man.dat", "The Office\tThe Office US\r\nthe office\tX\r\nthe office us\tY\r\n");
  EXPECT_TRUE(exceptions.loadefilters());
  EXPECT_EQ(exceptions.replacement("THE OFFICE"), "the office us");
  EXPECT_EQ(exceptions.replacement("the office "), std::nullopt);
  EXPECT_EQ(ui.exceptions.at(1), (ListRow{"F2", {"the office", "X"}}));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(exceptions.remove(1));
  EXPECT_FALSE(exists("data/Quorvel/man.dat"));
}

}  // namespace
}  // namespace quorvel::testing
