#include "program.h"
#include "shell/commands.h"

namespace quorvel::testing {

TEST_F(TestWindow, ASecondStartHandsItsFolderOverAndTheUpdaterClosesTheFirst) {
  setenv("QUORVEL_API_BASE", service.base().c_str(), 1);
  const std::string early = file("harbour.lights.s01e01.avi"), late = file("Lights/harbour.lights.s01e02.avi");
  Program first({early});
  wait_until([&] { return !std::filesystem::exists(early); });
  Program second({path("in/Lights")});
  EXPECT_EQ(second.status(), 0);
  wait_until([&] { return !std::filesystem::exists(late); });
  EXPECT_TRUE(exists("in/The Harbour Lights - 1x01 - Slack Water.avi"));
  const auto renamed = text_of(std::filesystem::directory_iterator(folder / "in/Lights")->path().filename());
  EXPECT_TRUE(renamed.starts_with("The Harbour Lights - 1x02 - ")) << renamed;
  const auto channel = system_instance_channel();
  ASSERT_TRUE(channel->other_is_running());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0);
  EXPECT_FALSE(channel->other_is_running());
}

TEST(TheProgram, FindsTheHelpThatTheBuildHasMade) {
  const std::string folder = std::filesystem::path(QUORVEL_PROGRAM).parent_path();
  EXPECT_TRUE(system_files()->exists(help_file({folder, folder, {}, {}})));
}

}  // namespace quorvel::testing
