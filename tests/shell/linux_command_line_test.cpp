#include <gtest/gtest.h>

#include "session_fixture.h"
#include "shell/command_line.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

TEST(CommandLine, TellsSwitchesFromPaths) {
  ProgramCopy copy;
  const std::string here = copy.folder.path(), a = copy.file("a.1x01.mkv"), b = copy.file("b 1x02.avi"),
                    c = copy.file("uninstall/c.mkv"), dashes = copy.file("--uninstall");
  const fs::path before = fs::current_path();
  fs::current_path(here);
  const std::pair<Texts, CommandLine> rows[] = {
      {{}, {}},
      {{"", "/uninstall"}, {true, false, {}}},
      {{"--startup", "a.1x01.mkv", "b 1x02.avi"}, {false, true, {a, b}}},
      {{"--uninstall"}, {false, false, {dashes}}},
      {{"--help", a}, {false, false, {a}, true}},
      {{"/?", "--version"}, {false, false, {}, true, true}},
      {{"./uninstall/c.mkv", here + "/uninstall"}, {false, false, {c, here + "/uninstall"}}},
      {{"/UNINSTALL", "x/uninstall", "/startup2"}, {false, false, {"/UNINSTALL", here + "/x/uninstall", "/startup2"}}},
      {{"b", "1x02.avi"}, {false, false, {b}}},
      {{"\"" + b + "\"", "\"gone.avi\""}, {false, false, {b, here + "/gone.avi"}}},
      {{"file://" + here + "/b%201x02.avi", "FILE://localhost/p%25%fFq%4", "file:///a%00b", "file://host/x"},
       {false, false, {b, "/p%\xFFq%4", here + "/file:/a%00b", here + "/file:/host/x"}}}};
  for (const auto& [arguments, line] : rows) {
    EXPECT_EQ(parse_command_line(arguments, *copy.files, false), line) << ::testing::PrintToString(arguments);
  }
  EXPECT_EQ(parse_command_line({"/x/uninstall", "y/startup"}, *copy.files, true),
            (CommandLine{true, true, {"/x/uninstall y/startup"}}));
  EXPECT_EQ(parse_command_line({c}, *copy.files, true), (CommandLine{false, false, {c}})) << "it exists";
  const auto answer = [&](const char* option) { return answer_to(parse_command_line({option}, *copy.files, false)); };
  EXPECT_TRUE(answer("--version") == "quorvel 3.4.0\n" && answer("--help")->starts_with("Usage: ") && !answer("x"));
  copy.desktop.others = 1;
  EXPECT_EQ(copy.run({b, "/startup", "a.1x01.mkv"}), StartResult::Ended);
  EXPECT_EQ(copy.happened(), (Texts{"wait 100", "send QV|PI|C=" + b, "send QV|PI|C=" + a}));
  fs::current_path(before);
}

}  // namespace
}  // namespace quorvel::testing
