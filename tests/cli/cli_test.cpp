#include <gtest/gtest.h>

#include <getopt.h>

#include <regex>

#include "child_process.h"
#include "cli/dry_run.h"
#include "cli/options.h"
#include "file_tools.h"
#include "listings_service.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

using Arguments = std::vector<std::string>;
const std::string good = "The Harbour Lights - 1x0";

/// The built program on real files, with a home of its own, against the stand-in service.
struct Cli : ::testing::Test {
  struct Result {
    int status = -1;
    std::string out, error;
  };
  const TemporaryFolder folder;
  ListingsService service;
  const std::unique_ptr<Files> files = system_files();

  Cli() {
    for (const char* const name : {"home", "in"}) files->create_folder(folder / name);
    settings()->erase_all();
  }
  ~Cli() override { settings()->erase_all(); }
  /// As they are now.
  std::unique_ptr<KeyValueStore> settings() const { return settings_of(*files, folder / "home"); }
  void add(const std::string& name) const { write_file(folder / ("in/" + name), name); }
  std::string in(const std::string& name) const { return files->read(folder / ("in/" + name)).value_or("(missing)"); }
  Start start(const Arguments& arguments) const {
    return {.program = QUORVEL_CLI,
            .arguments = arguments,
            .folder = folder / "in",
            .environment = user_at(folder / "home", service.base() + "/")};
  }
  Result run(const Arguments& arguments) const {
    Start start = this->start(arguments);
    start.out = folder / "out";
    start.error = folder / "err";
    const int status = ChildProcess(start).status();
    return {status, std::regex_replace(contents(start.out), std::regex("\\(\\d+:\\d\\d:\\d\\d( [AP]M)?\\) "), "> "),
            contents(start.error)};
  }
};

TEST_F(Cli, RenamesAFolderAndTellsHowItWent) {
  for (const char* const name : {"The.Harbour.Lights.S01E02.mkv", "nothing.avi", "notes.txt"}) add(name);
  const Result first = run({folder / "in"});
  EXPECT_EQ(first.status, 1);
  EXPECT_EQ(first.out,
            "> Quorvel 3.4 (build 0) started\n> Unable to find filename filter for: nothing.avi\n"
            "> All items processed\n");
  EXPECT_EQ(first.error, folder / "in" + ": 2 files queued, 1 file left out\n" + folder / "in/nothing.avi" +
                             ": Unable to find filename filter\n1 done, 1 failed, 0 cancelled\n");
  EXPECT_EQ(in(good + "2 - The Pilot Boat.mkv"), "The.Harbour.Lights.S01E02.mkv");
  EXPECT_EQ(settings()->read_string(""), "3.4");
  EXPECT_EQ(settings()->read_number("context"), 0u);
  EXPECT_FALSE(settings()->read_string("types") || settings()->read_number("nocache"));

  for (const char* const name : {"The.Harbour.Lights.S01E03.mkv", "a sample.avi"}) add(name);
  const Result second = run({"The.Harbour.Lights.S01E03.mkv", "gone.avi", "a sample.avi", "notes.txt", "",
                             "./The.Harbour.Lights.S01E03.mkv"});
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(second.error,
            "gone.avi: not queued: no such file or folder\na sample.avi: not queued: a sample, as its path says\n"
            "notes.txt: not queued: its type is not listed in the settings\n: not queued: no such file or folder\n"
            "./The.Harbour.Lights.S01E03.mkv: not queued: already queued\n1 done, 0 failed, 0 cancelled\n");
  EXPECT_EQ(service.requests().size(), 2u) << "the second run finds everything in its caches";
  EXPECT_EQ(run({"gone.avi"}).status, 1);
}

TEST_F(Cli, ADryRunTellsEverythingAndChangesNothing) {
  for (const char* const name :
       {"The.Harbour.Lights.S01E02.mkv", "the harbour lights 1x02.mkv", "the harbour lights 1x03.mkv"}) {
    add(name);
  }
  const auto before = everything_in(folder.path());
  const Result result = run(
      {"--dry-run", "The.Harbour.Lights.S01E02.mkv", "the harbour lights 1x02.mkv", "./the harbour lights 1x03.mkv"});
  auto after = everything_in(folder.path());
  for (const char* const made : {"out", "err"}) after.erase(folder / made);
  EXPECT_EQ(after, before);
  const std::string name = " -> " + folder / "in/" + good;
  EXPECT_EQ(result.out, "> Quorvel 3.4 (build 0) started\n" + folder / "in/The.Harbour.Lights.S01E02.mkv" + name +
                            "2 - The Pilot Boat.mkv\n> Unable to rename/move files for: The Harbour Lights - 1x02 - "
                            "The Pilot Boat.mkv\n" +
                            folder / "in/the harbour lights 1x03.mkv" + name +
                            "3 - A Lantern for Maud.mkv\n> All items processed\n");
  EXPECT_TRUE(result.error.ends_with("2 done, 1 failed, 0 cancelled\n"));
  EXPECT_FALSE(settings()->read_string(""));
}

TEST(DryRun, RemembersWhatItWouldHaveDone) {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  std::string told;
  cli::DryRun dry(*files, [&](const std::string& from, const std::string& to) { told += from + ">" + to + ";"; });
  for (const char* const name : {"a", "c"}) write_file(folder / name, name);
  const auto before = everything_in(folder.path());
  using Request = FileOperationRequest;
  EXPECT_NE(dry.perform({Request::Move, folder / "a", folder / "new/b", 0}), 0);
  EXPECT_FALSE(dry.create_folder(folder / "none/new/"));
  EXPECT_TRUE(dry.create_folder(folder / "new/") && !dry.create_folder(folder / "new"));
  EXPECT_EQ(dry.perform({Request::Move, folder / "a", folder / "new/b", 0}), 0);
  EXPECT_TRUE(!dry.exists(folder / "a") && dry.exists(folder / "new/b") && !dry.stamp(folder / "a"));
  EXPECT_NE(dry.perform({Request::Copy, folder / "c", folder / "new/b", 0}), 0);
  EXPECT_EQ(dry.perform({Request::Copy, folder / "c", folder / "a", 0}), 0);
  EXPECT_TRUE(dry.exists(folder / "c") && dry.exists(folder / "a"));
  EXPECT_TRUE(dry.replace(folder / "d", "text") && dry.read(folder / "d") == "text" &&
              dry.stamp(folder / "d")->size == 4);
  const auto stamp = dry.stamp(folder / "d");
  EXPECT_TRUE(dry.replace(folder / "d", "more") && dry.stamp(folder / "d") != stamp && dry.remove(folder / "d"));
  EXPECT_FALSE(dry.read(folder / "d") || dry.read(folder / "new"));
  EXPECT_EQ(dry.perform({Request::Delete, folder / "new", "", 0}), 0);
  EXPECT_FALSE(dry.exists(folder / "new") || dry.exists(folder / "new/x"));
  EXPECT_EQ(told, folder / "a" + ">" + folder / "new/b" + ";" + folder / "c" + ">" + folder / "a" + ";");
  EXPECT_EQ(everything_in(folder.path()), before);
}

TEST(CliOptions, WrongUsageIsRefused) {
  const std::pair<Arguments, std::string> rows[] = {
      {{}, "No path is given"},
      {{"--colour", "x"}, "There is no option --colour"},
      {{"-x", "x"}, "There is no option -x"},
      {{"x", "--set"}, "The option --set lacks its value"},
      {{"--set", "confirm", "x"}, "--set wants NAME=VALUE, not \"confirm\""},
      {{"--set", "speed=9", "x"}, "There is no setting \"speed\""},
      {{"--set", "confirm=yes", "x"}, "--set confirm wants a whole number, not \"yes\""},
      {{"--set", "types=a", "x"}, "--set types wants at least one extension of 3 characters, not \"a\""}};
  for (auto [arguments, reason] : rows) {
    arguments.insert(arguments.begin(), "quorvel-cli");
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    optind = 0;  // the system's parser begins anew
    const auto parsed = cli::parse_options(static_cast<int>(arguments.size()), pointers.data());
    const auto* const ending = std::get_if<cli::Ending>(&parsed);
    ASSERT_NE(ending, nullptr) << reason;
    EXPECT_EQ(ending->text, "quorvel-cli: " + reason + "\nTry quorvel-cli --help.\n");
    EXPECT_EQ(ending->status, 2);
  }
}

TEST_F(Cli, SettingsAndWorkFolderAreReplacedForOneRun) {
  std::filesystem::create_directories(path_of(folder / "mine/cache"));
  write_file(folder / "mine/cache/photo.jpg", "x");
  for (const auto& [work, reason] :
       {std::pair(std::string("nowhere"), "The work folder \"nowhere\" does not exist"),
        {folder / "mine", "photo.jpg\", which is no cache file, so it cannot be used for caches"}}) {
    const Result refused = run({"-w", work, "x"});
    EXPECT_TRUE(refused.status == 2 && refused.out.empty()) << refused.out;
    EXPECT_NE(refused.error.find(reason), std::string::npos) << refused.error;
  }
  EXPECT_FALSE(settings()->read_string(""));
  files->create_folder(folder / "work");
  write_file(folder / "work/filters.dat", "3\tTrue\t\t*\t" + folder / "out-[s]/" + "\t[title]\tAny\t0\t1\r\n");
  add("The.Harbour.Lights.S01E02.ts");
  const Result result = run(
      {"-w", folder / "work", "-v", "--set", "types=ts;m2ts", "--set", "nocache=1", "The.Harbour.Lights.S01E02.ts"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.out.find("> Query cache disabled\n"), std::string::npos);
  EXPECT_EQ(contents(folder / "out-1/The Pilot Boat.ts"), "The.Harbour.Lights.S01E02.ts");
  EXPECT_FALSE(files->exists(folder / "work/cache") || files->exists(data_folder_of(folder / "home") + "/filters.dat"));
  EXPECT_EQ(settings()->read_string(""), "3.4");
  EXPECT_FALSE(settings()->read_string("types") || settings()->read_number("nocache"));
  EXPECT_TRUE(run({"--help"}).out.starts_with("Usage: quorvel-cli"));
  EXPECT_EQ(run({"--version"}).out, "quorvel-cli 3.4.0\n");
}

TEST_F(Cli, WhatEachSystemAllowsInNamesIsRenamedAndAFileOfTheSameNameStays) {
  write_file(folder / ("in/" + good + "5 - The Drowned Letter.mkv"), "there before");
  Arguments names = {"the.harbour.lights.s01e05.mkv"};
  for (const std::string& name : facts::odd_names)
    names.push_back("the harbour lights 1x0" + std::to_string(names.size() + 1) + " " + name);
  for (const std::string& name : names) add(name);
  const Result result = run(names);
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.error.ends_with(std::to_string(facts::odd_names.size()) + " done, 1 failed, 0 cancelled\n"))
      << result.error;
  for (const char* const title : {"2 - The Pilot Boat.avi", "3 - A Lantern for Maud.avi", "4 - Salt and Tar.avi"}) {
    const auto number = static_cast<std::size_t>(title[0] - '1');
    EXPECT_EQ(in(good + title), number < names.size() ? names[number] : "(missing)");
  }
  EXPECT_EQ(in(names[0]), names[0]);
  EXPECT_EQ(in(good + "5 - The Drowned Letter.mkv"), "there before");
}

TEST_F(Cli, ATerminalShowsQuestionsAndProgressAndWithoutOneTheAnswerIsNo) {
  const std::string name = "The.Harbour.Lights.S01E02.mkv";
  const Arguments arguments = {"--set", "confirm=1", name};
  add(name);
  EXPECT_TRUE(run(arguments).error.ends_with("0 done, 0 failed, 1 cancelled\n"));
  for (const auto& [answer, status] : {std::pair("n\n", 1), {"\n", 1}, {"\x03", 1}, {"y\n", 0}}) {
    if (facts::windows && *answer == '\x03') continue;  // Wine goes on reading after an interrupt
    Conversation terminal(start(arguments));
    EXPECT_TRUE(terminal.shows("Confirm File Rename") && terminal.shows("Continue with file rename? [y/N] "));
    terminal.type(answer);
    EXPECT_EQ(terminal.status(), status);
    EXPECT_TRUE(facts::windows || terminal.shows("1 of 1  The.Harbour.Lights.S01E02"));
  }
  EXPECT_EQ(in(good + "2 - The Pilot Boat.mkv"), name);
}

TEST_F(Cli, AnInterruptEndsTheStageAndASecondTheTransfer) {
  for (const char* const name : {"The.Harbour.Lights.S01E02.mkv", "The.Harbour.Lights.S01E03.mkv"}) add(name);
  service.slow_down(std::chrono::milliseconds(20));
  Conversation terminal(start({"."}));
  EXPECT_TRUE(terminal.shows("1 of 2"));
  terminal.type("\x03\x03");
  EXPECT_TRUE(terminal.shows("Got quit signal, finishing up..."));
  EXPECT_TRUE(terminal.shows("Unable to find show page for: the harbour lights"));
  EXPECT_TRUE(terminal.shows("0 done, 1 failed, 0 cancelled, 1 not processed"));
  EXPECT_EQ(terminal.status(), 1);
}

}  // namespace
}  // namespace quorvel::testing
