#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "cli_fixture.h"
#include "support/linux/become.h"

namespace quorvel::testing {
namespace {

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
  const Result result = run({"."});
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
  const Result damaged = run({"."});
  EXPECT_EQ(damaged.status, 1);
  EXPECT_NE(damaged.error.find("settings.ini"), std::string::npos);
  EXPECT_EQ(contents(folder / "home/.config/Quorvel/settings.ini"), "nonsense");
  EXPECT_TRUE(service.requests().empty());
}

/// A conversation on a terminal: everything that was shown, with `answer` typed once `prompt` has been.
std::string converse(const Start& start, const std::string& prompt, const std::string& answer, int& status) {
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) become(start);
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
  const Arguments arguments = {"--set", "confirm=1", "The.Harbour.Lights.S01E02.mkv"};
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
  const Result without = run({"--set", "confirm=1", "The.Harbour.Lights.S01E03.mkv"});
  EXPECT_TRUE(without.error.ends_with("0 done, 0 failed, 1 cancelled\n")) << "without a terminal the answer is no";
}

TEST_F(Cli, AnInterruptEndsTheStageAndASecondTheTransfer) {
  for (const char* name : {"The.Harbour.Lights.S01E02.mkv", "The.Harbour.Lights.S01E03.mkv"}) add(name);
  service.slow_down(std::chrono::milliseconds(20));
  int status = -1;
  const std::string shown = converse(command({"."}), "1 of 2", "\x03\x03", status);
  EXPECT_EQ(status, 1);
  EXPECT_NE(shown.find("Got quit signal, finishing up..."), std::string::npos) << shown;
  EXPECT_NE(shown.find("Unable to find show page for: the harbour lights"), std::string::npos) << shown;
  EXPECT_NE(shown.find("0 done, 1 failed, 0 cancelled, 1 not processed"), std::string::npos) << shown;
}

}  // namespace
}  // namespace quorvel::testing
