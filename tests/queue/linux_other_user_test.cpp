#include <unistd.h>

#include "fault_world.h"

namespace quorvel::testing {
namespace {

TEST(OtherUsers, FilesStayAsTheyAre) {
  if (getuid() != 0) GTEST_SKIP() << "needs a second user";
  const WorldFolders folders;
  ListingsService service;
  for (const int action : {Rename, MoveAndRename, CopyAndRename}) {
    World world = folders.world(action);
    world.prepare();
    for (const std::string& folder : {world.here, world.there, world.home}) {
      fs::permissions(fs::path(folder).parent_path(), fs::perms(0755));
    }
    // The second user has settings of his own.
    fs::create_directory(world.home + "/settings");
    ASSERT_EQ(chown((world.home + "/settings").c_str(), 65534, 65534), 0);
    const auto all = [&] {
      return std::tuple(everything_in(world.here), everything_in(world.there), everything_in(world.work));
    };
    const auto before = all();
    ASSERT_EQ(setegid(65534) + seteuid(65534), 0);
    FaultPlan plan;
    world.run(plan, service.base());
    EXPECT_GT(plan.calls, 40) << "the run reaches its end";
    ASSERT_EQ(seteuid(0) + setegid(0), 0);
    EXPECT_EQ(all(), before);
  }
}

}  // namespace
}  // namespace quorvel::testing
