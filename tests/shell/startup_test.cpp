#include "shell/startup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "../support/program_copy.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

struct Copy : ProgramCopy {
  const std::string a = file("a.1x01.mkv"), b = file("b 1x02.avi");
  Startup startup{session, window, channel};
};

TEST(Startup, BringsTheProgramUpInOrder) {
  Copy copy;
  copy.store.write_string("types", "avi;mkv");
  EXPECT_EQ(copy.startup.run({copy.a, "/startup"}), StartResult::Running);
  const std::string banner = "(t) Quorvel 3.4 (build 0) started";
  EXPECT_THAT(copy.happened(), ElementsAre("caption Quorvel 3.4", "receive", banner, "tray Quorvel", "install avi",
                                           "install mkv", "install DIR", "(t) Help File not found in program directory",
                                           "full rows", "row a.1x01", "timer", "centre", "minimise", "clicks"));
  EXPECT_TRUE(copy.startup.loaded() && fs::exists(copy.folder / "data/Quorvel"));
  copy.startup.unload();
  copy.startup.unload();
  EXPECT_THAT(copy.happened(), ElementsAre("stop", "no tray"));
  EXPECT_THROW(copy.channel.handle("QV|PI|C="), Failure);

  Copy helped;
  helped.file("share/doc/quorvel/help/index.html");
  helped.store.write_number("context", 1);
  helped.store.write_string("", "3.4");
  EXPECT_EQ(helped.startup.run({}), StartResult::Running);
  EXPECT_THAT(helped.happened(), ElementsAre("caption Quorvel 3.4", "receive", banner, "tray Quorvel", "help file",
                                             "full rows", "timer", "clicks"));
}

TEST(CommandLine, TellsSwitchesFromPaths) {
  Copy copy;
  const std::string here = copy.folder.path(), c = copy.file("uninstall/c.mkv"), dashes = copy.file("--uninstall");
  const fs::path before = fs::current_path();
  fs::current_path(here);
  const std::pair<Texts, CommandLine> rows[] = {
      {{}, {}},
      {{"", "/uninstall"}, {true, false, {}}},
      {{"--startup", "a.1x01.mkv", "b 1x02.avi"}, {false, true, {copy.a, copy.b}}},
      {{"--uninstall"}, {false, false, {dashes}}},
      {{"./uninstall/c.mkv", here + "/uninstall"}, {false, false, {c, here + "/uninstall"}}},
      {{"/UNINSTALL", "x/uninstall", "/startup2"}, {false, false, {"/UNINSTALL", here + "/x/uninstall", "/startup2"}}},
      {{"b", "1x02.avi"}, {false, false, {copy.b}}},
      {{"\"" + copy.b + "\"", "\"gone.avi\""}, {false, false, {copy.b, here + "/gone.avi"}}},
      {{"file://" + here + "/b%201x02.avi", "FILE://localhost/p%25%fFq%4", "file:///a%00b", "file://host/x"},
       {false, false, {copy.b, "/p%\xFFq%4", here + "/file:/a%00b", here + "/file:/host/x"}}}};
  for (const auto& [arguments, line] : rows) {
    EXPECT_EQ(parse_command_line(arguments, copy.files, false), line) << ::testing::PrintToString(arguments);
  }
  EXPECT_EQ(parse_command_line({"/x/uninstall", "y/startup"}, copy.files, true),
            (CommandLine{true, true, {"/x/uninstall y/startup"}}));
  fs::current_path(before);
}

TEST(Startup, HandsOverToTheRunningCopy) {
  Copy copy;
  const std::string odd = copy.file("q\"\n|\xFF.mkv");
  copy.ui.on_events = [&] { copy.events.add("events"); };
  copy.channel.others = {true};
  EXPECT_EQ(copy.startup.run({odd, "/startup", copy.a}), StartResult::Ended);
  EXPECT_THAT(copy.happened(), ElementsAre("wait 100", "send QV|PI|C=" + odd, "send QV|PI|C=" + copy.a, "events"));
  copy.channel.others = {true};
  EXPECT_EQ(copy.startup.run({}), StartResult::Ended);
  EXPECT_THAT(copy.happened(), ElementsAre("wait 100", "send QV|PI|C=", "events"));

  copy.events.fails = "send";
  copy.channel.others = {true, true};
  EXPECT_EQ(copy.startup.run({copy.a}), StartResult::Ended);
  EXPECT_THAT(copy.happened(), ElementsAre("wait 100", "message Quorvel: no send", "events"));
  copy.channel.others = {true, false};  // it has ended meanwhile
  EXPECT_EQ(copy.startup.run({copy.a}), StartResult::Running);
  EXPECT_EQ(copy.session.queue.count(), 1);
}

TEST(Startup, EndsWithAMessageWhenAStepFails) {
  const std::string text = "message Error loading Quorvel: Quorvel encountered an error loading and cannot continue. (";
  for (const char* const step : {"caption", "receive", "tray", "full rows", "row", "timer", "centre", "clicks"}) {
    Copy copy;
    copy.events.fails = step;
    EXPECT_EQ(copy.startup.run({copy.a, "/startup"}), StartResult::Ended);
    Texts events = copy.happened();
    events.erase(events.begin(), events.end() - 5);
    EXPECT_THAT(events, ElementsAre("stop", text + "no " + step + ")", "stop", "no tray", "unload"));
    EXPECT_FALSE(copy.startup.loaded());
  }
  Copy copy;  // with settings that cannot be stored, of which the user has heard already
  copy.file("config");
  EXPECT_EQ(copy.startup.run({}), StartResult::Ended);
  const Texts events = copy.happened();
  EXPECT_THAT(events, ::testing::Contains(::testing::StartsWith("message Error saving settings")));
  EXPECT_THAT(events, ::testing::Not(::testing::Contains(::testing::StartsWith(text))));
  EXPECT_EQ(events.back(), "unload");
}

TEST(Startup, UnderstandsMessages) {
  Copy copy;
  copy.startup.handle_message("QV|PI|C=" + copy.a);  // kept
  EXPECT_EQ(copy.session.queue.count(), 0);
  copy.startup.run({});
  EXPECT_EQ(copy.session.queue.count(), 1);
  for (const char* const start : {"qv|PI|C=", "QV|XX|C=", "QV|PI|", "PI|C=", "QV|UD", ""}) {
    copy.channel.handle(start + copy.b);
    EXPECT_EQ(copy.session.queue.count(), 1) << start;
  }
  for (const char* const text : {"", "QV|PI", "QV|PI|", "QV|PI|C"}) copy.channel.handle(text);
  copy.happened();
  copy.channel.handle("QV|PI|\xC3\xA9\xFF" + copy.b);  // two characters, whichever
  EXPECT_THAT(copy.happened(), ElementsAre("row b 1x02", "timer"));

  copy.ui.on_events = [&, first = true]() mutable {
    if (!std::exchange(first, false)) return;
    copy.channel.handle("QV|PI|C=" + copy.file("c.1x03.mkv"));
    copy.channel.handle("QV|UD|whatever");
  };
  copy.session.processor.process_queue();
  EXPECT_EQ(copy.session.queue.count(), 3);
  EXPECT_EQ(copy.session.queue.at(2).state, QueueState::Inactive);  // the pass has ended after the first
  EXPECT_THAT(copy.happened(),
              ::testing::IsSupersetOf({"row c.1x03", "(t) Got quit signal, finishing up...", "stop", "unload"}));
}

TEST(Startup, UninstallTakesBackWhatIsOursAndNothingElse) {
  Copy copy;
  copy.store.write_string("types", "ogm;mkv");
  copy.file("data/Quorvel/cache/x.qc");
  const std::string strangers = copy.file("filters.dat"), other = copy.file("data/Other/file");
  const fs::path before = fs::current_path();
  fs::current_path(copy.folder.path());
  copy.channel.others = {true};
  EXPECT_EQ(copy.startup.run({"/uninstall"}), StartResult::Ended);
  fs::current_path(before);
  EXPECT_THAT(copy.happened(), ElementsAre("remove ogm", "remove mkv", "remove DIR"));
  EXPECT_FALSE(fs::exists(copy.folder / "data/Quorvel") || fs::exists(copy.folder / "config/Quorvel"));
  EXPECT_TRUE(fs::exists(strangers) && fs::exists(other) && fs::exists(copy.a));

  copy.file("data/Quorvel/filters.dat");
  copy.events.fails = "remove";
  EXPECT_EQ(copy.startup.run({"--uninstall", "x"}), StartResult::Ended);
  EXPECT_FALSE(fs::exists(copy.folder / "data/Quorvel"));
}

}  // namespace
}  // namespace quorvel::testing
