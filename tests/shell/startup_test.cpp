#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/native.h"
#include "session_fixture.h"
#include "shell/commands.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

struct Copy : ProgramCopy {
  const std::string a = file("a.1x01.mkv"), b = file("b 1x02.avi");
};

TEST(Startup, BringsTheProgramUpInOrder) {
  Copy copy;
  copy.key_values.write_string("types", "avi;mkv");
  EXPECT_EQ(copy.run({"/startup"}), StartResult::Running);
  const std::string banner = "(14:05:33) Quorvel 3.4 (build 0) started";
  EXPECT_THAT(copy.happened(),
              ElementsAre("open hidden Quorvel 3.4", "receive", banner, "tray Quorvel", "install avi", "install mkv",
                          "install DIR", "(14:05:33) Help File not found in program directory", "timer", "centre",
                          "minimise", "clicks"));
  EXPECT_TRUE(copy.startup.loaded() && copy.exists("data/Quorvel"));
  copy.startup.unload();
  copy.startup.unload();
  EXPECT_THAT(copy.happened(), ElementsAre("stop", "no tray"));
  EXPECT_THROW(copy.desktop.handle("QV|PI|C="), Failure);

  Copy helped;
  helped.make(help_file(helped.session.places));
  helped.key_values.write_number("context", 1);
  helped.key_values.write_string("", "3.4");
  EXPECT_EQ(helped.run({"--exact", helped.a}), StartResult::Running);
  EXPECT_TRUE(helped.session.settings.exact && helped.key_values.read_number("exact") == std::nullopt);
  EXPECT_EQ(helped.session.filters.count(), 1) << "the default rule";
  EXPECT_THAT(helped.happened(),
              ElementsAre("open Quorvel 3.4", "receive", banner, "tray Quorvel", "row a.1x01", "timer", "clicks"));
}

TEST(Startup, HandsOverToTheRunningCopy) {
  Copy copy;
  copy.ui.on_events = [&] { copy.events.add("events"); };
  for (const std::string& path : {copy.b, std::string()}) {
    copy.desktop.others = 1;
    EXPECT_EQ(copy.run({path}), StartResult::Ended);
    EXPECT_THAT(copy.happened(), ElementsAre("wait 100", "send QV|PI|C=" + path, "events"));
  }
  copy.desktop.others = 1;
  copy.key_values.damage = "no sense";  // does not concern the other copy
  EXPECT_EQ(copy.run({"/startup"}), StartResult::Ended);
  EXPECT_THAT(copy.happened(), ElementsAre());
  copy.key_values.damage.reset();
  copy.desktop.others = 1;
  EXPECT_EQ(copy.run({"--exact", copy.a}), StartResult::Failed) << "the other copy may use classic names";
  EXPECT_THAT(copy.happened(), ElementsAre(::testing::StartsWith("message Quorvel: Quorvel is running already")));
  copy.events.fails = "send";
  copy.desktop.others = 2;
  EXPECT_EQ(copy.run({copy.a}), StartResult::Failed);
  EXPECT_THAT(copy.happened(), ElementsAre("wait 100", "message Quorvel: no send", "events"));
  copy.desktop.others = 1;  // it has ended meanwhile
  EXPECT_EQ(copy.run({copy.a}), StartResult::Running);
  EXPECT_EQ(copy.session.queue.count(), 1);
}

TEST(Startup, EndsWithAMessageWhenAStepFails) {
  const std::string text = "message Error loading Quorvel: Quorvel encountered an error loading and cannot continue. (";
  for (const char* const step : {"open", "receive", "tray", "row", "timer", "centre", "clicks"}) {
    Copy copy;
    copy.events.fails = step;
    EXPECT_EQ(copy.run({step == std::string("row") ? copy.a : "/startup"}), StartResult::Failed);
    Texts events = copy.happened();
    events.erase(events.begin(), events.end() - 5);
    EXPECT_THAT(events, ElementsAre("stop", text + "no " + step + ")", "stop", "no tray", "unload"));
    EXPECT_FALSE(copy.startup.loaded());
  }
  Copy damaged, unstored;
  damaged.key_values.damage = "no sense";
  EXPECT_EQ(damaged.run({}), StartResult::Failed);
  EXPECT_THAT(damaged.happened(), ElementsAre("message Quorvel: no sense", "stop", "no tray", "unload"));
  unstored.key_values.fails = true;
  EXPECT_EQ(unstored.run({unstored.a}), StartResult::Running);
  EXPECT_TRUE(unstored.logged("Unable to store the settings: no room") && unstored.session.queue.count() == 1);
}

TEST(Startup, UnderstandsMessages) {
  Copy copy;
  copy.startup.handle_message("QV|PI|C=" + copy.a);  // kept
  EXPECT_EQ(copy.session.queue.count(), 0);
  copy.run({});
  EXPECT_EQ(copy.session.queue.count(), 1);
  for (const char* const start : {"qv|PI|C=", "QV|XX|C=", "QV|PI|", "PI|C=", "QV|UD", ""}) {
    copy.desktop.handle(start + copy.b);
    EXPECT_EQ(copy.session.queue.count(), 1) << start;
  }
  copy.happened();
  for (const char* const text : {"", "QV|PI|C=", "QV|PI|"}) copy.desktop.handle(text);
  copy.desktop.handle("QV|PI|\xC3\xA9\xFF" + copy.b);  // two characters, whichever
  EXPECT_THAT(copy.happened(), ElementsAre("up", "up", "row b 1x02", "timer"));
  copy.ui.on_events = [&] {
    copy.session.processor.may_close();
    EXPECT_THROW(copy.desktop.handle("QV|PI|C=" + copy.file("c.1x03.avi")), Failure);
  };
  copy.session.processor.process_queue();
  Copy closing;
  closing.run({});
  closing.desktop.is_closing = true;
  EXPECT_THROW(closing.desktop.handle("QV|PI|C=" + closing.a), Failure);
  EXPECT_EQ(copy.session.queue.count() + closing.session.queue.count(), 2);
  copy.desktop.handle("QV|UD|whatever");
  EXPECT_THAT(copy.happened(), ::testing::IsSupersetOf({"stop", "unload"}));
}

TEST(Startup, UninstallTakesBackWhatIsOursAndNothingElse) {
  Copy copy;
  copy.key_values.write_string("types", "ogm;mkv");
  copy.file("data/Quorvel/cache/x.qc");
  const std::string strangers = copy.file("filters.dat"), other = copy.file("data/Other/file");
  const fs::path before = fs::current_path();
  fs::current_path(copy.folder.path());
  copy.desktop.others = 1;
  EXPECT_EQ(copy.run({"/uninstall"}), StartResult::Ended);
  fs::current_path(before);
  EXPECT_THAT(copy.happened(), ElementsAre("remove ogm", "remove mkv", "remove DIR"));
  EXPECT_FALSE(copy.exists("data/Quorvel") || !copy.key_values.texts.empty());
  EXPECT_EQ(fs::exists(strangers), !native::uninstall_clears_current_folder);
  EXPECT_TRUE(fs::exists(other) && fs::exists(copy.a));

  copy.file("data/Quorvel/filters.dat");
  copy.events.fails = "remove";
  copy.key_values.damage = "no sense";
  EXPECT_EQ(copy.run({"/uninstall", "x"}), StartResult::Ended);
  EXPECT_FALSE(copy.exists("data/Quorvel"));
}

TEST(Commands, OpenWhatTheyNameOrSayWhyNot) {
  ProgramCopy copy;
  Commands commands(copy.session, copy.desktop);
  const auto run_all = [&] {
    commands.help();
    commands.website();
    commands.update(18446744073709551615U);
    return copy.happened();
  };
  const std::string site = "https://quorvel.example/?v=3.4", help = help_file(copy.session.places);
  EXPECT_THAT(run_all(), ElementsAre("message Quorvel: Help File not found in program directory", "open " + site,
                                     "message Quorvel: No updater is set up.##New versions can be found at " + site));
  copy.make(help);
  copy.key_values.write_string("website", "http://127.0.0.1/q/");
  copy.key_values.write_string("updater", "/opt/up date");
  const std::string open_help = "open " + help, open_site = "open http://127.0.0.1/q/?v=3.4",
                    update = "/opt/up date|package=Quorvel,apppath=" + (copy.folder / "program") +
                             ",runcount=123,version=3400,handle=18446744073709551615";
  EXPECT_THAT(run_all(), ElementsAre(open_help, open_site, update));
  copy.desktop.launches = false;
  const std::string none = "message Quorvel: There is no program to open this with: ";
  EXPECT_THAT(run_all(), ElementsAre(open_help, none + help, open_site, none + "http://127.0.0.1/q/?v=3.4", update,
                                     "message Quorvel: The updater cannot be started: /opt/up date"));
  EXPECT_EQ(compact_version(3, 4, 99) + compact_version(3, 4, 100) + compact_version(3, 12, 7), "340993410031207");
}

}  // namespace
}  // namespace quorvel::testing
