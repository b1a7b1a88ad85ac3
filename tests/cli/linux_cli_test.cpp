#include <gtest/gtest.h>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

TEST(LinuxCli, StrangeFilesAreRenamedOrFailAndADamagedSettingsFileIsKept) {
  const TemporaryFolder folder;
  const ListingsService service;
  const auto run = [&] {
    return ChildProcess({.program = QUORVEL_CLI,
                         .arguments = {"."},
                         .folder = folder / "in",
                         .environment = user_at(folder / "home", service.base()),
                         .error = folder / "err"})
        .status();
  };
  fs::create_directories(data_folder_of(folder / "home"));
  fs::create_directory(folder / "in");
  const std::string settings = data_folder_of(folder / "home") + "/settings.ini";
  const std::string episode = folder / "in/the harbour lights 1x0";
  for (const std::string& name : {std::string("5 ") + std::string(227, 'x') + ".mkv", std::string("6.mkv")}) {
    write_file(episode + name, "x");
  }
  write_file(settings, "nonsense");
  EXPECT_EQ(run(), 1);
  EXPECT_NE(contents(folder / "err").find("settings.ini"), std::string::npos);
  EXPECT_EQ(contents(settings), "nonsense");
  EXPECT_TRUE(service.requests().empty());
  fs::remove(settings);

  fs::permissions(episode + "6.mkv", fs::perms::owner_read);
  fs::create_symlink("../home", folder / "in/loop");
  write_file(folder / "elsewhere", "linked");
  fs::create_symlink("../elsewhere", episode + "4.mkv");
  EXPECT_EQ(run(), 0) << contents(folder / "err");
  std::string found;
  for (const auto& [path, bytes] : everything_in(folder / "in")) {
    if (!path.ends_with("loop")) found += path.substr(folder.path().size() + 26) + "=" + bytes + "|";
  }
  EXPECT_EQ(found, "x04 - Salt and Tar.mkv=linked|x05 - The Drowned Letter.mkv=x|x06 - Fog Signal.mkv=x|");
  EXPECT_TRUE(fs::is_symlink(folder / "in/The Harbour Lights - 1x04 - Salt and Tar.mkv"));
}

}  // namespace
}  // namespace quorvel::testing
