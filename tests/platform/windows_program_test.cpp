#include <gtest/gtest.h>

#include "listings_service.h"
#include "platform/system.h"
#include "platform/windows/registry.h"
#include "temporary_folder.h"
#include "windows_process.h"

namespace quorvel::testing {
namespace {

struct WindowsProgram : ::testing::Test {
  const std::string programs = QUORVEL_PROGRAMS;
  TemporaryFolder folder;
  ListingsService service;
  const Variable base{L"QUORVEL_API_BASE", service.base()}, data{L"APPDATA", folder / "data"};
  const std::unique_ptr<Files> files = system_files();

  WindowsProgram() { files->create_folder(folder / "data"), files->create_folder(folder / "in"); }
  std::string file(const std::string& name) {
    EXPECT_TRUE(files->replace(folder / ("in/" + name), name));
    return folder / ("in/" + name);
  }
};

TEST_F(WindowsProgram, TheTerminalProgramRenamesWhatItIsGivenAndKeepsASecondFileOfTheSameName) {
  const std::string first = file("café lights é.s01e02.mkv"), taken = file("harbour.lights.s01e02.mkv");
  const std::string other = file("sub harbour.lights.1x02.mkv"), none = folder / "in/n*.mkv";
  const std::string good = folder / "in/The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  const std::string program = programs + "/quorvel-cli.exe", work = " --work-dir \"" + (folder / "data") + "\" ";
  EXPECT_EQ(Process(program, work + "--dry-run \"" + taken + "\"").status(), 0u);
  EXPECT_TRUE(files->exists(taken));
  EXPECT_EQ(Process(program, work + "\"" + taken + "\"").status(), 0u);
  EXPECT_EQ(files->read(good), "harbour.lights.s01e02.mkv");
  file("harbour.lights.s01e02.mkv");
  EXPECT_EQ(Process(program, work + "\"" + taken + "\" \"" + none + "\"").status(), 1u);  // no question, no harm
  EXPECT_EQ(files->read(good), "harbour.lights.s01e02.mkv");
  EXPECT_TRUE(files->exists(taken) && files->exists(first) && files->exists(other));
  EXPECT_TRUE(files->exists(folder / "data/cache"));
  EXPECT_EQ(Process(program, "--nonsense").status(), 2u);
}

}  // namespace
}  // namespace quorvel::testing
