#include <gtest/gtest.h>

#include <array>

#include "session_fixture.h"
#include "shell/preferences.h"

namespace quorvel::testing {
namespace {

using Texts = std::vector<std::string>;
using Numbers = std::map<std::string, std::uint32_t>;
struct Shell : ::testing::Test, TestSession {};

TEST_F(Shell, AFirstRunAndOlderVersionsDropTheCaches) {
  const std::tuple<const char*, bool, int> rows[] = {
      {"", true, 0}, {"3.1", true, 9}, {"3.3", true, 9}, {"3.4", false, 9}};
  for (const auto& [version, dropped, context] : rows) {
    write("data/Quorvel/cache/old.qc", "x");
    key_values.texts[""] = version;
    key_values.numbers = {{"context", 9}};
    session.start();
    EXPECT_EQ(exists("data/Quorvel/cache"), !dropped) << version;
    EXPECT_EQ(key_values.texts[""], "3.4");
    EXPECT_EQ(key_values.numbers, (Numbers{{"context", context}})) << version;
  }
  write("data/Quorvel/cache/of somebody else.txt", "x");
  for (const char* const own : {"a.qc", "b.epc", ".quorvel-x"}) write(std::string("data/Quorvel/cache/") + own, "x");
  key_values.texts[""] = "3.1";
  session.start();
  EXPECT_TRUE(exists("data/Quorvel/cache/of somebody else.txt") && !exists("data/Quorvel/cache/a.qc") &&
              !exists("data/Quorvel/cache/b.epc"));
  EXPECT_EQ(session.settings.work_dir, work_dir());
  files->remove(work_dir() + "cache" + native::separator + "of somebody else.txt");
  key_values.texts[""] = "3.2";
  FailingShell failing;
  failing.fails_at = 1;
  Session other({key_values, failing, *files, service, web, ui, clock, &desktop}, places());
  other.start();
  EXPECT_TRUE(other.log.lines().at(1).ends_with(") Unable to delete " + work_dir() + "cache (5)"));
  EXPECT_EQ(shell->perform({FileOperationRequest::Delete, folder / "data", "", 0}), 0);
  session.start();
  EXPECT_EQ(session.settings.work_dir, folder / "program/");
  write("data", "a file");
  session.start();
  EXPECT_TRUE(session.settings.work_dir == work_dir() &&
              logged("Error making work dir: " + folder / "data/Quorvel" + " cannot be created"));
}

TEST_F(Shell, RulesThatCannotBeReadAreNotTakenForNone) {
  session.start();
  for (const char* const name : {"man.dat", "filters.dat"}) {
    files->create_folder(work_dir() + name);
    EXPECT_THROW(session.start(), Unreadable) << name;
    std::filesystem::remove(path_of(work_dir() + name));
    make(work_dir() + name, "nonsense\r\n");
  }
  session.start();
  EXPECT_TRUE(logged("Failed to load afilters") && logged("Failed to load efilters")) << log();
}

TEST_F(Shell, PreferencesAreReadWithTheirDefaultsAndInstallTheMenuOnce) {
  // What is stored for each, in their order, and what that means.
  using Values = std::array<int, number_settings.size()>;
  const std::pair<Values, Values> rows[] = {
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 730, 0, 30}},
      {{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}},
      {{2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 9, 2, 9}, {2, 1, 1, 1, 2, 0, 1, 1, 1, 1, 1, 9, 0, 9}},
      {{7, 32767, 32768, 7, 3, 7, 7, 7, 7, 7, 7, 40000, 7, 40000}, {2, 1, 0, 1, 1, 0, 1, 1, 1, 1, 1, 730, 0, 30}}};
  const std::pair<std::string, std::string> types[] = {
      {"mp", "avi;mkv;mpg;mp4"}, {"mp4", "mp4"}, {"", "avi;mkv;mpg;mp4"}, {std::string("mp4\0x", 5), "mp4"}};
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    key_values.texts["types"] = types[i].first;
    for (std::size_t k = 0; k < number_settings.size(); ++k) {
      key_values.numbers[std::string(number_settings[k].name)] = static_cast<std::uint32_t>(rows[i].first[k]);
    }
    key_values.texts[""] = "3.4";
    events.list.clear();
    load_preferences(session);
    Values read{};
    for (std::size_t k = 0; k < read.size(); ++k) read[k] = number_settings[k].get(session.settings);
    EXPECT_EQ(read, rows[i].second) << i;
    EXPECT_EQ(session.settings.types, types[i].second);
    EXPECT_EQ(static_cast<int>(session.log.level()), rows[i].second[4]);
    EXPECT_EQ(events.list,
              i > 0 ? Texts() : Texts({"install avi", "install mkv", "install mpg", "install mp4", "install DIR"}));
  }
}

TEST_F(Shell, ApplyingPreferencesStoresThemAtOnceAndBringsTheMenuUpToDate) {
  start();
  Settings wanted = session.settings;
  wanted.types = "a;";
  EXPECT_FALSE(apply_preferences(session, wanted));
  EXPECT_EQ(events.list,
            Texts({"message Filetypes Required: Please enter at least one filetype. Multiple filetypes can "
                   "be seperated with semicolons."}));
  wanted.types = ".AVI;.mov;";
  for (const NumberSetting& setting : number_settings) setting.turn(wanted, true);
  events.list.clear();
  key_values.writes = 0;
  EXPECT_TRUE(apply_preferences(session, wanted));
  EXPECT_EQ(key_values.writes, 1);
  const std::string warning =
      "message 1 Not Recommended: Disabling the cache is for troubleshooting only. The program will operate "
      "a lot slower with no cache";
  EXPECT_EQ(events.list, Texts({warning, "remove avi", "remove mkv", "remove mpg", "remove mp4", "install avi",
                                "install mov", "install DIR"}));
  EXPECT_EQ(session.settings.types + key_values.texts["types"], "avi;movavi;mov");
  EXPECT_EQ(key_values.numbers, (Numbers{{"autoclose", 1},
                                         {"confirm", 1},
                                         {"context", 2},
                                         {"logging", 2},
                                         {"nocache", 1},
                                         {"noutf8", 1},
                                         {"exact", 1},
                                         {"strict", 1},
                                         {"verify", 1},
                                         {"review", 1},
                                         {"tidy", 1},
                                         {"history", 730},
                                         {"watching", 1},
                                         {"settle", 30}}));
  EXPECT_EQ(session.log.level(), LogLevel::Verbose);

  for (const NumberSetting& setting : number_settings) setting.turn(wanted, false);
  events.list.clear();
  EXPECT_TRUE(apply_preferences(session, wanted));
  EXPECT_EQ(events.list, Texts({"remove avi", "remove mov", "remove DIR"}));
  for (const bool on : {true, false}) {
    turn_review_first(session, on);
    turn_exact_names(session, on);
    EXPECT_TRUE(session.settings.review == on && session.settings.exact == on);
    EXPECT_TRUE(key_values.numbers["review"] == on && key_values.numbers["exact"] == on);
  }
}

TEST_F(Shell, AFailedWriteIsReportedAndEndsTheProgram) {
  key_values.fails = true;
  EXPECT_THROW(session.settings_store.write_number("confirm", 1), ProgramEnd);
  EXPECT_THROW(session.settings_store.write_preferences(session.settings), ProgramEnd);
  const std::string text = "Error saving settings: Fatal Error writing data to registry (no room)";
  EXPECT_EQ(ui.messages, (Texts{text + "#The program needs to close", text + "The program needs to close"}));
}

TEST_F(Shell, TheLogHoldsAThousandLinesAndThenStartsAgain) {
  for (int i = 0; i < 1000; ++i) session.log.debug_log("", LogLevel::Normal);
  session.log.debug_log("step", LogLevel::Verbose);
  EXPECT_EQ(session.log.lines(), std::deque<std::string>(1000, "(14:05:33) "));
  std::string shown;
  session.log.on_line = [&](const std::string& line, bool cleared) { shown += line + (cleared ? "!" : "."); };
  session.log.debug_log("last", LogLevel::Normal);
  EXPECT_EQ(shown, "Log has exceeded maximum allowed limit and will be cleared.!(14:05:33) last.");
  EXPECT_EQ(session.log.lines().size(), 2u);
}

}  // namespace
}  // namespace quorvel::testing
