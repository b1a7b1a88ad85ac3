#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <regex>

#include "cli/dry_run.h"
#include "file_tools.h"
#include "session_fixture.h"

namespace quorvel::testing {
namespace {

struct Result {
  int status = -1;
  std::string out, error;
};

/// The built program on real files, with a home of its own, against the stand-in service.
struct Cli : ::testing::Test {
  TemporaryFolder folder;
  ListingsService service;
  std::string environment, api_base = service.base();

  Cli() {
    std::filesystem::create_directory(folder / "home");
    std::filesystem::create_directory(folder / "in");
  }
  void add(const std::string& name) { write_file(folder / ("in/" + name), name); }
  std::string command(const std::string& arguments) const {
    return "cd " + folder / "in" + " && exec env -i PATH=/usr/bin:/bin HOME=" + folder / "home" +
           " LC_ALL=C.UTF-8 QUORVEL_API_BASE=" + api_base + "/ " + environment + " " + QUORVEL_CLI + " " + arguments;
  }
  Result run(const std::string& arguments) const {
    const std::string redirected = command(arguments) + " >" + folder / "out" + " 2>" + folder / "err" + " </dev/null";
    Result result;
    result.status = WEXITSTATUS(std::system(redirected.c_str()));
    result.out = std::regex_replace(contents(folder / "out"), std::regex("\\(\\d\\d:\\d\\d:\\d\\d\\) "), "> ");
    result.error = contents(folder / "err");
    return result;
  }
};

TEST_F(Cli, RenamesAFolderAndTellsHowItWent) {
  add("The.Harbour.Lights.S01E02.mkv");
  add("nothing.avi");
  add("notes.txt");
  const Result result = run("../in");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out,
            "> Quorvel 3.4 (build 0) started\n> Unable to find filename filter for: nothing.avi\n"
            "> All items processed\n");
  EXPECT_EQ(result.error, "../in: 2 files queued, 1 file left out\n" + folder / "in/nothing.avi" +
                              ": Unable to find filename filter\n1 done, 1 failed, 0 cancelled\n");
  EXPECT_TRUE(std::filesystem::exists(folder / "in/The Harbour Lights - 1x02 - The Pilot Boat.mkv"));
  EXPECT_EQ(contents(folder / "home/.config/Quorvel/settings.ini"), "[Settings]\nversion=3.4\ncontext=0\n");

  add("The.Harbour.Lights.S01E03.mkv");
  const Result again = run("The.Harbour.Lights.S01E03.mkv");
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
  const Result result = run("--dry-run The.Harbour.Lights.S01E02.mkv 'the harbour lights 1x02.mkv' ./the*x03.mkv");
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
  const Result result = run("missing.avi 'a sample.avi' b.txt '' The*mkv ./The*mkv /dev/null");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error,
            "missing.avi: not queued: no such file or folder\na sample.avi: not queued: a sample, as its path says\n"
            "b.txt: not queued: its type is not listed in the settings\n: not queued: no such file or folder\n"
            "./The.Harbour.Lights.S01E02.mkv: not queued: already queued\n"
            "/dev/null: not queued: neither a file nor a folder\n1 done, 0 failed, 0 cancelled\n");
  EXPECT_EQ(run("missing.avi").status, 1);
}

TEST_F(Cli, WrongUsageIsRefusedBeforeAnythingHappens) {
  std::filesystem::create_directories(folder / "mine/cache");
  write_file(folder / "mine/cache/photo.jpg", "x");
  const std::pair<const char*, const char*> cases[] = {
      {"", "No path is given"},
      {"--colour x", "There is no option --colour"},
      {"-x x", "There is no option -x"},
      {"x --set", "The option --set lacks its value"},
      {"--set confirm x", "--set wants NAME=VALUE, not \"confirm\""},
      {"--set speed=9 x", "There is no setting \"speed\""},
      {"--set confirm=yes x", "--set confirm wants a whole number, not \"yes\""},
      {"--set types=a x", "--set types wants at least one extension of 3 characters, not \"a\""},
      {"-w nowhere x", "The work folder \"nowhere\" does not exist"},
      {"-w ../mine x", "photo.jpg\", which is no cache file, so it cannot be used for caches"}};
  for (const auto& [arguments, reason] : cases) {
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 2) << arguments;
    EXPECT_NE(result.error.find(reason), std::string::npos) << result.error;
    EXPECT_EQ(result.out, "");
  }
  EXPECT_TRUE(run("--help").out.starts_with("Usage: quorvel-cli"));
  EXPECT_EQ(run("--version").out, "quorvel-cli 3.4.0\n");
  EXPECT_FALSE(std::filesystem::exists(folder / "home/.config"));
}

TEST_F(Cli, SettingsAndWorkFolderAreReplacedForOneRun) {
  std::filesystem::create_directory(folder / "work");
  write_file(folder / "work/filters.dat", "3\tTrue\t\t*\t" + folder / "out-[s]/" + "\t[title]\tAny\t0\t1\r\n");
  add("The.Harbour.Lights.S01E02.ts");
  const Result result = run("-w ../work -v --set 'types=ts;m2ts' --set nocache=1 The.Harbour.Lights.S01E02.ts");
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_NE(result.out.find("> Query cache disabled\n"), std::string::npos);
  EXPECT_EQ(contents(folder / "out-1/The Pilot Boat.ts"), "The.Harbour.Lights.S01E02.ts");
  EXPECT_FALSE(std::filesystem::exists(folder / "work/cache"));
  EXPECT_FALSE(std::filesystem::exists(folder / "home/.local"));
  EXPECT_EQ(contents(folder / "home/.config/Quorvel/settings.ini"), "[Settings]\nversion=3.4\ncontext=0\n");
}

TEST_F(Cli, StrangeNamesAreRenamedOrFailAndAreNeverLost) {
  const std::string longest = "the harbour lights 1x05 " + std::string(227, 'x') + ".mkv";
  for (const std::string& name :
       {std::string("the harbour lights 1x02 caf\xE9.mkv"), std::string("the harbour lights 1x03\n\"q\".mkv"), longest,
        std::string("the harbour lights 1x06.mkv")}) {
    add(name);
  }
  std::filesystem::permissions(folder / "in/the harbour lights 1x06.mkv", std::filesystem::perms::owner_read);
  std::filesystem::create_symlink("../home", folder / "in/loop");
  write_file(folder / "elsewhere", "linked");
  std::filesystem::create_symlink("../elsewhere", folder / "in/the harbour lights 1x04.mkv");
  const Result result = run(".");
  EXPECT_EQ(result.status, 0) << result.error;
  std::string found;
  for (const auto& [path, bytes] : everything_in(folder / "in")) {
    if (!path.ends_with("loop")) found += path.substr(folder.path().size() + 26) + "|";
  }
  EXPECT_EQ(found,
            "x02 - The Pilot Boat.mkv|x03 - A Lantern for Maud.mkv|x04 - Salt and Tar.mkv|"
            "x05 - The Drowned Letter.mkv|x06 - Fog Signal.mkv|");
  EXPECT_EQ(contents(folder / "in/The Harbour Lights - 1x04 - Salt and Tar.mkv"), "linked");
}

TEST_F(Cli, ADamagedSettingsFileIsNamedAndKept) {
  add("The.Harbour.Lights.S01E02.mkv");
  std::filesystem::create_directories(folder / "home/.config/Quorvel");
  write_file(folder / "home/.config/Quorvel/settings.ini", "nonsense");
  const Result damaged = run(".");
  EXPECT_EQ(damaged.status, 1);
  EXPECT_NE(damaged.error.find("settings.ini"), std::string::npos);
  EXPECT_EQ(contents(folder / "home/.config/Quorvel/settings.ini"), "nonsense");
  EXPECT_TRUE(service.requests().empty());
}

TEST_F(Cli, TlsIsSpokenWithTheAuthorityOfTheEnvironment) {
  const TestAuthority authority;
  const ListingsService secure(authority.issue("localhost"));
  write_file(folder / "ca.pem", authority.pem());
  api_base = secure.base();
  add("The.Harbour.Lights.S01E02.mkv");
  EXPECT_EQ(run(".").status, 1) << "nobody vouches for it";
  environment = "SSL_CERT_FILE=" + folder / "ca.pem";
  EXPECT_EQ(run(".").status, 0);
}

/// A conversation on a terminal: everything that was shown, with `answer` typed once `prompt` has been.
std::string converse(const std::string& command, const std::string& prompt, const std::string& answer, int& status) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) _exit(execl("/bin/sh", "sh", "-c", command.c_str(), nullptr));
  std::string shown;
  bool answered = false;
  std::array<char, 4096> buffer{};
  for (ssize_t count; (count = ::read(terminal, buffer.data(), buffer.size())) > 0;) {
    shown.append(buffer.data(), static_cast<std::size_t>(count));
    if (answered || shown.find(prompt) == std::string::npos) continue;
    answered = true;
    EXPECT_EQ(::write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
  }
  waitpid(child, &status, 0);
  close(terminal);
  status = WEXITSTATUS(status);
  return shown;
}

TEST_F(Cli, OnATerminalItAsksAndShowsItsProgress) {
  const std::string arguments = "--set confirm=1 The.Harbour.Lights.S01E02.mkv";
  for (const auto& [answer, expected] :
       {std::pair("n\n", 1), std::pair("\n", 1), std::pair("\x03", 1), std::pair("y\n", 0)}) {
    add("The.Harbour.Lights.S01E02.mkv");
    int status = -1;
    const std::string shown = converse(command(arguments), "Continue with file rename? [y/N] ", answer, status);
    EXPECT_EQ(status, expected) << shown;
    EXPECT_NE(shown.find("1 of 1  The.Harbour.Lights.S01E02"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Confirm File Rename\r\n  " + folder / "in/The.Harbour.Lights.S01E02.mkv\r\n"),
              std::string::npos);
  }
  add("The.Harbour.Lights.S01E03.mkv");
  const Result without = run("--set confirm=1 The.Harbour.Lights.S01E03.mkv");
  EXPECT_TRUE(without.error.ends_with("0 done, 0 failed, 1 cancelled\n")) << "without a terminal the answer is no";
}

TEST_F(Cli, AnInterruptEndsTheStageAndASecondTheTransfer) {
  for (const char* name : {"The.Harbour.Lights.S01E02.mkv", "The.Harbour.Lights.S01E03.mkv"}) add(name);
  service.misbehave(scripts::slow(std::chrono::milliseconds(20)));
  int status = -1;
  const std::string shown = converse(command("."), "1 of 2", "\x03\x03", status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(shown.find("Got quit signal, finishing up..."), std::string::npos) << shown;
  EXPECT_NE(shown.find("Unable to find show page for: the harbour lights"), std::string::npos) << shown;
  EXPECT_NE(shown.find("0 done, 1 failed, 0 cancelled, 1 not processed"), std::string::npos) << shown;
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

}  // namespace
}  // namespace quorvel::testing
