#include <windows.h>

#include <gtest/gtest.h>

#include "platform/windows/wide.h"
#include "session_fixture.h"
#include "shell/command_line.h"

namespace quorvel::testing {
namespace {

TEST(CommandLine, IsOnePathOrTakenApartWhenNothingIsLost) {
  const ProgramCopy copy;
  const std::string a = copy.folder / "a.1x01.mkv", b = copy.folder / "b  1x02.mkv", hidden = copy.folder / "c.mkv";
  for (const std::string& file : {a, b, hidden}) copy.make(file);
  SetFileAttributesW(to_utf16(hidden)->c_str(), FILE_ATTRIBUTE_HIDDEN);
  const std::string quoted = "\"" + b + "\"", gone = absolute_path("gone.mkv");
  const std::pair<std::string, CommandLine> rows[] = {
      {b, {false, false, {b}}},  // as the file manager's menu gives it
      {quoted, {false, false, {b}}},
      {a + " " + quoted, {false, false, {a, b}}},  // as two files dropped on the program are given
      {"/startup " + copy.folder.path() + "\\*.mkv", {false, true, {a, b}}},
      {a + " gone.mkv", {false, false, {a + " gone.mkv"}}},
      {quoted + " gone.mkv --uninstall", {true, false, {b, gone}}},
      {"C:", {false, false, {"C:"}}},
      {"/?", {false, false, {}, true}},
      {"/startup", {false, true, {}}}};
  for (const auto& [text, line] : rows) EXPECT_EQ(parse_command_line({text}, *copy.files), line) << text;
}

}  // namespace
}  // namespace quorvel::testing
