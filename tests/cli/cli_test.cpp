#include "cli/dry_run.h"
#include "cli_fixture.h"
#include "system_facts.h"

namespace quorvel::testing {
namespace {

TEST_F(Cli, RenamesAFolderAndTellsHowItWent) {
  add("The.Harbour.Lights.S01E02.mkv");
  add("nothing.avi");
  add("notes.txt");
  const Result result = run({folder / "in"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out,
            "> Quorvel 3.4 (build 0) started\n> Unable to find filename filter for: nothing.avi\n"
            "> All items processed\n");
  EXPECT_EQ(result.error, folder / "in" + ": 2 files queued, 1 file left out\n" + folder / "in/nothing.avi" +
                              ": Unable to find filename filter\n1 done, 1 failed, 0 cancelled\n");
  EXPECT_TRUE(exists("in/The Harbour Lights - 1x02 - The Pilot Boat.mkv"));
  expect_first_settings();

  add("The.Harbour.Lights.S01E03.mkv");
  const Result again = run({"The.Harbour.Lights.S01E03.mkv"});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.error, "1 done, 0 failed, 0 cancelled\n");
  EXPECT_EQ(service.requests().size(), 2u) << "the second run finds everything in its caches";
}

TEST_F(Cli, ADryRunTellsEverythingAndChangesNothing) {
  for (const char* name :
       {"The.Harbour.Lights.S01E02.mkv", "the harbour lights 1x02.mkv", "the harbour lights 1x03.mkv"}) {
    add(name);
  }
  const auto before = everything_in(folder.path());
  const Result result = run(
      {"--dry-run", "The.Harbour.Lights.S01E02.mkv", "the harbour lights 1x02.mkv", "./the harbour lights 1x03.mkv"});
  auto after = everything_in(folder.path());
  after.erase(folder / "out");
  after.erase(folder / "err");
  EXPECT_EQ(after, before);
  const std::string name = " -> " + folder / "in/The Harbour Lights - 1x0";
  EXPECT_EQ(result.out, "> Quorvel 3.4 (build 0) started\n" + folder / "in/The.Harbour.Lights.S01E02.mkv" + name +
                            "2 - The Pilot Boat.mkv\n> Unable to rename/move files for: The Harbour Lights - 1x02 - "
                            "The Pilot Boat.mkv\n" +
                            folder / "in/the harbour lights 1x03.mkv" + name +
                            "3 - A Lantern for Maud.mkv\n> All items processed\n");
  EXPECT_TRUE(result.error.ends_with("2 done, 1 failed, 0 cancelled\n"));
  EXPECT_EQ(service.requests().size(), 2u);
}

TEST_F(Cli, RefusedPathsAreNamedWithTheirReason) {
  add("a sample.avi");
  add("b.txt");
  add("The.Harbour.Lights.S01E02.mkv");
  const Result result = run(
      {"missing.avi", "a sample.avi", "b.txt", "", "The.Harbour.Lights.S01E02.mkv", "./The.Harbour.Lights.S01E02.mkv"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error,
            "missing.avi: not queued: no such file or folder\na sample.avi: not queued: a sample, as its path says\n"
            "b.txt: not queued: its type is not listed in the settings\n: not queued: no such file or folder\n"
            "./The.Harbour.Lights.S01E02.mkv: not queued: already queued\n1 done, 0 failed, 0 cancelled\n");
  EXPECT_EQ(run({"missing.avi"}).status, 1);
}

TEST_F(Cli, WrongUsageIsRefusedBeforeAnythingHappens) {
  std::filesystem::create_directories(path_of(folder / "mine/cache"));
  write_file(folder / "mine/cache/photo.jpg", "x");
  const std::pair<Arguments, const char*> cases[] = {
      {{}, "No path is given"},
      {{"--colour", "x"}, "There is no option --colour"},
      {{"-x", "x"}, "There is no option -x"},
      {{"x", "--set"}, "The option --set lacks its value"},
      {{"--set", "confirm", "x"}, "--set wants NAME=VALUE, not \"confirm\""},
      {{"--set", "speed=9", "x"}, "There is no setting \"speed\""},
      {{"--set", "confirm=yes", "x"}, "--set confirm wants a whole number, not \"yes\""},
      {{"--set", "types=a", "x"}, "--set types wants at least one extension of 3 characters, not \"a\""},
      {{"-w", "nowhere", "x"}, "The work folder \"nowhere\" does not exist"},
      {{"-w", folder / "mine", "x"}, "photo.jpg\", which is no cache file, so it cannot be used for caches"}};
  for (const auto& [arguments, reason] : cases) {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 2) << reason;
    EXPECT_NE(result.error.find(reason), std::string::npos) << result.error;
    EXPECT_EQ(result.out, "");
  }
  EXPECT_TRUE(run({"--help"}).out.starts_with("Usage: quorvel-cli"));
  EXPECT_EQ(run({"--version"}).out, "quorvel-cli 3.4.0\n");
  EXPECT_FALSE(settings()->read_string(""));
}

TEST_F(Cli, SettingsAndWorkFolderAreReplacedForOneRun) {
  files->create_folder(folder / "work");
  write_file(folder / "work/filters.dat", "3\tTrue\t\t*\t" + folder / "out-[s]/" + "\t[title]\tAny\t0\t1\r\n");
  add("The.Harbour.Lights.S01E02.ts");
  const Result result = run(
      {"-w", folder / "work", "-v", "--set", "types=ts;m2ts", "--set", "nocache=1", "The.Harbour.Lights.S01E02.ts"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.out.find("> Query cache disabled\n"), std::string::npos);
  EXPECT_EQ(contents(folder / "out-1/The Pilot Boat.ts"), "The.Harbour.Lights.S01E02.ts");
  EXPECT_FALSE(exists("work/cache") || files->exists(data_folder_of(folder / "home")));
  expect_first_settings();
}

TEST(DryRun, RemembersWhatItWouldHaveDone) {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  std::string told;
  cli::DryRun dry(*files, [&](const std::string& from, const std::string& to) { told += from + ">" + to + ";"; });
  write_file(folder / "a", "a");
  using Request = FileOperationRequest;
  EXPECT_NE(dry.perform({Request::Move, folder / "a", folder / "new/b", 0}), 0);
  EXPECT_TRUE(dry.create_folder(folder / "new/"));
  EXPECT_EQ(dry.perform({Request::Move, folder / "a", folder / "new/b", 0}), 0);
  EXPECT_FALSE(dry.exists(folder / "a"));
  EXPECT_NE(dry.perform({Request::Copy, folder / "c", folder / "new/b", 0}), 0);
  EXPECT_TRUE(dry.replace(folder / "d", "text"));
  EXPECT_EQ(dry.read(folder / "d"), "text");
  EXPECT_EQ(dry.perform({Request::Delete, folder / "new", "", 0}), 0);
  EXPECT_FALSE(dry.exists(folder / "new/x"));
  EXPECT_EQ(told, folder / "a" + ">" + folder / "new/b" + ";");
  EXPECT_EQ(everything_in(folder.path()).size(), 1u);
}

TEST_F(Cli, WhatEachSystemAllowsInNamesIsRenamed) {
  for (const std::string& name : facts::odd_names) {
    const std::string episode = "the harbour lights 1x02 " + name;
    add(episode);
    const Result result = run({episode});
    EXPECT_EQ(result.status, 0) << result.error;
    const std::string good = folder / "in/The Harbour Lights - 1x02 - The Pilot Boat.avi";
    EXPECT_EQ(files->read(good), episode);
    EXPECT_TRUE(files->remove(good));
  }
}

TEST_F(Cli, AFileOfTheSameNameStays) {
  const std::string good = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  write_file(folder / ("in/" + good), "there before");
  add("the.harbour.lights.s01e02.mkv");
  EXPECT_EQ(run({"the.harbour.lights.s01e02.mkv"}).status, 1);
  EXPECT_EQ(contents(folder / ("in/" + good)), "there before");
  EXPECT_TRUE(exists("in/the.harbour.lights.s01e02.mkv"));
}

}  // namespace
}  // namespace quorvel::testing
