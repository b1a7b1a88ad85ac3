#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <random>

#include "../support/file_tools.h"
#include "../support/temporary_folder.h"
#include "platform/disk_files.h"
#include "platform/linux/exclusive_rename.h"
#include "platform/linux/gio_file_operation.h"
#include "platform/native.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Kind = Files::Kind;
using Request = FileOperationRequest;
using State = std::map<std::string, std::string>;

/// What the folders hold at every depth: files by their bytes, links as "-> target".
State state_of(std::initializer_list<const TemporaryFolder*> folders) {
  State state;
  for (const TemporaryFolder* folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(folder->path())) {
      const std::string path = entry.path();
      state[path] =
          entry.is_symlink() ? "-> " + read_symlink(entry.path()).native() : DiskFiles().read(path).value_or("");
    }
  }
  return state;
}

int perform(int operation, const std::string& from, const std::string& to, GioFileOperation::Progress progress = {}) {
  return GioFileOperation(std::move(progress)).perform({operation, from, to, Request::AllowUndo});
}

/// Root may write everywhere, these tests must not.
struct Unprivileged {
  Unprivileged() { EXPECT_TRUE(getuid() != 0 || (setegid(65534) == 0 && seteuid(65534) == 0)); }
  ~Unprivileged() { EXPECT_TRUE(getuid() != 0 || (seteuid(0) == 0 && setegid(0) == 0)); }
};

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

class FilesTest : public ::testing::Test {
 protected:
  /// "a", "b", a link to nowhere and a write-protected folder.
  static void fill(const TemporaryFolder& folder) {
    write_file(folder / "a", "A");
    write_file(folder / "b", "B");
    fs::create_symlink("nowhere", folder / "dangling");
    fs::create_directory(folder / "locked");
    write_file(folder / "locked/a", "locked");
    fs::permissions(folder / "locked", fs::perms(0555));
  }

  const Unprivileged user_;
  const TemporaryFolder here_, there_{"/dev/shm"};
  DiskFiles files_;
};

TEST_F(FilesTest, LookingFollowsLinksAndANulNamesNothing) {
  fill(here_);
  mkfifo((here_ / "\xff\n").c_str(), 0600);
  fs::create_symlink("locked", here_ / "link");
  const std::string cut("a\0", 2);
  for (const auto& [name, kind] : {std::pair(std::string("a"), Kind::File),
                                   {"locked", Kind::Folder},
                                   {"\xff\n", Kind::Other},
                                   {"link", Kind::Folder},
                                   {"dangling", Kind::Missing},
                                   {cut, Kind::Missing}}) {
    EXPECT_EQ(files_.kind(here_ / name), kind) << name;
  }
  State listed;
  const auto note = [&](const FolderEntry& entry) {
    listed[entry.name] = std::string(entry.is_folder ? "folder" : "") + (entry.is_link ? " link" : "");
  };
  EXPECT_TRUE(files_.list(here_.path(), note));
  EXPECT_EQ(
      listed,
      (State{
          {"a", ""}, {"b", ""}, {"dangling", " link"}, {"link", "folder link"}, {"locked", "folder"}, {"\xff\n", ""}}));
  EXPECT_FALSE(files_.list(here_ / cut, note) || files_.stamp(here_ / cut) || files_.read(here_ / cut) ||
               files_.replace(here_ / cut, "x") || files_.remove(here_ / cut) || files_.create_folder(here_ / cut) ||
               files_.list(here_ / "a", note) || files_.read(here_ / "\xff\n") || files_.remove(here_ / "locked"));
  EXPECT_TRUE(files_.remove(here_ / "dangling") && files_.remove(here_ / "dangling"));
}

TEST_F(FilesTest, ReplacingKeepsPermissionsAndLinksOrChangesNothing) {
  fill(here_);
  fs::permissions(here_ / "a", fs::perms(0640));
  fs::permissions(here_ / "b", fs::perms(0444));
  fs::create_symlink("a", here_ / "link");
  fs::create_symlink("circle", here_ / "circle");
  const std::optional<FileStamp> stamp = files_.stamp(here_ / "a");
  EXPECT_TRUE(files_.replace(here_ / "link", std::string("x\0y", 3)) && files_.replace(here_ / "dangling", "fresh"));
  EXPECT_NE(files_.stamp(here_ / "link"), stamp);
  EXPECT_EQ(files_.read(here_ / "a"), std::string("x\0y", 3));
  EXPECT_EQ(files_.read(here_ / "nowhere"), "fresh");
  EXPECT_EQ(fs::status(here_ / "a").permissions(), fs::perms(0640));
  const State before = state_of({&here_});
  const FullDisk full(1000);
  for (const char* const name : {"a", "b", "locked", "locked/a", "locked/new", "missing/new", "circle", "a/"}) {
    EXPECT_FALSE(files_.replace(here_ / name, std::string(name == std::string("a") ? 2000 : 1, 'x'))) << name;
  }
  EXPECT_EQ(state_of({&here_}), before);
}

TEST_F(FilesTest, AKilledReplacementLeavesOneWholeVersion) {
  const std::string versions[] = {std::string(300'000, 'a'), std::string(200'000, 'b')};
  std::minstd_rand random(std::random_device{}());
  for (int round = 0; round < 20; ++round) {
    ASSERT_TRUE(files_.replace(here_ / "file", versions[0]));
    const pid_t child = fork();
    if (child == 0) {
      for (int i = 1;; ++i) files_.replace(here_ / "file", versions[i % 2]);
    }
    usleep(random() % 20'000);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    const std::optional<std::string> found = files_.read(here_ / "file");
    ASSERT_TRUE(found == versions[0] || found == versions[1]);
  }
}

TEST_F(FilesTest, NoWayOfRenamingOverwrites) {
  using namespace exclusive_rename;
  for (const auto way : {by_flag, by_link, by_placeholder, exclusive_rename::rename}) {
    const TemporaryFolder folder;
    fill(folder);
    State state = state_of({&folder});
    for (const char* const taken : {"b", "dangling", "locked"}) EXPECT_EQ(way(folder / "a", folder / taken), EEXIST);
    EXPECT_EQ(way(folder / "gone", folder / "new"), ENOENT);
    EXPECT_EQ(way(folder / "a", folder / "gone/new"), ENOENT);
    EXPECT_EQ(way(folder / "locked/a", folder / "new"), EACCES);
    EXPECT_EQ(state_of({&folder}), state);
    EXPECT_EQ(way(folder / "a", folder / "new") + way(folder / "dangling", folder / "link"), 0);
    for (const auto& [from, to] : {std::pair("a", "new"), {"dangling", "link"}}) {
      state[folder / to] = state.extract(folder / from).mapped();
    }
    EXPECT_EQ(state_of({&folder}), state);
  }
}

TEST_F(FilesTest, FailedOperationsChangeNothing) {
  fill(here_);
  fill(there_);
  mkfifo((here_ / "pipe").c_str(), 0600);
  const State before = state_of({&here_, &there_});
  const std::tuple<std::string, std::string, int> cases[] = {{"a", "b", EEXIST},
                                                             {"a", "dangling", EEXIST},
                                                             {"a", "locked", EEXIST},
                                                             {"a", "gone/x", ENOENT},
                                                             {"a", "b/x", ENOTDIR},
                                                             {"a", "locked/x", EACCES},
                                                             {"a", std::string(256, 'x'), ENAMETOOLONG},
                                                             {"a", std::string("x\0y", 3), EINVAL},
                                                             {std::string("a\0b", 3), "x", EINVAL},
                                                             {"gone", "x", ENOENT},
                                                             {"locked", "x", EISDIR},
                                                             {"pipe", "x", EINVAL}};
  for (const int operation : {Request::Rename, Request::Move, Request::Copy}) {
    for (const TemporaryFolder* to : {&here_, &there_}) {
      if (operation == Request::Rename && to == &there_) continue;
      for (const auto& [from, name, code] : cases) {
        EXPECT_EQ(perform(operation, here_ / from, *to / name), code) << operation << from << name;
      }
    }
    EXPECT_EQ(perform(operation, here_ / "a", "") + perform(operation, "", here_ / "x"), 2 * EINVAL);
  }
  EXPECT_EQ(perform(Request::Move, here_ / "locked/a", there_ / "x"), EACCES);
  EXPECT_EQ(state_of({&here_, &there_}), before);
}

TEST_F(FilesTest, AnyNameWorksAndTheFileStaysTheSame) {
  for (const std::string& name : {std::string("\xff\xe9"), std::string("\n\"'$*? "), std::string(255, 'n')}) {
    for (const TemporaryFolder* to : {&here_, &there_}) {
      write_file(here_ / "a", "episode");
      fs::permissions(here_ / "a", fs::perms(0444));
      const auto time = fs::file_time_type::clock::now() - std::chrono::hours(1000);
      fs::last_write_time(here_ / "a", time);
      EXPECT_EQ(perform(Request::Copy, here_ / "a", *to / name), 0) << name;
      EXPECT_EQ(state_of({&here_, &there_}), (State{{here_ / "a", "episode"}, {*to / name, "episode"}}));
      fs::remove(here_ / "a");
      EXPECT_EQ(perform(Request::Move, *to / name, here_ / "a") + perform(Request::Move, here_ / "a", *to / name), 0);
      EXPECT_EQ(state_of({&here_, &there_}), (State{{*to / name, "episode"}}));
      EXPECT_EQ(fs::status(*to / name).permissions(), fs::perms(0444));
      EXPECT_LT(std::chrono::abs(fs::last_write_time(*to / name) - time), std::chrono::microseconds(1));
      fs::remove(*to / name);
    }
  }
}

TEST_F(FilesTest, LinksAreMovedAsLinksAndCopiedAsContents) {
  write_file(here_ / "a", "A");
  for (const TemporaryFolder* to : {&here_, &there_}) {
    fs::create_symlink("a", here_ / "link");
    fs::create_directory(*to / "folder");
    EXPECT_EQ(perform(Request::Rename, here_ / "link", here_ / "renamed"), 0);
    EXPECT_EQ(fs::read_symlink(here_ / "renamed"), "a");
    EXPECT_EQ(perform(Request::Copy, here_ / "renamed", *to / "folder/copy"), 0);
    EXPECT_EQ(perform(Request::Move, here_ / "renamed", *to / "folder/link"), 0);
    EXPECT_EQ(state_of({to})[*to / "folder/copy"], "A");
    EXPECT_EQ(files_.read(*to / "folder/link"), "A");
    EXPECT_TRUE(fs::is_symlink(*to / "folder/link") && !fs::is_symlink(here_ / "renamed"));
  }
}

TEST_F(FilesTest, AnInterruptedCopyLeavesNothingBehind) {
  if (files_.stamp(here_.path())->device == files_.stamp(there_.path())->device) GTEST_SKIP() << "only one device here";
  write_file(there_ / "a", std::string(8'000'000, 'A'));
  const State before = state_of({&here_, &there_});
  for (const int operation : {Request::Move, Request::Copy}) {
    const auto attempt = [&](const GioFileOperation::Progress& progress) {
      return perform(operation, there_ / "a", here_ / "b", progress);
    };
    std::uint64_t reached = 0;
    EXPECT_EQ(attempt([&](auto done, auto total) { return (reached = done) == 0 || total != 8'000'000; }), ECANCELED);
    EXPECT_TRUE(reached > 0 && reached < 8'000'000) << reached;
    EXPECT_THROW(attempt([](auto, auto) -> bool { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ((FullDisk(1'000'000), attempt({})), EFBIG);
    EXPECT_TRUE(state_of({&here_, &there_}) == before);
    EXPECT_EQ(attempt([&](auto, auto) { return std::ofstream(there_ / "a", std::ios::in) << 'B', true; }), EBUSY);
    EXPECT_TRUE(fs::is_empty(here_.path()) && fs::file_size(there_ / "a") == 8'000'000);
    write_file(there_ / "a", std::string(8'000'000, 'A'));
  }
}

TEST(FileOperation, AMoveThatCannotRemoveItsSourceLeavesNoCopy) {
  if (getuid() != 0) GTEST_SKIP() << "needs another user's file";
  const TemporaryFolder shared;
  fs::permissions(fs::path(shared.path()).parent_path(), fs::perms(0755));
  fs::permissions(shared.path(), fs::perms(01777));
  write_file(shared / "a", "A");
  const Unprivileged user;
  const TemporaryFolder own("/dev/shm");
  EXPECT_EQ(perform(Request::Move, shared / "a", own / "a"), EPERM);
  EXPECT_EQ(state_of({&shared, &own}), (State{{shared / "a", "A"}}));
}

TEST_F(FilesTest, DeletingForGoodStaysInsideTheFolder) {
  const auto removed = [](const std::string& path) {
    return GioFileOperation().perform({Request::Delete, path, "", 0});
  };
  fs::create_directories(here_ / "cache/deep");
  write_file(there_ / "kept", "K");
  for (const char* const link : {"cache/deep/link", "link"}) fs::create_symlink(there_.path(), here_ / link);
  EXPECT_EQ(removed(here_ / "cache") + removed(here_ / "link/"), 0);
  EXPECT_EQ(removed(here_ / "cache"), ENOENT);
  EXPECT_EQ(removed(there_ / "."), EINVAL);
  EXPECT_EQ(state_of({&here_, &there_}), (State{{there_ / "kept", "K"}}));
}

/// Runs in a process of its own, for GIO looks for the home folder only once.
bool trash_is_used() {
  const TemporaryFolder home, elsewhere("/dev/shm");
  for (const char* const variable : {"HOME", "XDG_DATA_HOME"}) setenv(variable, home.path().c_str(), 1);
  write_file(home / "a\xff", "A");
  write_file(elsewhere / "a", "A");
  const bool trashed = perform(Request::Delete, home / "a\xff", "") == 0;
  const bool refused = perform(Request::Delete, elsewhere / "a", "") == native::no_trash_code;
  const State left = state_of({&home, &elsewhere});
  return trashed && refused && left.contains(home / "Trash/files/a\xff") && left.contains(elsewhere / "a");
}

TEST(TrashDeathTest, DeletingWithUndoMeansTheTrash) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(trash_is_used() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

bool a_given_up_file_goes_to_the_trash() {
  const TemporaryFolder home, elsewhere("/dev/shm");
  for (const char* const variable : {"HOME", "XDG_DATA_HOME"}) setenv(variable, home.path().c_str(), 1);
  for (const char* const name : {"a", "b", "c"}) write_file(home / name, name);
  for (const char* const name : {"c", "d"}) write_file(elsewhere / name, "other");
  int asked = 0;
  GioFileOperation shell({}, [&](const std::string&) { return ++asked > 1; });
  const auto outcome = [&](int operation, const std::string& from, const std::string& to) {
    return shell.perform({operation, from, to, Request::AllowUndo});
  };
  const bool kept = outcome(Request::Move, home / "a", home / "b") == EEXIST &&                   // the user says no
                    outcome(Request::Rename, home / "a", home / "b") == EEXIST &&                 // never asked for
                    outcome(Request::Copy, home / "a", home / "a") == EEXIST &&                   // the file itself
                    outcome(Request::Move, home / "a", elsewhere / "d") == EEXIST && asked == 2;  // no trash there
  const bool replaced = outcome(Request::Move, home / "a", home / "b") == 0 &&
                        outcome(Request::Copy, elsewhere / "c", home / "c") == 0 && asked == 4;
  const State left = state_of({&home, &elsewhere});
  return kept && replaced && !left.contains(home / "a") && left.at(home / "b") == "a" &&
         left.at(home / "Trash/files/b") == "b" && left.at(home / "c") == "other" &&
         left.at(home / "Trash/files/c") == "c" && left.at(elsewhere / "d") == "other";
}

TEST(TrashDeathTest, AFileThatTheUserGivesUpGoesThere) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::_Exit(a_given_up_file_goes_to_the_trash() ? 0 : 1), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace quorvel::testing
