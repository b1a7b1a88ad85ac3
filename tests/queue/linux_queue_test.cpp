#include "fault_world.h"
#include "queue/folder_scan.h"
#include "support/linux/unprivileged.h"

namespace quorvel::testing {
namespace {

TEST(Folders, AreLookedAtWithoutTheirLinksAndWhatIsMissedIsTold) {
  TestSession test;
  test.start();
  const TemporaryFolder& folder = test.folder;
  for (const char* name : {"in/x.avi", "in/s/\"quoted\".avi", "elsewhere/e.avi"}) test.write(name, "x");
  fs::create_directory_symlink(folder / "in", folder / "in/s/up");
  fs::create_directory_symlink(folder.path(), folder / "in/s/above");
  fs::create_directory_symlink("s", folder / "in/again");
  fs::create_directory_symlink(folder / "elsewhere", folder / "in/there");
  fs::create_symlink("nowhere.avi", folder / "in/dangling.avi");
  fs::create_symlink("x.avi", folder / "in/linked.avi");
  const FolderScan scan = scan_folder(*test.files, folder / "in/");
  EXPECT_EQ(scan.files, (std::vector<std::string>{"dangling.avi", "linked.avi", "s/\"quoted\".avi", "x.avi"}));
  EXPECT_EQ(scan.ways_out, (std::vector<std::string>{"s/above", "there"}));
  const IntakeResult taken = test.session.intake.take(folder / "in", false);
  EXPECT_TRUE(taken.queued == 3 && taken.left_out == 1 && taken.unread == 0);
  EXPECT_TRUE(test.log().ends_with("|The link " + folder / "in/s/above" +
                                   " leads out of the folder that was added, so it is not followed|The link " +
                                   folder / "in/there" +
                                   " leads out of the folder that was added, so it is not followed"))
      << test.log();
  EXPECT_EQ(test.session.intake.take(folder / "in/there", false).queued, 1) << "the user's own choice";

  const fs::path before = fs::current_path(), name(std::string(200, 'd'));
  fs::create_directory(folder / "deep");
  fs::current_path(folder / "deep");
  for (int i = 0; i < 25; ++i) {  // from within, deeper than any path may be
    for (const std::string& file : {std::string("a.s01e01.avi"), name.string() + ".avi"}) write_file(file, "x");
    fs::create_directory(name);
    fs::current_path(name);
  }
  fs::current_path(before);
  const IntakeResult deep = test.session.intake.take(folder / "deep", false);
  EXPECT_TRUE(deep.queued > 30 && deep.queued < 50 && deep.left_out > 0 && deep.unread == 1) << deep.queued;
  EXPECT_NE(test.log().find(name.string() + ".avi cannot be reached, so it is left out|"), std::string::npos);
  EXPECT_TRUE(test.session.log.lines().back().ends_with(" cannot be read, so files in it may be left out"));
}

TEST(ACacheThatIsALink, IsNotUsedAndWhatItLeadsToStays) {
  TestSession test;
  test.write("elsewhere/old.qc", "x"), test.write("data/Quorvel/work", "");
  fs::create_directory_symlink(test.folder / "elsewhere", test.work_dir() + "cache");
  test.key_values.texts[""] = "3.1";
  test.start();
  const std::string cache = "The folder " + test.work_dir() + "cache is ";
  EXPECT_TRUE(test.logged(cache + "a link, so nothing is kept in it") && test.logged(cache + "kept, for it is a link"));
  test.add("the.harbour.lights.s01e02.mkv");
  test.session.processor.process_queue();
  EXPECT_EQ(everything_in(test.folder / "elsewhere").size(), 1u) << test.log();
  EXPECT_EQ(test.read("elsewhere/old.qc"), "x");
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
  Events events;
  const FakeClock clock(events);
  History history(drive, clock, log, nowhere);
  FileJobs jobs(drive, drive, journal, history, verify, log);
  EXPECT_EQ(jobs.make_tree(top + "S.H.I.E.L.D./Season 1. /x"), top + "S.H.I.E.L.D/Season 1/x");
  EXPECT_EQ(jobs.make_tree(top + "S.H.I.E.L.D./.../"), top + "S.H.I.E.L.D/.../");
  EXPECT_TRUE(fs::exists(top + "S.H.I.E.L.D/Season 1"));
  EXPECT_EQ(log.list.size(), 3u);
}

TEST(OtherUsers, FilesStayAsTheyAre) {
  if (getuid() != 0) GTEST_SKIP() << "needs a second user";
  const TemporaryFolder here;
  write_file(here / "shared", "theirs");
  ASSERT_EQ(chown((here / "shared").c_str(), 65534, 65534), 0);
  fs::permissions(here / "shared", fs::perms(0672));
  {
    const Unprivileged user;
    EXPECT_TRUE(system_files()->replace(here / "shared", "mine"));
  }
  EXPECT_EQ(fs::status(here / "shared").permissions(), fs::perms(0622)) << "our group gets no more than everybody";
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
