#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "child_process.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

/// Writes what it was given into the file that this begins with, whole at once.
const SecondProcess note("note", [](const std::string& given) {
  return system_files()->replace(given.substr(0, given.find('|')), given) ? 0 : 1;
});

TEST(Launcher, StartsProgramsWithTheArgumentAsItStands) {
  const TemporaryFolder folder;
  const std::unique_ptr<Launcher> launcher = system_launcher();
  const std::string out = folder / "out", page = folder / "page.html";
  write_file(page, "x");
  // On Windows a program takes its command line apart by itself.
  const std::string text = out + (facts::windows ? "|$(y)'z'%1" : "|Q,x=\"1 2\" $(y) 'z'");
  EXPECT_TRUE(launcher->start(program_file(), note.argument(text)));
  while (contents(out).empty()) std::this_thread::yield();
  EXPECT_EQ(contents(out), text);
  for (const std::string& program : {std::string("quorvel-tests"), std::string("cmd.exe"), std::string(), page,
                                     folder / "none.exe", folder.path()}) {
    EXPECT_FALSE(launcher->start(program, "x")) << program;
  }
  EXPECT_FALSE(launcher->start(program_file(), std::string("a\0b", 3)));
}

TEST(Launcher, OpensNothingThatWouldRunAndNoOtherAddresses) {
  const TemporaryFolder folder;
  for (const char* const name : {"program", "program.exe", "a.desktop", "page.html"}) write_file(folder / name, "x");
  permissions(path_of(folder / "program"), std::filesystem::perms::owner_all);
  permissions(path_of(folder / "program.exe"), std::filesystem::perms::owner_all);
  for (const std::string& refused :
       {"file://" + folder / "page.html", std::string("javascript:1"), std::string("smb://127.0.0.1/x"),
        std::string("page.html"), std::string("http:///x"), std::string("https://"), std::string("http://a\nb"),
        std::string("\"\""), std::string(), std::string("\"\"http://127.0.0.1/\"\""), folder / "none.html",
        folder / "program", folder / "program.exe", "\"" + folder / "program.exe" + "\"", folder / "a.desktop",
        folder / "page.html/x"}) {
    EXPECT_FALSE(system_launcher()->open(refused)) << refused;
  }
}

}  // namespace
}  // namespace quorvel::testing
