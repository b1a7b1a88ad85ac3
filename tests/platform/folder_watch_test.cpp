#include <gtest/gtest.h>

#include <algorithm>

#include "naming/file_names.h"
#include "platform/system.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

struct FolderWatchTest : ::testing::Test {
  const TemporaryFolder folder;
  const std::string top = folder / "top/";
  const std::unique_ptr<FolderWatch> notices = system_folder_watch();

  FolderWatchTest() { create(top); }
  static void create(const std::string& path) { std::filesystem::create_directory(path_of(path)); }
  /// Waits for it.
  bool tells(const std::function<bool(const FolderWatch::Changes&)>& what) const {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < until) {
      notices->wait(std::chrono::seconds(1));
      if (what(notices->take())) return true;
    }
    return false;
  }
  bool tells_of(const std::string& path) const {
    return tells([&](const auto& changes) { return std::ranges::find(changes.paths, path) != changes.paths.end(); });
  }
};

TEST_F(FolderWatchTest, TellsWhatComesAndIsWrittenAlsoInNewFoldersAndInOnesMadeAgain) {
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(notices->watch(top), std::nullopt);
    write_file(top + "a.mkv", "1");
    EXPECT_TRUE(tells_of(top + "a.mkv"));
    write_file(top + "a.mkv", "12");
    EXPECT_TRUE(tells_of(top + "a.mkv"));
    create(top + "new");
    EXPECT_TRUE(tells_of(top + "new"));
    EXPECT_EQ(notices->watch(with_separator(top + "new")), std::nullopt);
    std::filesystem::rename(path_of(top + "a.mkv"), path_of(top + "new/b.mkv"));
    EXPECT_TRUE(tells_of(with_separator(top + "new") + "b.mkv"));
    std::filesystem::rename(path_of(top + "new"), path_of(top + "moved"));
    EXPECT_TRUE(tells_of(top + "moved"));
    EXPECT_EQ(notices->watch(with_separator(top + "moved")), std::nullopt);
    write_file(top + "moved/b.mkv", "123");
    // Wine goes on telling what happens in a folder by the name that it had.
    const std::string seen_in = with_separator(top + (facts::windows ? "new" : "moved"));
    EXPECT_TRUE(tells_of(seen_in + "b.mkv")) << "under its new name";
    notices->forget_others();
    std::filesystem::remove_all(path_of(top));
    notices->take();
    notices->forget_others();
    create(top);
  }
  EXPECT_NE(notices->watch(folder / "gone/"), std::nullopt);
}

TEST_F(FolderWatchTest, TellsWhenItHasLostSome) {
  if (facts::windows) GTEST_SKIP() << "Wine keeps them all";
  EXPECT_EQ(notices->watch(top), std::nullopt);
  write_file(top + "0", "");
  const int most = std::stoi(contents("/proc/sys/fs/inotify/max_queued_events"));
  for (int i = 0; i < most; ++i) {
    std::filesystem::rename(top + std::to_string(i % 2), top + std::to_string((i + 1) % 2));
  }
  EXPECT_TRUE(tells([](const auto& changes) { return !changes.are_all; }));
  write_file(top + "after", "");
  EXPECT_TRUE(tells_of(top + "after"));
}

}  // namespace
}  // namespace quorvel::testing
