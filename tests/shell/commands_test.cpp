#include "shell/commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "program_copy.h"

namespace quorvel::testing {
namespace {

struct Recorder : Launcher {
  explicit Recorder(Events& events) : events(events) {}
  Events& events;
  bool works = true;
  bool open(const std::string& target) override { return events.add("open " + target), works; }
  bool start(const std::string& program, const std::string& argument) override {
    return events.add(program + "|" + argument), works;
  }
};

TEST(Commands, OpenWhatTheyNameOrSayWhyNot) {
  ProgramCopy copy;
  Recorder launcher(copy.events);
  Commands commands(copy.session, launcher);
  const auto run_all = [&] {
    commands.help();
    commands.website();
    commands.update(18446744073709551615U);
    return copy.happened();
  };
  const std::string site = "https://quorvel.example/?v=3.4", help = help_file(copy.session.places);
  EXPECT_THAT(run_all(),
              ::testing::ElementsAre("message Quorvel: Help File not found in program directory", "open " + site,
                                     "message Quorvel: No updater is set up.##New versions can be found at " + site));
  copy.make(help);
  copy.key_values.write_string("website", "http://127.0.0.1/q/");
  copy.key_values.write_string("updater", "/opt/up date");
  const std::string open_help = "open " + help, open_site = "open http://127.0.0.1/q/?v=3.4",
                    update = "/opt/up date|package=Quorvel,apppath=" + (copy.folder / "program") +
                             ",runcount=123,version=3400,handle=18446744073709551615";
  EXPECT_THAT(run_all(), ::testing::ElementsAre(open_help, open_site, update));
  launcher.works = false;
  const std::string none = "message Quorvel: There is no program to open this with: ";
  EXPECT_THAT(run_all(),
              ::testing::ElementsAre(open_help, none + help, open_site, none + "http://127.0.0.1/q/?v=3.4", update,
                                     "message Quorvel: The updater cannot be started: /opt/up date"));
  EXPECT_EQ(compact_version(3, 4, 99) + compact_version(3, 4, 100) + compact_version(3, 12, 7), "340993410031207");
}

}  // namespace
}  // namespace quorvel::testing
