#include "fault_world.h"
#include "queue/folder_scan.h"
#include "support/linux/unprivileged.h"

namespace quorvel::testing {
namespace {

TEST(Links, AreFollowedOnceAndLoopsEnd) {
  TestSession test;
  test.start();
  const TemporaryFolder& folder = test.folder;
  for (const char* name : {"in/x.avi", "in/s/\"quoted\".avi", "elsewhere/e.avi"}) test.write(name, "x");
  fs::create_directory_symlink(folder / "in", folder / "in/s/up");
  fs::create_directory_symlink("s", folder / "in/again");
  fs::create_directory_symlink(folder / "elsewhere", folder / "in/there");
  fs::create_symlink("nowhere.avi", folder / "in/dangling.avi");
  fs::create_symlink("x.avi", folder / "in/linked.avi");
  EXPECT_EQ(test.session.intake.take(folder / "in", false).queued, 4);
  std::set<std::string> queued;
  for (int i = 1; i <= 4; ++i) queued.insert(test.item(i).path.substr(folder.path().size()));
  EXPECT_EQ(queued, (std::set<std::string>{"/in/linked.avi", "/in/x.avi", "/in/s/\"quoted\".avi", "/in/there/e.avi"}));

  struct : FaultPlan {  // a file system that numbers all files alike
    std::optional<FileStamp> stamp(const std::string&) const override { return FileStamp(); }
  } const alike;
  EXPECT_EQ(scan_folder(alike, folder / "in/"),
            (std::vector<std::string>{"dangling.avi", "linked.avi", "s/\"quoted\".avi", "x.avi"}));
}

TEST(WithoutATrash, ACopyIsDeletedOnlyWhileItsSourceIsAsItWas) {
  TestSession test;
  test.start();
  const TemporaryFolder there(facts::other_device);
  test.session.filters.at(1).action = CopyAndRename;
  test.session.filters.at(1).path = there / "";
  test.add("the.harbour.lights.s01e02.mkv");
  for (const bool changed : {true, false}) {
    test.session.processor.retry_failed();
    const fs::path source = test.item(1).path, copy = there / test.item(1).new_name;
    if (changed) fs::last_write_time(source, fs::last_write_time(source) + std::chrono::hours(1));
    test.session.undo.run(1);
    EXPECT_EQ(fs::exists(copy), changed);
    fs::remove(copy);
  }
  // A second name of the source is no copy of it.
  fs::create_directory(there / "a");
  write_file(there / "a/the.harbour.lights.s01e03.mkv", "x");
  test.session.intake.add_to_queue(there / "a/the.harbour.lights.s01e03.mkv", false);
  test.session.processor.process_queue();
  const fs::path copy = there / test.item(2).new_name;
  fs::remove(copy);
  fs::create_hard_link(test.item(2).path, copy);
  test.session.undo.run(2);
  EXPECT_TRUE(fs::exists(copy));
}

TEST(DrivesWithWindowsRules, TakeFoldersWithoutTheDotsAtTheirEnd) {
  struct : FaultPlan {
    bool create_folder(const std::string& path) override {
      return !path.ends_with("./") && !path.ends_with(" /") && FaultPlan::create_folder(path);
    }
  } drive;
  const TemporaryFolder here;
  Lines log;
  const bool verify = false;
  const std::string top = here / "", nowhere;
  Journal journal(drive, log, nowhere);
  FileJobs jobs(drive, drive, journal, verify, log);
  EXPECT_EQ(jobs.make_tree(top + "S.H.I.E.L.D./Season 1. /x"), top + "S.H.I.E.L.D/Season 1/x");
  EXPECT_EQ(jobs.make_tree(top + "S.H.I.E.L.D./.../"), top + "S.H.I.E.L.D/.../");
  EXPECT_TRUE(fs::exists(top + "S.H.I.E.L.D/Season 1"));
  EXPECT_EQ(log.list.size(), 3u);
}

TEST(OtherUsers, FilesStayAsTheyAre) {
  if (getuid() != 0) GTEST_SKIP() << "needs a second user";
  for (const int action : {Rename, MoveAndRename, CopyAndRename}) {
    World world{action};
    world.prepare();
    const auto before = world.everything();
    for (const auto& [path, bytes] : before) ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
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
