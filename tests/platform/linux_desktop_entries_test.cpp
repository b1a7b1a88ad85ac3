#include "platform/linux/desktop_entries.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "../support/temporary_folder.h"
#include "platform/disk_files.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

std::string contents(const std::string& path) {
  return (std::ostringstream() << std::ifstream(path).rdbuf()).str();
}

void write(const std::string& path, const std::string& text) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream(path) << text;
}

class ProgramPath : public ::testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(DesktopEntries, ProgramPath,
                         ::testing::Values("plain", "it's \"my\" $HOME `x`\\n ü", "100%f a=b `\"\\"));

TEST_P(ProgramPath, IsStartedByValidEntriesThatGoWithoutATrace) {
  const TemporaryFolder folder;
  DiskFiles files;
  const std::string program = folder / GetParam() + "/quorvel";
  write(program, "#!/bin/sh\nfor a; do printf '%s|' \"$a\"; done >'" + (folder / "out") + "'\n");
  fs::permissions(program, fs::perms::owner_all);
  const std::string data = folder / "new/data", entry = data + "/applications/quorvel-open.desktop",
                    menu = data + "/kio/servicemenus/quorvel.desktop", script = data + "/nautilus/scripts/Quorvel";
  for (const char* const extension : {"MKV", "avi", "no such type;\n", "DIR", "avi"}) {
    DesktopEntries(files, data, program).install(extension);
  }
  EXPECT_EQ(std::system(("desktop-file-validate '" + entry + "'").c_str()), 0);
  for (const char* const type : {"video/x-matroska;", "video/x-msvideo;", "inode/directory;", "video/webm;"}) {
    EXPECT_NE(contents(menu).find(type), std::string::npos) << type;
  }
  EXPECT_EQ(contents(menu).find("octet-stream"), std::string::npos);
  EXPECT_EQ(contents(entry).find("MimeType"), std::string::npos);  // or a double click might rename
  EXPECT_EQ(fs::status(menu).permissions() & fs::perms::owner_exec, fs::perms::owner_exec);
  const std::string out = folder / "out", a = folder / "a b.mkv", c = folder / "c.mkv";
  write(a, "x");
  write(c, "x");
  for (const std::string& command :
       {"gio launch '" + entry + "' '" + a + "' '" + c + "'", "'" + script + "' '" + a + "' '" + c + "'"}) {
    fs::remove(out);
    ASSERT_EQ(std::system(command.c_str()), 0);
    while (!contents(out).ends_with("c.mkv|")) continue;  // the started program is not waited for
    EXPECT_EQ(contents(out), a + "|" + c + "|");
  }
  DesktopEntries again(files, data, folder / "moved away");
  again.install("mp4");
  for (const char* const extension : {"mkv", "no such type;\n", "DIR"})
    DesktopEntries(files, data, program).remove(extension);
  EXPECT_NE(contents(menu).find("MimeType=video/x-msvideo;\n"), std::string::npos);
  again.remove("avi");
  EXPECT_FALSE(fs::exists(folder / "new"));
}

TEST(DesktopEntries, LeaveFilesOfOthersAndEditedOnesAlone) {
  const TemporaryFolder folder;
  DiskFiles files;
  const std::string program = folder / "quorvel", entry = folder / "applications/quorvel-open.desktop",
                    menu = folder / "kio/servicemenus/quorvel.desktop", script = folder / "nautilus/scripts/Quorvel";
  write(program, "");
  write(entry, "[Desktop Entry]\n");
  write(folder / "mine", "");
  fs::create_directories(fs::path(script).parent_path());
  fs::create_symlink(folder / "mine", script);
  DesktopEntries entries(files, folder.path(), program);
  entries.install("avi");
  const std::string ours = contents(menu);
  for (const std::string& edited :
       {ours + "\n", ours.substr(1), "#\n" + ours, std::string(ours).replace(ours.find("Name"), 1, "n")}) {
    write(menu, edited);
    entries.install("mkv");
    entries.remove("avi");
    EXPECT_EQ(contents(menu), edited);
  }
  write(menu, ours);
  entries.remove("avi");
  EXPECT_FALSE(fs::exists(folder / "kio"));
  EXPECT_EQ(contents(entry), "[Desktop Entry]\n");
  EXPECT_TRUE(fs::is_symlink(script) && contents(folder / "mine").empty());
}

TEST(DesktopEntries, AreNotSeenAmongTheProgramsBesideAnInstalledOne) {
  const TemporaryFolder folder;
  DiskFiles files;
  const std::string program = folder / "quorvel", entry = folder / "data/applications/quorvel-open.desktop";
  write(program, "");
  DesktopEntries entries(files, folder / "data", program);
  setenv("XDG_DATA_HOME", (folder / "home").c_str(), 1);
  const std::string installed = contents(QUORVEL_DESKTOP_ENTRY);
  EXPECT_EQ(installed.find("MimeType"), std::string::npos);
  write(folder / "home/applications/quorvel.desktop", installed);
  entries.install("avi");
  EXPECT_NE(contents(entry).find("NoDisplay=true"), std::string::npos);
}

}  // namespace
}  // namespace quorvel::testing
