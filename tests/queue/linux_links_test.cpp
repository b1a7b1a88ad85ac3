#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "session_fixture.h"

namespace quorvel::testing {
namespace {

struct Links : ::testing::Test, TestSession {
  Links() { start(); }
};

TEST_F(Links, AreFollowedOnceAndLoopsEnd) {
  for (const char* sub : {"in/s", "in/s/\"quoted\"", "elsewhere"}) files->create_folder(folder / sub);
  for (const char* name : {"in/x.avi", "in/s/y.mkv", "in/s/\"quoted\"/q.avi", "elsewhere/e.avi"}) write(name, name);
  std::filesystem::create_directory_symlink(folder / "in", folder / "in/s/up");
  std::filesystem::create_directory_symlink(folder.path(), folder / "in/top");
  std::filesystem::create_directory_symlink("s", folder / "in/again");
  std::filesystem::create_directory_symlink(folder / "elsewhere", folder / "in/there");
  std::filesystem::create_symlink("nowhere.avi", folder / "in/dangling.avi");
  EXPECT_EQ(session.intake.take(folder / "in", false).queued, 4);
  std::set<std::string> queued;
  for (int i = 1; i <= session.queue.count(); ++i) queued.insert(item(i).path.substr(folder.path().size()));
  EXPECT_EQ(queued, (std::set<std::string>{"/in/x.avi", "/in/s/y.mkv", "/in/s/\"quoted\"/q.avi", "/in/there/e.avi"}));
}

}  // namespace
}  // namespace quorvel::testing
