#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "child_process.h"
#include "file_tools.h"
#include "platform/linux/exclusive_rename.h"
#include "support/linux/unprivileged.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Request = FileOperationRequest;
using State = std::map<std::string, std::string>;

/// No file grows beyond a size, as on a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit low{bytes, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &low);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &old_);
    (void)std::signal(SIGXFSZ, handler_);
  }

 private:
  rlimit old_{};
  void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

int perform(int operation, const std::string& from, const std::string& to, CopyProgress progress = {}) {
  return system_file_operation(std::move(progress), {})->perform({operation, from, to, Request::AllowUndo});
}

struct LinuxFiles : ::testing::Test {
  const Unprivileged user;
  const TemporaryFolder here, there{"/dev/shm"};
  const std::unique_ptr<Files> files = system_files();

  /// Two files, a link to nowhere and a write-protected folder.
  static void fill(const TemporaryFolder& folder) {
    for (const char* const name : {"a", "b"}) write_file(folder / name, name);
    fs::create_symlink("nowhere", folder / "dangling");
    fs::create_directory(folder / "locked");
    write_file(folder / "locked/a", "locked");
    fs::permissions(folder / "locked", fs::perms(0555));
  }
  State state() const {
    State all = everything_in(here.path());
    all.merge(everything_in(there.path()));
    return all;
  }
};

TEST_F(LinuxFiles, LinksAreFollowedAndStayWhenTheirFileIsReplaced) {
  fill(here);
  mkfifo((here / "pipe").c_str(), 0600);
  for (const auto& [target, link] : {std::pair("locked", "to folder"), {"a", "link"}, {"circle", "circle"}}) {
    fs::create_symlink(target, here / link);
  }
  State listed;
  EXPECT_TRUE(files->list(here.path(), [&](const FolderEntry& entry) {
    listed[entry.name] = std::string(entry.is_folder ? "folder" : "") + (entry.is_link ? " link" : "");
  }));
  EXPECT_EQ(listed, (State{{"a", ""},
                           {"b", ""},
                           {"dangling", " link"},
                           {"circle", " link"},
                           {"link", " link"},
                           {"to folder", "folder link"},
                           {"locked", "folder"},
                           {"pipe", ""}}));
  EXPECT_TRUE(!files->read(here / "pipe") && !files->exists(here / "dangling"));
  fs::permissions(here / "a", fs::perms(0640));
  fs::permissions(here / "b", fs::perms(0444));
  EXPECT_TRUE(files->replace(here / "link", "new") && files->replace(here / "dangling", "fresh"));
  EXPECT_EQ(files->read(here / "a").value_or("") + files->read(here / "nowhere").value_or(""), "newfresh");
  EXPECT_EQ(fs::status(here / "a").permissions(), fs::perms(0640));
  const State before = everything_in(here.path());
  const FullDisk full(1000);
  for (const char* const name : {"a", "b", "locked/a", "locked/new", "circle", "a/", "pipe"}) {
    EXPECT_FALSE(files->replace(here / name, std::string(name == std::string("a") ? 2000 : 1, 'x'))) << name;
  }
  EXPECT_EQ(everything_in(here.path()), before);
}

TEST_F(LinuxFiles, NoWayOfRenamingOverwrites) {
  using namespace exclusive_rename;
  for (const auto way : {by_flag, by_link, by_placeholder, exclusive_rename::rename}) {
    const TemporaryFolder folder;
    fill(folder);
    State state = everything_in(folder.path());
    for (const auto& [from, to, error] : {std::tuple("a", "b", EEXIST),
                                          {"a", "dangling", EEXIST},
                                          {"a", "locked", EEXIST},
                                          {"gone", "x", ENOENT},
                                          {"a", "gone/x", ENOENT},
                                          {"locked/a", "x", EACCES}}) {
      EXPECT_EQ(way(folder / from, folder / to), error) << from << " " << to;
    }
    EXPECT_EQ(everything_in(folder.path()), state);
    for (const auto& [from, to] : {std::pair("a", "x"), {"dangling", "link"}}) {
      EXPECT_EQ(way(folder / from, folder / to), 0);
      state[folder / to] = state.extract(folder / from).mapped();
    }
    EXPECT_EQ(everything_in(folder.path()), state);
  }
}

TEST_F(LinuxFiles, OperationsTakeFilesAndLinksFromWhereTheUserMay) {
  fill(here);
  fill(there);
  mkfifo((here / "pipe").c_str(), 0600);
  const State before = state();
  for (const auto& [from, name, error] : {std::tuple("a", "dangling", EEXIST),
                                          {"a", "gone/x", ENOENT},
                                          {"a", "b/x", ENOTDIR},
                                          {"a", "locked/x", EACCES},
                                          {"locked", "x", EISDIR},
                                          {"pipe", "x", EINVAL}}) {
    for (const TemporaryFolder* to : {&here, &there}) {
      EXPECT_EQ(perform(Request::Move, here / from, *to / name), error) << from << " " << name;
      EXPECT_EQ(perform(Request::Copy, here / from, *to / name), error) << from << " " << name;
    }
    EXPECT_EQ(perform(Request::Rename, here / from, here / name), error);
  }
  EXPECT_EQ(perform(Request::Move, here / "locked/a", there / "x"), EACCES);
  EXPECT_EQ(state(), before);
  for (const TemporaryFolder* to : {&here, &there}) {
    fs::create_symlink("a", here / "link");
    fs::create_directory(*to / "folder");
    EXPECT_EQ(perform(Request::Rename, here / "link", here / "renamed"), 0);
    EXPECT_EQ(fs::read_symlink(here / "renamed"), "a");
    EXPECT_EQ(perform(Request::Copy, here / "renamed", *to / "folder/copy"), 0);
    EXPECT_EQ(perform(Request::Move, here / "renamed", *to / "folder/link"), 0);
    EXPECT_TRUE(!fs::is_symlink(*to / "folder/copy") && !fs::is_symlink(here / "renamed"));
    EXPECT_TRUE(fs::is_symlink(*to / "folder/link") && files->read(*to / "folder/link") == "a");
  }
  fs::create_directory_symlink(there.path(), here / "to there");
  const auto deleted = [&](const std::string& path) {
    return system_file_operation({}, {})->perform({Request::Delete, path, "", 0});
  };
  EXPECT_EQ(deleted(here / "to there/"), 0);
  EXPECT_TRUE(!fs::is_symlink(here / "to there") && fs::exists(there / "folder/link"));
}

TEST(OtherUsersFiles, AMoveThatCannotRemoveItsSourceLeavesNoCopy) {
  const TemporaryFolder shared, own("/dev/shm");
  write_file(shared / "a", "a");
  fs::permissions(shared.path(), fs::perms(01777));
  for (const std::string& path : {shared / "a", shared.path()}) {
    if (chown(path.c_str(), 65534, 65534) != 0) GTEST_SKIP() << "needs a second user";
  }
  const Unprivileged user;
  EXPECT_EQ(perform(Request::Move, shared / "a", own / "a"), EPERM);
  EXPECT_TRUE(contents(shared / "a") == "a" && fs::is_empty(own.path()));
}

TEST_F(LinuxFiles, AnInterruptedCopyLeavesNothingBehind) {
  if (files->stamp(here.path())->device == files->stamp(there.path())->device) GTEST_SKIP() << "only one device here";
  write_file(there / "a", std::string(8'000'000, 'A'));
  const State before = state();
  for (const int operation : {Request::Move, Request::Copy}) {
    const auto attempt = [&](const CopyProgress& progress) {
      return perform(operation, there / "a", here / "b", progress);
    };
    std::uint64_t reached = 0;
    EXPECT_EQ(attempt([&](auto done, auto total) { return (reached = done) == 0 || total != 8'000'000; }), ECANCELED);
    EXPECT_TRUE(reached > 0 && reached < 8'000'000) << reached;
    EXPECT_THROW(attempt([](auto, auto) -> bool { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ((FullDisk(1'000'000), attempt({})), EFBIG);
    EXPECT_TRUE(state() == before);
    EXPECT_EQ(attempt([&](auto, auto) { return std::ofstream(there / "a", std::ios::in) << 'B', true; }), EBUSY);
    EXPECT_TRUE(fs::is_empty(here.path()) && fs::file_size(there / "a") == 8'000'000);
    write_file(there / "a", std::string(8'000'000, 'A'));
  }
}

/// In a process of its own, for GIO looks for the home folder only once.
const SecondProcess use_trash("trash", [](const std::string& folders) {
  const std::string home = folders.substr(0, folders.find('|')) + "/",
                    there = folders.substr(folders.find('|') + 1) + "/";
  int asked = 0;
  const auto shell = system_file_operation({}, [&](const std::string&) { return ++asked > 1; });
  int row = 0;
  for (const auto& [operation, from, to, code] : {std::tuple(Request::Delete, home + "a\xff", std::string(), 0),
                                                  {Request::Delete, there + "c", "", native::no_trash_code},
                                                  {Request::Move, home + "a", home + "b", EEXIST},  // the user says no
                                                  {Request::Rename, home + "a", home + "b", EEXIST},  // never asked
                                                  {Request::Copy, home + "a", home + "a", EEXIST},    // the file itself
                                                  {Request::Move, home + "a", there + "d", EEXIST},   // no trash there
                                                  {Request::Move, home + "a", home + "b", 0},
                                                  {Request::Copy, there + "c", home + "c", 0}}) {
    ++row;
    if (shell->perform({operation, from, to, Request::AllowUndo}) != code) return row;
  }
  return asked == 4 ? 0 : 99;
});

TEST_F(LinuxFiles, WhatIsDeletedOrGivenUpByTheUserGoesToTheTrash) {
  for (const char* const name : {"a\xff", "a", "b", "c"}) write_file(here / name, name);
  for (const char* const name : {"c", "d"}) write_file(there / name, "other");
  Start start = use_trash.start(here.path() + "|" + there.path());
  start.environment = {{"HOME", here.path()}, {"XDG_DATA_HOME", here.path()}};
  EXPECT_EQ(ChildProcess(start).status(), 0);
  State left = state();
  std::erase_if(left,
                [](const auto& entry) { return fs::is_directory(entry.first) || entry.first.ends_with(".trashinfo"); });
  EXPECT_EQ(left, (State{{here / "Trash/files/a\xff", "a\xff"},
                         {here / "b", "a"},
                         {here / "Trash/files/b", "b"},
                         {here / "c", "other"},
                         {here / "Trash/files/c", "c"},
                         {there / "c", "other"},
                         {there / "d", "other"}}));
}

}  // namespace
}  // namespace quorvel::testing
