#include "child_process.h"
#include "listings_service.h"
#include "shell/commands.h"
#include "test_window.h"

namespace quorvel::testing {

TEST_F(TestWindow, ASecondStartHandsItsFolderOverAndTheUpdaterClosesTheFirst) {
  const ListingsService real;
  const Variable base("QUORVEL_API_BASE", real.base());
  const ChildProcess asked({.program = QUORVEL_PROGRAM,
                            .arguments = {"--version"},
                            .environment = {{"DISPLAY", ""}},
                            .out = folder / "out"});
  EXPECT_TRUE(asked.status() == 0 && read("out") == "quorvel 3.4.0\n");
  const std::string early = file("harbour.lights.s01e01.avi"), late = file("Lights/harbour.lights.s01e02.avi");
  ChildProcess first({.program = QUORVEL_PROGRAM, .arguments = {early}});
  wait_until([&] { return exists("in/The Harbour Lights - 1x01 - Slack Water.avi"); });
  ChildProcess second({.program = QUORVEL_PROGRAM, .arguments = {folder / "in/Lights"}});
  EXPECT_EQ(second.status(), 0);
  wait_until([&] { return exists("in/Lights/The Harbour Lights - 1x02 - The Pilot Boat.avi"); });
  EXPECT_EQ(everything_in(folder / "in").size(), 3U);
  const auto channel = system_instance_channel("Quorvel", "Quorvel 3.4");
  ASSERT_FALSE(channel->become_running_copy());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0);
  EXPECT_TRUE(channel->become_running_copy());
  const std::string build = std::filesystem::path(QUORVEL_PROGRAM).parent_path();
  EXPECT_TRUE(files->exists(help_file({build, build, {}, {}}))) << "the help that the build has made";
}

}  // namespace quorvel::testing
