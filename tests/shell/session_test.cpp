#include <gtest/gtest.h>

#include "session_fixture.h"

namespace quorvel::testing {
namespace {

struct Shell : ::testing::Test, TestSession {};

TEST_F(Shell, TheFirstRunWritesItsVersionAndTellsWhatItLoads) {
  files->create_folder(folder / "data/Quorvel");
  files->create_folder(folder / "data/Quorvel/cache");
  write("data/Quorvel/cache/old.qc", "x");
  session.start();
  EXPECT_EQ(log(), "Quorvel 3.4 (build 0) started");
  EXPECT_EQ(key_values.texts[""], "3.4");
  EXPECT_EQ(key_values.numbers, (std::map<std::string, std::uint32_t>{{"context", 0}}));
  EXPECT_FALSE(exists("data/Quorvel/cache"));
  EXPECT_EQ(session.settings.work_dir, work_dir());
}

TEST_F(Shell, OnlyOlderVersionsDropTheCaches) {
  for (const auto& [version, dropped] : {std::pair("3.1", true), std::pair("3.3", true), std::pair("3.4", false)}) {
    files->create_folder(folder / "data/Quorvel");
    files->create_folder(folder / "data/Quorvel/cache");
    key_values.texts[""] = version;
    key_values.numbers["context"] = 1;
    session.start();
    EXPECT_EQ(exists("data/Quorvel/cache"), !dropped) << version;
    EXPECT_EQ(key_values.texts[""], "3.4");
    EXPECT_EQ(session.settings.context, 1);
  }
}

TEST_F(Shell, SettingsAreReadWithTheirDefaults) {
  const SettingsEnvironment environment{*files, *shell, session.log, nullptr};
  key_values.texts["types"] = "mp";
  key_values.numbers = {{"confirm", 5}, {"logging", 3}, {"autoclose", 2}, {"context", 7}, {"nocache", 70000}};
  EXPECT_EQ(load_settings(session.settings_store, session.settings, environment), LogLevel::Normal);
  const Settings& settings = session.settings;
  EXPECT_EQ(settings.types, "avi;mkv;mpg;mp4");
  EXPECT_TRUE(settings.confirm && !settings.autoclose && !settings.nocache && !settings.noutf8);
  EXPECT_EQ(settings.context, 2);
  key_values.texts["types"] = std::string("mp4\0x", 5);
  key_values.numbers["logging"] = 2;
  EXPECT_EQ(load_settings(session.settings_store, session.settings, environment), LogLevel::Verbose);
  EXPECT_EQ(settings.types, "mp4");
}

TEST_F(Shell, TheContextMenuIsInstalledOnceForEveryTypeAndFolders) {
  FakeMenu menu{events};
  const SettingsEnvironment environment{*files, *shell, session.log, &menu};
  key_values.texts["types"] = "avi;mkv";
  load_settings(session.settings_store, session.settings, environment);
  EXPECT_EQ(events.list, (std::vector<std::string>{"install avi", "install mkv", "install DIR"}));
  EXPECT_EQ(session.settings.context, Settings::Installed);
  key_values.numbers["context"] = 1;
  load_settings(session.settings_store, session.settings, environment);
  EXPECT_EQ(events.list, (std::vector<std::string>{"install avi", "install mkv", "install DIR"}));
}

TEST_F(Shell, AFailedWriteIsToldAndEndsTheProgram) {
  key_values.fails = true;
  EXPECT_THROW(session.settings_store.write_number("confirm", 1), ProgramEnd);
  EXPECT_THROW(session.settings_store.write_string("types", "x"), ProgramEnd);
  EXPECT_EQ(ui.messages, (std::vector<std::string>{"Error saving settings: Fatal Error writing data to registry "
                                                   "(no room)#The program needs to close",
                                                   "Error saving settings: Fatal Error writing data to registry "
                                                   "(no room)The program needs to close"}));
}

TEST_F(Shell, TheWorkDirectoryFallsBackToTheProgramsFolder) {
  EXPECT_EQ(shell->perform({FileOperationRequest::Delete, folder / "data", "", 0}), 0);
  session.start();
  EXPECT_EQ(session.settings.work_dir, folder / "program/");
}

TEST_F(Shell, TheLogHoldsAThousandLinesAndThenStartsAgain) {
  session.log.set_level(LogLevel::Normal);
  session.log.debug_log("step", LogLevel::Verbose);
  EXPECT_TRUE(session.log.lines().empty());
  for (int i = 0; i < 1000; ++i) session.log.debug_log("", LogLevel::Normal);
  EXPECT_EQ(session.log.lines().size(), 1000u);
  EXPECT_EQ(session.log.lines().front(), "(14:05:33) ");
  std::string told;
  session.log.on_line = [&](const std::string& line, bool cleared) { told += line + (cleared ? "!" : "."); };
  session.log.debug_log("step", LogLevel::Verbose);
  session.log.debug_log("last", LogLevel::Normal);
  EXPECT_EQ(told, "Log has exceeded maximum allowed limit and will be cleared.!(14:05:33) last.");
  EXPECT_EQ(session.log.lines().size(), 2u);
}

}  // namespace
}  // namespace quorvel::testing
