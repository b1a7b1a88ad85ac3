#include "fault_world.h"
#include "support/linux/unprivileged.h"

namespace quorvel::testing {
namespace {

TEST(OtherUsers, FilesStayAsTheyAre) {
  if (getuid() != 0) GTEST_SKIP() << "needs a second user";
  const WorldFolders folders;
  for (const int action : {Rename, MoveAndRename, CopyAndRename}) {
    World world = folders.world(action);
    world.prepare();
    const auto before = world.everything();
    for (const std::string& folder : {world.here, world.there, world.home}) {
      for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        ASSERT_EQ(chown(entry.path().c_str(), 65534, 65534), 0);
      }
    }
    FaultPlan plan;
    {
      const Unprivileged user;
      world.run(plan);
    }
    world.settings(*system_files())->erase_all();  // the second user's own
    EXPECT_GT(plan.calls, 40) << "the run reaches its end";
    EXPECT_EQ(world.everything(), before);
  }
}

}  // namespace
}  // namespace quorvel::testing
