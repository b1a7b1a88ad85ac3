#include "program.h"
#include "listings_service.h"
#include "shell/commands.h"

namespace quorvel::testing {

TEST_F(TestWindow, ASecondStartHandsItsFolderOverAndTheUpdaterClosesTheFirst) {
  const ListingsService real;
  setenv("QUORVEL_API_BASE", real.base().c_str(), 1);
  const std::string early = file("harbour.lights.s01e01.avi"), late = file("Lights/harbour.lights.s01e02.avi");
  Program first({early});
  wait_until([&] { return exists("in/The Harbour Lights - 1x01 - Slack Water.avi"); });
  Program second({folder / "in/Lights"});
  EXPECT_EQ(second.status(), 0);
  wait_until([&] { return exists("in/Lights/The Harbour Lights - 1x02 - The Pilot Boat.avi"); });
  EXPECT_EQ(everything_in(folder / "in").size(), 3U);
  const auto channel = system_instance_channel();
  ASSERT_TRUE(channel->other_is_running());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0);
  EXPECT_FALSE(channel->other_is_running());
  const std::string build = std::filesystem::path(QUORVEL_PROGRAM).parent_path();
  EXPECT_TRUE(files->exists(help_file({build, build, {}, {}}))) << "the help that the build has made";
}

}  // namespace quorvel::testing
